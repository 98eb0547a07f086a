// A screen's way back by the mouse's and the keyboard's own buttons for it.
import QtQuick

Item {
    id: way

    signal taken()

    anchors.fill: parent
    TapHandler {
        acceptedButtons: Qt.BackButton
        onTapped: way.taken()
    }
    Shortcut {
        sequences: [StandardKey.Back]
        enabled: way.enabled
        onActivated: way.taken()
    }
}
