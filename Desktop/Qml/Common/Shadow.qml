// The shadow of a rounded card, but not beneath the card itself, which may be translucent. It
// lies `offset` under the card and is blurred over `blur` points.
import QtQuick

Canvas {
    id: shadow

    property Item card
    property real radius: 0
    property real offset: 0
    property real blur: 0
    property real strength: 0
    readonly property real margin: blur + offset

    x: card.x - margin
    y: card.y - margin
    width: card.width + 2 * margin
    height: card.height + 2 * margin
    onPaint: {
        const pen = getContext("2d")
        pen.reset()
        pen.beginPath()
        pen.roundedRect(margin, margin, card.width, card.height, radius, radius)
        pen.shadowColor = Qt.rgba(0, 0, 0, strength)
        pen.shadowBlur = blur
        pen.shadowOffsetY = offset
        pen.fillStyle = "#000000"
        pen.fill()
        pen.shadowColor = "transparent"
        pen.globalCompositeOperation = "destination-out"
        pen.fill()
    }
}
