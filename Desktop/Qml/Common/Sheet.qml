// A sheet over a screen: from the bottom of a narrow window, in the middle of a wide one.
import QtQuick
import QtQuick.Layouts

FocusScope {
    id: sheet

    property bool shown: false
    property real sheetWidth: 480
    property real sheetHeight: 490
    property bool dismissable: true
    property string name
    default property alias content: body.data
    readonly property bool narrow: width < 600
    signal dismissed()

    anchors.fill: parent
    visible: opacity > 0
    opacity: shown ? 1 : 0
    enabled: shown
    onShownChanged: if (shown) forceActiveFocus()
    Behavior on opacity { NumberAnimation { duration: Theme.calm; easing.type: Easing.OutCubic } }
    Keys.onEscapePressed: if (dismissable) dismissed()
    Accessible.role: Accessible.Dialog
    Accessible.name: name

    Rectangle {
        anchors.fill: parent
        color: Theme.dim
        Blocker { onClicked: if (sheet.dismissable) sheet.dismissed() }
    }
    Rectangle {
        id: paper
        width: Math.min(sheet.sheetWidth, sheet.width - (sheet.narrow ? 0 : 2 * Theme.xl))
        height: Math.min(sheet.sheetHeight, sheet.height - (sheet.narrow ? Theme.xxl : 2 * Theme.xl))
        anchors.horizontalCenter: parent.horizontalCenter
        y: (sheet.narrow ? sheet.height - height : (sheet.height - height) / 2)
            + (sheet.shown ? 0 : Theme.xl)
        Behavior on y { NumberAnimation { duration: Theme.calm; easing.type: Easing.OutCubic } }
        radius: Theme.radiusL
        color: Theme.background
        clip: true
        Blocker { }
        Rectangle {
            // Squares the corners that meet the window's edge.
            visible: sheet.narrow
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
            height: Theme.radiusL
            color: parent.color
        }
        Item {
            id: body
            anchors.fill: parent
        }
    }
}
