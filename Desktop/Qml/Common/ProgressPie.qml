// A pie that fills as work goes on.
import QtQuick

Canvas {
    id: pie

    property real progress: 0
    property color color: Theme.accent

    property real shownProgress: progress
    Behavior on shownProgress { NumberAnimation { duration: Theme.calm } }
    onShownProgressChanged: requestPaint()
    onColorChanged: requestPaint()

    onPaint: {
        const pen = getContext("2d")
        const middle = width / 2
        const edge = 3
        pen.reset()
        pen.strokeStyle = color
        pen.lineWidth = edge
        pen.beginPath()
        pen.arc(middle, middle, middle - edge / 2, 0, 2 * Math.PI)
        pen.stroke()
        if (shownProgress <= 0) return
        const start = -Math.PI / 2
        pen.fillStyle = color
        pen.beginPath()
        pen.moveTo(middle, middle)
        pen.arc(middle, middle, middle - 2 * edge, start,
                start + 2 * Math.PI * Math.min(1, shownProgress))
        pen.closePath()
        pen.fill()
    }
}
