// Where it can be drawn, a blurred picture of what lies beneath; else nothing.
import QtQuick

Loader {
    id: loader

    property Item beneath
    property real deviation: 0
    property real radius: 0
    readonly property bool isDrawn: status === Loader.Ready

    active: visible && GraphicsInfo.api !== GraphicsInfo.Unknown
        && GraphicsInfo.api !== GraphicsInfo.Software
    source: "BlurredCopy.qml"
    onLoaded: {
        item.beneath = Qt.binding(() => loader.beneath)
        item.deviation = Qt.binding(() => loader.deviation)
        item.radius = Qt.binding(() => loader.radius)
    }
}
