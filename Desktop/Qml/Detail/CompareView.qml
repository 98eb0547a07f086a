// Source and result over each other, with a divider that the user drags. Both zoom and move
// together; moving the divider changes only the mask and the divider.
import QtQuick
import Quillmere
import "../Common"

FocusScope {
    id: view

    property var source
    property var result
    property real position: 0.5
    property int dragThreshold
    readonly property bool rightToLeft: LayoutMirroring.enabled
    signal dragged(real x)

    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
    clip: true
    activeFocusOnTab: true
    Accessible.role: Accessible.Slider
    Accessible.name: App.text("CompareDivider")
    Accessible.onIncreaseAction: moveBy(0.05)
    Accessible.onDecreaseAction: moveBy(-0.05)
    // What a screen reader asks a slider for.
    readonly property real value: position
    readonly property real from: 0
    readonly property real to: 1
    Keys.onLeftPressed: (event) => step(event, -1)
    Keys.onRightPressed: (event) => step(event, 1)
    Keys.onPressed: (event) => {
        if (event.key === Qt.Key_Plus) zoomBy(1.25, Qt.point(width / 2, height / 2))
        if (event.key === Qt.Key_Minus) zoomBy(0.8, Qt.point(width / 2, height / 2))
        if (event.key === Qt.Key_0) reset()
    }

    readonly property real divider: rightToLeft ? width * (1 - position) : width * position
    // Of the result: how large it is in the view, and where.
    readonly property real fit: result && result.isThere
        ? Math.min(width / result.width, height / result.height) : 1
    property real zoom: 1
    property real centreX: 0.5
    property real centreY: 0.5
    readonly property real shownWidth: result && result.isThere ? result.width * fit * zoom : 0
    readonly property real shownHeight: result && result.isThere ? result.height * fit * zoom : 0
    readonly property real pictureLeft: shownWidth <= width ? (width - shownWidth) / 2
        : Math.max(width - shownWidth, Math.min(0, width / 2 - centreX * shownWidth))
    readonly property real pictureTop: shownHeight <= height ? (height - shownHeight) / 2
        : Math.max(height - shownHeight, Math.min(0, height / 2 - centreY * shownHeight))

    // Of the view's width, towards the end that lines run to.
    function moveBy(share) {
        dragged(divider + (rightToLeft ? -share : share) * width)
    }
    function step(event, direction) {
        dragged(divider + direction * width * (event.modifiers & Qt.ShiftModifier ? 0.01 : 0.05))
        event.accepted = true
    }
    function reset() { zoom = 1; centreX = 0.5; centreY = 0.5 }
    // What lies under `at` stays there.
    function zoomBy(factor, at) {
        const pictureX = (at.x - pictureLeft) / Math.max(1, shownWidth)
        const pictureY = (at.y - pictureTop) / Math.max(1, shownHeight)
        const largest = Math.max(1, 8 / (fit * Screen.devicePixelRatio))
        const now = Math.max(1, Math.min(largest, zoom * factor))
        const newWidth = shownWidth * now / zoom
        const newHeight = shownHeight * now / zoom
        zoom = now
        centreX = pictureX + (width / 2 - at.x) / Math.max(1, newWidth)
        centreY = pictureY + (height / 2 - at.y) / Math.max(1, newHeight)
    }
    onResultChanged: if (!result || !result.isThere) reset()

    readonly property rect seen: Qt.rect(-pictureLeft, -pictureTop, width, height)

    PictureItem {
        x: view.pictureLeft
        y: view.pictureTop
        width: view.shownWidth
        height: view.shownHeight
        picture: view.result
        visibleArea: view.seen
    }
    Item {
        id: mask
        // Never mirrored: where the source lies is told by the numbers.
        LayoutMirroring.enabled: false
        clip: true
        x: view.rightToLeft ? view.divider : 0
        width: view.rightToLeft ? view.width - view.divider : view.divider
        height: view.height
        PictureItem {
            x: view.pictureLeft - mask.x
            y: view.pictureTop
            width: view.shownWidth
            height: view.shownHeight
            picture: view.source
            visibleArea: view.seen
        }
    }
    Rectangle {
        x: view.divider - 1
        width: 2
        height: parent.height
        color: "#ffffff"
    }
    Rectangle {
        id: knob
        x: view.divider - width / 2
        anchors.verticalCenter: parent.verticalCenter
        width: 40
        height: 40
        radius: 20
        color: "#ffffff"
        border { color: view.activeFocus ? Theme.accent : Qt.rgba(0, 0, 0, 0.15); width: view.activeFocus ? 3 : 1 }
        Symbol { name: "back"; color: "#2b3038"; size: 14; x: 5; anchors.verticalCenter: parent.verticalCenter }
        Symbol { name: "forward"; color: "#2b3038"; size: 14; x: 21; anchors.verticalCenter: parent.verticalCenter }
    }
    Item {
        // What the finger takes hold of.
        x: view.divider - width / 2
        width: 48
        height: parent.height
        HoverHandler { cursorShape: Qt.SplitHCursor }
        DragHandler {
            target: null
            dragThreshold: view.dragThreshold
            grabPermissions: PointerHandler.CanTakeOverFromAnything
            onCentroidChanged: {
                if (active) view.dragged(view.mapFromItem(null, centroid.scenePosition.x, 0).x)
            }
        }
    }
    DragHandler {
        target: null
        enabled: view.zoom > 1
        property point last
        onActiveChanged: last = centroid.position
        onCentroidChanged: {
            if (!active) return
            view.centreX -= (centroid.position.x - last.x) / view.shownWidth
            view.centreY -= (centroid.position.y - last.y) / view.shownHeight
            last = centroid.position
        }
    }
    PinchHandler {
        target: null
        property real before: 1
        onActiveChanged: before = 1
        onActiveScaleChanged: {
            view.zoomBy(activeScale / before, centroid.position)
            before = activeScale
        }
    }
    WheelHandler {
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        onWheel: (event) => view.zoomBy(Math.pow(1.0015, event.angleDelta.y), Qt.point(event.x, event.y))
    }
    TapHandler {
        // A double click leads to 100 %, and back.
        onDoubleTapped: (point) => {
            if (view.zoom > 1) return view.reset()
            view.zoomBy(1 / (view.fit * Screen.devicePixelRatio), point.position)
        }
    }
    Text {
        visible: view.zoom > 1
        anchors { right: parent.right; top: parent.top; margins: Theme.m }
        text: App.percentage(view.fit * view.zoom * Screen.devicePixelRatio)
        color: "#ffffff"
        font.pixelSize: Theme.caption
        style: Text.Outline
        styleColor: Qt.rgba(0, 0, 0, 0.6)
    }
}
