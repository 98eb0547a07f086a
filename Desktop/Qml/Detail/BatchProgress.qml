// The overlay of a batch or a video job: it holds the content, and shows how far the work is.
import QtQuick
import "../Common"

WorkOverlay {
    id: overlay

    visible: opacity > 0
    opacity: shown ? 1 : 0
    Behavior on opacity { NumberAnimation { duration: Theme.calm } }

    Rectangle {
        anchors.fill: parent
        color: Theme.dim
        Blocker { enabled: overlay.shown }
    }
    Rectangle {
        anchors.centerIn: parent
        width: 180
        height: 180
        radius: Theme.radiusL
        color: Theme.raised
        Column {
            anchors.centerIn: parent
            spacing: Theme.l
            ProgressRing {
                anchors.horizontalCenter: parent.horizontalCenter
                size: 84
                thickness: 10
                progress: overlay.reached
                Text {
                    anchors.centerIn: parent
                    text: App.percentage(overlay.reached)
                    color: Theme.text
                    font.pixelSize: Theme.headline
                    font.weight: Font.DemiBold
                }
            }
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                text: App.text("Processing")
                color: Theme.text
                font.pixelSize: Theme.callout
            }
        }
    }
}
