// Choosing the part of a picture that goes on.
import QtQuick
import QtQuick.Layouts
import Quillmere
import "../Common"

FocusScope {
    id: cropper

    readonly property var crop: App.home.cropper
    readonly property real step: 8 / area.fit

    Keys.onEscapePressed: crop.cancel()
    Keys.onReturnPressed: crop.done()
    Keys.onLeftPressed: (event) => nudge(event, -1, 0)
    Keys.onRightPressed: (event) => nudge(event, 1, 0)
    Keys.onUpPressed: (event) => nudge(event, 0, -1)
    Keys.onDownPressed: (event) => nudge(event, 0, 1)

    // Arrows move the part; with Shift they move its lower right corner.
    function nudge(event, x, y) {
        if (!crop) return
        if (event.modifiers & Qt.ShiftModifier) {
            const rect = crop.rect
            crop.drag(Math.abs(x), Math.abs(y),
                      Qt.point(rect.x + rect.width + x * step, rect.y + rect.height + y * step))
        } else {
            crop.moveBy(x * step, y * step)
        }
    }

    Backdrop { color: "#0b0d10" }

    Item {
        id: area
        anchors {
            left: parent.left; right: parent.right; top: parent.top; bottom: tools.top
            margins: Theme.xl
        }
        readonly property size picture: cropper.crop
            ? Qt.size(Math.max(1, cropper.crop.picture.width), Math.max(1, cropper.crop.picture.height))
            : Qt.size(1, 1)
        // Points for each pixel.
        readonly property real fit: Math.min(width / picture.width, height / picture.height)

        PictureItem {
            id: shown
            width: area.picture.width * area.fit
            height: area.picture.height * area.fit
            anchors.centerIn: parent
            picture: cropper.crop ? cropper.crop.picture : undefined
            Accessible.ignored: true

            readonly property rect kept: cropper.crop
                ? Qt.rect(cropper.crop.rect.x * area.fit, cropper.crop.rect.y * area.fit,
                          cropper.crop.rect.width * area.fit, cropper.crop.rect.height * area.fit)
                : Qt.rect(0, 0, 0, 0)

            component Dark: Rectangle { color: Qt.rgba(0, 0, 0, 0.6) }
            Dark { width: parent.width; height: shown.kept.y }
            Dark { y: shown.kept.y + shown.kept.height; width: parent.width; height: parent.height - y }
            Dark { y: shown.kept.y; width: shown.kept.x; height: shown.kept.height }
            Dark {
                x: shown.kept.x + shown.kept.width
                y: shown.kept.y
                width: parent.width - x
                height: shown.kept.height
            }
            Rectangle {
                id: frame
                x: shown.kept.x
                y: shown.kept.y
                width: shown.kept.width
                height: shown.kept.height
                color: "transparent"
                border { color: "#ffffff"; width: 2 }
                Accessible.role: Accessible.Graphic
                Accessible.name: App.text("CropArea")
                Repeater {
                    model: 2
                    Rectangle {
                        required property int index
                        x: frame.width * (index + 1) / 3
                        width: 1; height: frame.height
                        color: "#ffffff"; opacity: 0.35
                    }
                }
                Repeater {
                    model: 2
                    Rectangle {
                        required property int index
                        y: frame.height * (index + 1) / 3
                        height: 1; width: frame.width
                        color: "#ffffff"; opacity: 0.35
                    }
                }
                DragHandler {
                    target: null
                    property point last
                    onActiveChanged: last = centroid.scenePosition
                    onCentroidChanged: {
                        if (!active) return
                        cropper.crop.moveBy((centroid.scenePosition.x - last.x) / area.fit,
                                            (centroid.scenePosition.y - last.y) / area.fit)
                        last = centroid.scenePosition
                    }
                }
            }
            Repeater {
                model: [[-1, -1], [0, -1], [1, -1], [-1, 0], [1, 0], [-1, 1], [0, 1], [1, 1]]
                Item {
                    id: handle
                    required property var modelData
                    x: shown.kept.x + (modelData[0] + 1) / 2 * shown.kept.width - width / 2
                    y: shown.kept.y + (modelData[1] + 1) / 2 * shown.kept.height - height / 2
                    width: 36
                    height: 36
                    Rectangle {
                        anchors.centerIn: parent
                        width: 14; height: 14; radius: 7
                        color: "#ffffff"
                    }
                    DragHandler {
                        target: null
                        onCentroidChanged: {
                            if (!active) return
                            const at = shown.mapFromItem(null, centroid.scenePosition.x,
                                                         centroid.scenePosition.y)
                            cropper.crop.drag(handle.modelData[0], handle.modelData[1],
                                              Qt.point(at.x / area.fit, at.y / area.fit))
                        }
                    }
                }
            }
        }
    }
    ColumnLayout {
        id: tools
        anchors {
            left: parent.left; right: parent.right; bottom: parent.bottom
            margins: Theme.l
        }
        spacing: Theme.m
        component Tool: IconButton {
            symbolColor: "#ffffff"
            quiet: false
            background: Rectangle {
                radius: Theme.radiusM
                color: parent.hovered || parent.down ? "#3b444f" : "#242a32"
                FocusRing { target: parent.parent }
            }
        }
        Flow {
            Layout.alignment: Qt.AlignHCenter
            // A flow asks for no more than the square root of its parts' area.
            Layout.preferredWidth: Math.min(cropper.width - 2 * Theme.l, 640)
            spacing: Theme.s
            Tool { symbol: "rotateLeft"; text: App.text("RotateLeft"); onClicked: cropper.crop.rotateCounterclockwise() }
            Tool { symbol: "rotateRight"; text: App.text("RotateRight"); onClicked: cropper.crop.rotateClockwise() }
            Tool { symbol: "flip"; text: App.text("Flip"); onClicked: cropper.crop.flip() }
            Tool {
                symbol: "reset"
                text: App.text("Reset")
                enabled: cropper.crop !== null && cropper.crop.isChanged
                onClicked: cropper.crop.reset()
            }
            Repeater {
                model: [[0, 0], [1, 1], [3, 2], [4, 3], [5, 4], [16, 9]]
                PlainButton {
                    required property var modelData
                    readonly property bool chosen: cropper.crop !== null && (modelData[0] === 0
                        ? cropper.crop.ratio === 0
                        : Math.abs(cropper.crop.ratio - modelData[0] / modelData[1]) < 1e-6
                          || Math.abs(cropper.crop.ratio - modelData[1] / modelData[0]) < 1e-6)
                    text: modelData[0] === 0 ? App.text("Free") : modelData[0] + ":" + modelData[1]
                    prominent: chosen
                    textColor: "#ffffff"
                    onClicked: cropper.crop.setRatio(modelData[0], modelData[1])
                    background: Rectangle {
                        radius: Theme.radiusM
                        color: parent.chosen ? Theme.accent : "#242a32"
                        FocusRing { target: parent.parent }
                    }
                }
            }
        }
        RowLayout {
            spacing: Theme.m
            PlainButton {
                text: App.text("Cancel")
                onClicked: cropper.crop.cancel()
            }
            Item { Layout.fillWidth: true }
            PlainButton {
                prominent: true
                text: App.text("Done")
                focus: true
                onClicked: cropper.crop.done()
            }
        }
    }
}
