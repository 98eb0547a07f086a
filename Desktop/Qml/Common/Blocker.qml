// Keeps what the pointer does from what lies beneath.
import QtQuick

MouseArea {
    anchors.fill: parent
    hoverEnabled: true
    onWheel: (wheel) => wheel.accepted = true
}
