// What every button has in common: its text names it, and a key or a screen reader presses it as
// the pointer does.
import QtQuick
import QtQuick.Templates as T

T.Button {
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Accessible.name: text
    Accessible.onPressAction: press()
    Keys.onReturnPressed: press()
    Keys.onEnterPressed: press()

    function press() {
        if (checkable) toggle()
        clicked()
    }
}
