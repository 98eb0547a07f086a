// A ring that closes as work goes on, in a gradient from its top left to its bottom right.
import QtQuick

Canvas {
    id: ring

    property real progress: 0
    property real thickness
    property color track
    property color from
    property color to
    property int milliseconds  // of a step

    property real shownProgress: progress
    Behavior on shownProgress {
        NumberAnimation { duration: ring.milliseconds; easing.type: Easing.InOutQuad }
    }
    onShownProgressChanged: requestPaint()

    onPaint: {
        const pen = getContext("2d")
        const middle = width / 2
        const start = -Math.PI / 2
        const arc = (share) => {
            pen.beginPath()
            pen.arc(middle, middle, middle - thickness / 2, start, start + 2 * Math.PI * share)
            pen.stroke()
        }
        pen.reset()
        pen.lineWidth = thickness
        pen.strokeStyle = track
        arc(1)
        if (shownProgress <= 0) return
        const gradient = pen.createLinearGradient(0, 0, width, height)
        gradient.addColorStop(0, from)
        gradient.addColorStop(1, to)
        pen.strokeStyle = gradient
        pen.lineCap = "round"
        arc(Math.min(1, shownProgress))
    }
}
