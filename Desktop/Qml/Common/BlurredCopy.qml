// A blurred picture of what lies beneath, as it was when this came: it stands still meanwhile, and
// drawing it anew at each step of a ring would take from the work. Drawn by shaders, so that it is
// to be loaded only where they run.
import QtQuick
import Qt5Compat.GraphicalEffects

Item {
    id: blur

    property Item beneath
    // The standard deviation, in points.
    property real deviation: 0
    property real radius: 0

    // Around the middle, which stays where it is while an overlay grows.
    function take() {
        const middle = mapToItem(beneath, width / 2, height / 2)
        copy.sourceRect = Qt.rect(middle.x - width / 2, middle.y - height / 2, width, height)
        copy.scheduleUpdate()
    }

    onBeneathChanged: Qt.callLater(take)
    onWidthChanged: Qt.callLater(take)
    onHeightChanged: Qt.callLater(take)
    Connections {
        target: blur.beneath
        function onWidthChanged() { Qt.callLater(blur.take) }
        function onHeightChanged() { Qt.callLater(blur.take) }
    }
    ShaderEffectSource {
        id: copy
        anchors.fill: parent
        visible: false
        live: false
        sourceItem: blur.beneath
    }
    FastBlur {
        id: blurred
        anchors.fill: parent
        visible: blur.radius === 0
        cached: true
        source: copy
        radius: 3 * blur.deviation
    }
    Rectangle {
        id: mask
        anchors.fill: parent
        visible: false
        radius: blur.radius
    }
    OpacityMask {
        anchors.fill: parent
        visible: blur.radius > 0
        cached: true
        source: blurred
        maskSource: mask
    }
}
