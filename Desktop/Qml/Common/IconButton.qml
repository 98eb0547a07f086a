// A button that is only a sign; its text is what it is called.
import QtQuick

Pressable {
    id: button

    property string symbol
    property color symbolColor: Theme.text
    property bool quiet: true
    property bool mirrorSymbol: false

    implicitWidth: Theme.controlHeight
    implicitHeight: Theme.controlHeight
    opacity: enabled ? 1 : 0.4

    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            name: button.symbol
            color: button.checked ? Theme.accent : button.symbolColor
            size: 22
            transform: Scale {
                xScale: button.mirrorSymbol && button.mirrored ? -1 : 1
                origin.x: 11
            }
        }
    }
    background: Rectangle {
        radius: Theme.radiusM
        color: button.hovered || button.down ? Theme.fillHovered
            : (button.quiet ? "transparent" : Theme.fill)
        FocusRing { target: button }
    }
}
