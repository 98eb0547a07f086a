// Ultra-thin material: what lies beneath shines through, blurred where that can be drawn, and less
// of it where it can't. `shade` is how black a layer lies over what is beneath.
import QtQuick

Item {
    id: material

    property Item beneath
    property real radius: 0
    property real shade: 0

    Blurred {
        id: blurred
        anchors.fill: parent
        beneath: material.beneath
        deviation: 20
        radius: material.radius
    }
    Rectangle {
        anchors.fill: parent
        visible: blurred.isDrawn
        radius: material.radius
        color: Qt.rgba(0, 0, 0, material.shade)
    }
    Rectangle {
        anchors.fill: parent
        radius: material.radius
        color: Theme.raised
        opacity: blurred.isDrawn ? 0.75 : 0.9
    }
}
