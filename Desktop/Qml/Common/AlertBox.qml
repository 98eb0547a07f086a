// An alert over a screen, bound to the screen's own.
import QtQuick
import QtQuick.Layouts

Sheet {
    id: box

    property var alert: null

    shown: alert !== null && alert.isShown
    dismissable: false
    name: alert ? alert.title : ""
    sheetWidth: Math.min(400, width - 2 * Theme.l)
    sheetHeight: column.implicitHeight + 2 * Theme.xl
    Keys.onEscapePressed: alert.close(-1)

    ColumnLayout {
        id: column
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: Theme.xl }
        spacing: Theme.m
        Text {
            Layout.fillWidth: true
            text: box.alert ? box.alert.title : ""
            color: Theme.text
            font.pixelSize: Theme.headline
            font.weight: Font.DemiBold
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
        Text {
            Layout.fillWidth: true
            visible: text !== ""
            text: box.alert ? box.alert.message : ""
            color: Theme.secondaryText
            font.pixelSize: Theme.body
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
        }
        Repeater {
            model: box.alert ? box.alert.buttons : []
            PlainButton {
                required property string modelData
                required property int index
                Layout.fillWidth: true
                Layout.topMargin: Theme.s
                text: modelData
                prominent: index === 0
                // The one that does no harm.
                focus: index === box.alert.buttons.length - 1
                onClicked: box.alert.close(index)
            }
        }
        PlainButton {
            visible: !box.alert || box.alert.buttons.length === 0
            Layout.fillWidth: true
            Layout.topMargin: Theme.s
            text: App.text("OK")
            prominent: true
            focus: visible
            onClicked: box.alert.close(-1)
        }
    }
}
