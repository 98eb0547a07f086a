// The overlay of a running conversion: a dim layer, and a card with a ring and its percentage.
import QtQuick
import "../Common"

WorkOverlay {
    id: overlay

    visible: dim.opacity > 0

    Rectangle {
        id: dim
        anchors.fill: parent
        color: "#000000"
        opacity: overlay.shown ? 0.45 : 0
        Behavior on opacity { NumberAnimation { duration: Theme.calm } }
        Blocker { enabled: overlay.shown }
    }
    Rectangle {
        anchors.centerIn: parent
        width: Math.max(content.implicitWidth, 240) + 64
        height: content.implicitHeight + 72
        radius: 28
        color: Theme.raised
        border.color: Qt.rgba(Theme.text.r, Theme.text.g, Theme.text.b, 0.08)
        opacity: overlay.shown ? 1 : 0
        scale: overlay.shown ? 1 : 0.92
        Behavior on opacity { NumberAnimation { duration: Theme.calm } }
        // Response 0.45 s, damping 0.82: angular frequency 2 pi / 0.45, as a spring of mass 1.
        Behavior on scale { SpringAnimation { spring: 3.9; damping: 0.46; epsilon: 0.001 } }
        Column {
            id: content
            anchors.centerIn: parent
            spacing: 28
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                text: App.text("Processing")
                color: Theme.text
                font.pixelSize: Theme.headline
                font.weight: Font.DemiBold
            }
            ProgressRing {
                anchors.horizontalCenter: parent.horizontalCenter
                progress: overlay.reached
                Text {
                    anchors.centerIn: parent
                    text: App.percentage(overlay.reached)
                    color: Theme.text
                    font.pixelSize: 38
                    font.weight: Font.Bold
                }
            }
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                width: 240
                topPadding: 0
                text: App.text("ConversionTimeNotice")
                color: Theme.text
                opacity: 0.7
                font.pixelSize: Theme.body
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignHCenter
            }
        }
    }
}
