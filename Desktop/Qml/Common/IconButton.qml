// A button that is only a sign; its text is what it is called.
import QtQuick
import QtQuick.Templates as T

T.Button {
    id: button

    property string symbol
    property color symbolColor: Theme.text
    property bool quiet: true
    property bool mirrorSymbol: false

    implicitWidth: Theme.controlHeight
    implicitHeight: Theme.controlHeight
    hoverEnabled: true
    opacity: enabled ? 1 : 0.4
    focusPolicy: Qt.StrongFocus
    Accessible.name: text
    Keys.onReturnPressed: { if (checkable) toggle(); clicked() }
    Keys.onEnterPressed: { if (checkable) toggle(); clicked() }
    Accessible.onPressAction: { if (checkable) toggle(); clicked() }

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
