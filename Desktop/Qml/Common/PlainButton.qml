// The button of every screen: quiet, or in the accent colour for the one thing to do.
import QtQuick

Pressable {
    id: button

    property string symbol
    property color symbolColor: textColor
    property bool symbolFilled: false
    property bool prominent: false
    property bool round: false
    // The text may become as small as this before it is cut off.
    property int leastTextSize: 11
    property color textColor: prominent ? Theme.accentText : Theme.text

    implicitHeight: Theme.controlHeight
    implicitWidth: Math.max(implicitHeight, Math.ceil(natural.advanceWidth) + signWidth + 2 * Theme.l)
    font.pixelSize: Theme.callout
    font.weight: prominent ? Font.DemiBold : Font.Medium
    opacity: enabled ? 1 : 0.45

    readonly property real signWidth: symbol === "" ? 0 : 20 + Theme.s
    // Of the text at its full size: the label itself may be made smaller.
    TextMetrics { id: natural; font: button.font; text: button.text }

    contentItem: Item {
        Row {
            id: row
            anchors.centerIn: parent
            spacing: Theme.s
            Symbol {
                visible: button.symbol !== ""
                name: button.symbol
                color: button.symbolColor
                filled: button.symbolFilled
                anchors.verticalCenter: parent.verticalCenter
            }
            Text {
                id: label
                visible: button.text !== ""
                text: button.text
                font: button.font
                color: button.textColor
                elide: Text.ElideRight
                fontSizeMode: Text.HorizontalFit
                minimumPixelSize: button.leastTextSize
                width: Math.min(Math.ceil(natural.advanceWidth) + 1,
                                button.width - 2 * Theme.s - button.signWidth)
                anchors.verticalCenter: parent.verticalCenter
            }
        }
    }

    background: Rectangle {
        radius: button.round ? height / 2 : Theme.radiusM
        color: button.prominent
            ? (button.hovered || button.down ? Theme.accentHovered : Theme.accent)
            : (button.hovered || button.down ? Theme.fillHovered : Theme.fill)
        Behavior on color { ColorAnimation { duration: Theme.quick } }
        FocusRing { target: button }
    }
}
