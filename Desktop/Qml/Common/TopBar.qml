// The line above a screen: a way back, its name, and what else it offers.
import QtQuick
import QtQuick.Layouts

Rectangle {
    id: bar

    property string title
    property string backText
    property string backSymbol: "back"
    default property alias actions: trailing.data
    signal back()

    implicitHeight: 56
    color: Theme.background

    RowLayout {
        anchors { fill: parent; leftMargin: Theme.s; rightMargin: Theme.s }
        spacing: Theme.s
        IconButton {
            visible: bar.backText !== ""
            symbol: bar.backSymbol
            text: bar.backText
            mirrorSymbol: bar.backSymbol === "back"
            onClicked: bar.back()
        }
        Text {
            Layout.fillWidth: true
            Layout.leftMargin: Theme.s
            text: bar.title
            horizontalAlignment: Text.AlignLeft
            color: Theme.text
            font.pixelSize: Theme.headline
            font.weight: Font.DemiBold
            elide: Text.ElideRight
            Accessible.role: Accessible.Heading
            Accessible.name: text
            Accessible.ignored: text === ""
        }
        RowLayout {
            id: trailing
            spacing: Theme.xs
        }
    }
}
