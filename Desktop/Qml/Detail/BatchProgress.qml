// The overlay of a batch or a video job: it holds the content, and shows how far the work is.
import QtQuick
import "../Common"

Item {
    id: overlay

    property bool shown: false
    property real progress: 0
    // The work is reset when it ends: what was reached stays until the overlay is gone.
    property real reached: 0
    onProgressChanged: if (shown) reached = progress
    onShownChanged: if (shown) reached = progress

    visible: opacity > 0
    opacity: shown ? 1 : 0
    Behavior on opacity { NumberAnimation { duration: Theme.calm } }
    Accessible.role: Accessible.ProgressBar
    Accessible.name: App.text("Processing")
    // What a screen reader asks a progress bar for.
    readonly property real value: Math.max(0, progress)
    readonly property real from: 0
    readonly property real to: 1

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
                progress: Math.max(0, overlay.reached)
                Text {
                    anchors.centerIn: parent
                    text: App.percentage(Math.max(0, overlay.reached))
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
