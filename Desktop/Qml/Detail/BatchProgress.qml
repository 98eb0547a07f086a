// The overlay of a batch or a video job: it holds the content, shows how far the work is, and is
// the way out of it.
import QtQuick
import "../Common"

WorkOverlay {
    id: overlay

    property Item content
    property string title
    property var lines: []
    property bool stopping: false
    readonly property bool known: progress >= 0
    // Each failed tile of a picture counts as a picture.
    readonly property real share: Math.min(1, reached)
    signal cancelled()

    visible: loading.opacity > 0

    LoadingView {
        id: loading
        readonly property real lineWidth: Math.min(260, overlay.width - 4 * Theme.xl)
        anchors.fill: parent
        title: overlay.title
        isShowing: overlay.shown
        isBusy: overlay.shown && !overlay.known
        content: overlay.content

        ProgressPie {
            anchors.horizontalCenter: parent.horizontalCenter
            visible: overlay.share > 0 || overlay.known
            width: 64
            height: 64
            progress: overlay.share
        }
        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: App.text("Processing")
                + (overlay.share > 0 ? "  " + App.percentage(overlay.share) : "")
            color: Theme.text
            font.pixelSize: Theme.callout
        }
        Column {
            visible: overlay.lines.length > 0
            Repeater {
                model: overlay.lines
                Text {
                    required property string modelData
                    width: loading.lineWidth
                    text: modelData
                    color: Theme.secondaryText
                    font.pixelSize: Theme.body
                    wrapMode: Text.Wrap
                    horizontalAlignment: Text.AlignHCenter
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
            }
        }
        PlainButton {
            width: loading.lineWidth
            visible: !overlay.stopping
            enabled: overlay.shown
            text: App.text("Cancel")
            onClicked: overlay.cancelled()
        }
    }
}
