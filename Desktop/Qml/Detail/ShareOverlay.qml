// The overlay after a picture was saved.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Quillmere
import "../Common"

FocusScope {
    id: overlay

    property bool shown: false
    readonly property var share: App.share

    visible: dim.opacity > 0
    enabled: shown
    focus: shown
    Keys.onEscapePressed: App.detail.closeShare()
    Accessible.role: Accessible.Dialog
    Accessible.name: App.text("CompletedToSave")

    readonly property bool enhanced: share !== null && share.isEnhanced

    component Saved: Text {
        Layout.fillWidth: true
        text: App.text("CompletedToSave")
        color: Theme.text
        font.pixelSize: Theme.title
        font.weight: Font.Bold
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    component ButtonSpring: Spring { response: 0.6; dampingFraction: 0.7 }

    Rectangle {
        id: dim
        anchors.fill: parent
        color: "#000000"
        opacity: overlay.shown ? 0.7 : 0
        Behavior on opacity { NumberAnimation { duration: Theme.calm; easing.type: Easing.InQuad } }
        Blocker { onClicked: App.detail.closeShare() }
    }
    Loader {
        id: content
        active: overlay.share !== null
        focus: true
        anchors.centerIn: parent
        width: Math.min(parent.width - 32, 480)
        height: Math.min(parent.height - 120, 720)
        sourceComponent: Component {
            Rectangle {
                radius: Theme.radiusL
                color: Theme.background
                clip: true
                Component.onCompleted: overlay.share.appear()
                Blocker { }
                ColumnLayout {
                    anchors { fill: parent; margins: Theme.xl }
                    spacing: Theme.m
                    Saved { visible: overlay.enhanced }
                    Item {
                        Layout.fillWidth: true
                        Layout.fillHeight: true
                        Layout.minimumHeight: 60
                        Layout.bottomMargin: overlay.enhanced ? Theme.l : check.height + Theme.m
                        PictureItem {
                            id: picture
                            readonly property real fit: overlay.share
                                ? Math.min(parent.width / Math.max(1, overlay.share.picture.width),
                                           parent.height / Math.max(1, overlay.share.picture.height)) : 1
                            anchors.centerIn: parent
                            width: overlay.share ? overlay.share.picture.width * fit : 0
                            height: overlay.share ? overlay.share.picture.height * fit : 0
                            picture: overlay.share ? overlay.share.picture : undefined
                            Accessible.role: Accessible.Graphic
                            Accessible.name: App.text("ConvertedPicture")
                            // Out of the window, to wherever the user wants it.
                            HoverHandler { cursorShape: Qt.OpenHandCursor }
                            DragHandler {
                                target: null
                                onActiveChanged: if (active) App.shareSheet.drag(overlay.share.picture)
                            }
                        }
                        Rectangle {
                            // Rounds the picture's corners, by what lies around it.
                            readonly property int around: 8
                            visible: overlay.enhanced
                            anchors { fill: picture; margins: -around }
                            radius: Theme.radiusM + around
                            color: "transparent"
                            border { color: Theme.background; width: around }
                        }
                        Rectangle {
                            id: check
                            anchors.horizontalCenter: picture.horizontalCenter
                            y: picture.y + picture.height + (overlay.enhanced ? -height / 2 : Theme.s)
                            width: 44; height: 44; radius: 22
                            color: Theme.good
                            border { color: Theme.background; width: 3 }
                            scale: overlay.share ? overlay.share.iconScale : 0
                            Behavior on scale {
                                SequentialAnimation {
                                    PauseAnimation { duration: overlay.enhanced ? 0 : 500 }
                                    Spring { response: overlay.enhanced ? 0.6 : 0.5; dampingFraction: overlay.enhanced ? 0.6 : 1 }
                                }
                            }
                            Symbol { anchors.centerIn: parent; name: "check"; color: "#ffffff" }
                        }
                    }
                    Saved { visible: !overlay.enhanced }
                    Text {
                        visible: overlay.enhanced
                        Layout.fillWidth: true
                        text: App.text("EncourageShareImage")
                        color: Theme.secondaryText
                        font.pixelSize: Theme.body
                        wrapMode: Text.Wrap
                        horizontalAlignment: Text.AlignHCenter
                    }
                    PlainButton {
                        Layout.fillWidth: true
                        prominent: true
                        symbol: "share"
                        focus: true
                        text: App.text(overlay.enhanced ? "ShareImage" : "Share")
                        scale: overlay.share && overlay.share.showsButtons ? 1 : 0.8
                        Behavior on scale { ButtonSpring { } }
                        onClicked: overlay.share.shareImageTapped()
                    }
                    RowLayout {
                        visible: overlay.share !== null && overlay.share.options.length > 0
                        Layout.fillWidth: true
                        opacity: overlay.share && overlay.share.showsButtons ? 1 : 0
                        transform: Translate {
                            y: overlay.share && overlay.share.showsButtons ? 0 : 20
                            Behavior on y { ButtonSpring { } }
                        }
                        Behavior on opacity { ButtonSpring { } }
                        spacing: Theme.m
                        Repeater {
                            model: overlay.share ? overlay.share.options : []
                            PlainButton {
                                required property string modelData
                                Layout.fillWidth: true
                                Layout.preferredWidth: 1
                                symbol: modelData === "message" ? "bubble" : modelData === "other" ? "more" : "camera"
                                symbolFilled: modelData !== "other"
                                symbolColor: modelData === "message" ? "#34c759"
                                    : modelData === "other" ? Theme.secondaryText : "#e1306c"
                                text: modelData === "message" ? App.text("SendMessage")
                                    : modelData === "other" ? App.text("ShareOther") : "Instagram"
                                onClicked: overlay.share.optionTapped(modelData)
                            }
                        }
                    }
                    PlainButton {
                        visible: App.offers.invitation
                        Layout.fillWidth: true
                        symbol: overlay.enhanced ? "people" : "share"
                        symbolFilled: overlay.enhanced
                        text: App.text("ShareToFriends")
                        onClicked: overlay.share.shareToFriendsTapped()
                    }
                    Text {
                        visible: App.offers.moreApps
                        text: App.text("MoreApps")
                        color: Theme.secondaryText
                        font.pixelSize: Theme.caption
                    }
                    RowLayout {
                        visible: App.offers.moreApps
                        Layout.fillWidth: true
                        spacing: Theme.m
                        Repeater {
                            model: overlay.share ? overlay.share.moreApps : []
                            PlainButton {
                                required property int modelData
                                Layout.fillWidth: true
                                Layout.preferredWidth: 1
                                text: App.moreApps[modelData].title
                                symbol: App.moreApps[modelData].icon
                                onClicked: overlay.share.moreAppTapped(modelData)
                            }
                        }
                    }
                }
            }
        }
    }
    Loader {
        anchors.fill: parent
        active: overlay.share !== null && overlay.share.showsConfetti
        sourceComponent: Component {
            Item {
                id: rain
                Repeater {
                    model: overlay.share ? overlay.share.confetti(rain.width) : []
                    Rectangle {
                        id: piece
                        required property var modelData
                        x: modelData.x
                        y: modelData.y
                        width: 10
                        height: 6
                        color: modelData.color
                        rotation: modelData.rotation
                        scale: modelData.scale
                        NumberAnimation on y {
                            to: overlay.share ? rain.height + overlay.share.confettiFallBeneathBy : 0
                            duration: overlay.share ? overlay.share.confettiMilliseconds : 0
                        }
                    }
                }
            }
        }
    }
}
