// A line of text in a gradient from its top left to its bottom right.
import QtQuick

Canvas {
    id: line

    property string text
    property font font
    property color from
    property color to

    implicitWidth: plain.implicitWidth
    implicitHeight: plain.implicitHeight
    Accessible.role: Accessible.StaticText
    Accessible.name: text

    onTextChanged: requestPaint()
    onFromChanged: requestPaint()
    onToChanged: requestPaint()
    Text { id: plain; visible: false; font: line.font; text: line.text }

    onPaint: {
        const pen = getContext("2d")
        const gradient = pen.createLinearGradient(0, 0, width, height)
        pen.reset()
        gradient.addColorStop(0, from)
        gradient.addColorStop(1, to)
        pen.fillStyle = gradient
        // By its own name: a canvas knows no names that stand for others.
        pen.font = font.weight + " " + font.pixelSize + "px '" + plain.fontInfo.family + "'"
        pen.fillText(text, 0, plain.baselineOffset)
    }
}
