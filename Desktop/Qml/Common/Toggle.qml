// A switch with its name and sign.
import QtQuick
import QtQuick.Templates as T

T.Switch {
    id: toggle

    property string symbol

    implicitHeight: 54
    focusPolicy: Qt.StrongFocus
    Accessible.name: text

    contentItem: Item {
        Symbol {
            id: sign
            name: toggle.symbol
            color: Theme.accent
            anchors {
                left: parent.left; leftMargin: Theme.l; verticalCenter: parent.verticalCenter
            }
        }
        Text {
            anchors {
                left: sign.right; leftMargin: Theme.m
                right: parent.right; rightMargin: 76
                verticalCenter: parent.verticalCenter
            }
            text: toggle.text
            color: Theme.text
            font.pixelSize: Theme.callout
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignLeft
        }
    }
    indicator: Rectangle {
        x: toggle.mirrored ? Theme.l : toggle.width - width - Theme.l
        anchors.verticalCenter: parent.verticalCenter
        width: 46
        height: 28
        radius: 14
        color: toggle.checked ? Theme.accent : Theme.fillHovered
        Behavior on color { ColorAnimation { duration: Theme.quick } }
        FocusRing { target: toggle }
        Rectangle {
            x: toggle.checked !== toggle.mirrored ? 21 : 3
            anchors.verticalCenter: parent.verticalCenter
            width: 22
            height: 22
            radius: 11
            color: "#ffffff"
            Behavior on x { NumberAnimation { duration: Theme.quick } }
        }
    }
}
