// Shows which control takes the keyboard.
import QtQuick

Rectangle {
    property Item target

    anchors.fill: parent
    anchors.margins: -3
    radius: parent.radius + 3
    color: "transparent"
    border.width: 2
    border.color: Theme.accent
    visible: target && target.visualFocus
}
