// Holds a screen while something is on its way to it. What comes at once is not worth a word.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

Sheet {
    id: sheet

    property bool active: false

    name: App.text("Loading")
    sheetWidth: 300
    sheetHeight: column.implicitHeight + 2 * Theme.xl
    onActiveChanged: if (!active) shown = false

    Timer {
        running: sheet.active && !sheet.shown
        interval: 200
        onTriggered: sheet.shown = true
    }
    ColumnLayout {
        id: column
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: Theme.xl }
        spacing: Theme.l
        Text {
            Layout.fillWidth: true
            text: sheet.name
            color: Theme.text
            font.pixelSize: Theme.headline
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignHCenter
        }
        BusyIndicator {
            Layout.alignment: Qt.AlignHCenter
            running: sheet.shown
            palette.dark: Theme.accent
            Accessible.ignored: true
        }
        PlainButton {
            Layout.fillWidth: true
            text: App.text("Cancel")
            focus: true
            onClicked: sheet.dismissed()
        }
    }
}
