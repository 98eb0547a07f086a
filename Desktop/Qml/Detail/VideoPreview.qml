// The finished video: played, saved, shared.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import QtMultimedia
import Quillmere
import "../Common"

FocusScope {
    id: screen

    readonly property var preview: App.preview

    Keys.onEscapePressed: App.detail.closePreview()
    Keys.onSpacePressed: toggle()
    function toggle() {
        player.playbackState === MediaPlayer.PlayingState ? player.pause() : player.play()
    }
    function clock(milliseconds) {
        const seconds = Math.floor(milliseconds / 1000)
        return Math.floor(seconds / 60) + ":" + String(seconds % 60).padStart(2, "0")
    }

    Backdrop { color: Theme.background }
    WayBack { onTaken: App.detail.closePreview() }

    MediaPlayer {
        id: player
        source: screen.preview ? screen.preview.video : ""
        videoOutput: output
        // An output without a device brings the player down.
        audioOutput: devices.audioOutputs.length > 0 ? sound.createObject(player) : null
        loops: loop.checked ? MediaPlayer.Infinite : 1
        Component.onCompleted: play()
    }
    Component {
        id: sound
        AudioOutput { muted: mute.checked }
    }
    MediaDevices { id: devices }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0
        TopBar {
            Layout.fillWidth: true
            backText: App.text("Back")
            onBack: App.detail.closePreview()
        }
        Rectangle {
            Layout.fillWidth: true
            Layout.fillHeight: true
            color: "#000000"
            // The player leaves frames as they are stored.
            VideoItem {
                id: output
                readonly property bool lies: Math.abs(rotation % 180) === 90
                anchors.centerIn: parent
                width: lies ? parent.height : parent.width
                height: lies ? parent.width : parent.height
                rotation: screen.preview ? screen.preview.rotation : 0
                Accessible.role: Accessible.Animation
                Accessible.name: App.text("Video")
            }
            TapHandler { onTapped: screen.toggle() }
        }
        RowLayout {
            Layout.fillWidth: true
            Layout.margins: Theme.s
            spacing: Theme.xs
            IconButton {
                symbol: player.playbackState === MediaPlayer.PlayingState ? "pause" : "play"
                text: App.text(player.playbackState === MediaPlayer.PlayingState ? "Pause" : "Play")
                onClicked: screen.toggle()
            }
            Text { text: screen.clock(player.position); color: Theme.secondaryText; font.pixelSize: Theme.body }
            Slider {
                id: seek
                Layout.fillWidth: true
                from: 0
                to: Math.max(1, player.duration)
                value: player.position
                Accessible.name: App.text("Position")
                onMoved: player.position = value
                palette.dark: Theme.accent
                palette.midlight: Theme.fillHovered
            }
            Text { text: screen.clock(player.duration); color: Theme.secondaryText; font.pixelSize: Theme.body }
            IconButton { id: loop; symbol: "loop"; text: App.text("Loop"); checkable: true }
            IconButton {
                id: mute
                visible: devices.audioOutputs.length > 0
                symbol: checked ? "mute" : "sound"
                text: App.text("Mute")
                checkable: true
            }
        }
        RowLayout {
            Layout.fillWidth: true
            Layout.maximumWidth: 560
            Layout.alignment: Qt.AlignHCenter
            Layout.margins: Theme.l
            Layout.topMargin: 0
            spacing: Theme.m
            component Action: PlainButton {
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                prominent: true
                round: true
                leastTextSize: Math.floor(font.pixelSize / 2)
            }
            Action {
                text: App.text("Save")
                focus: true
                onClicked: screen.preview.saveTapped()
            }
            Action {
                text: App.text("Share")
                onClicked: screen.preview.shareTapped()
            }
        }
    }
    Toast {
        id: toast
        milliseconds: screen.preview ? screen.preview.confirmationMilliseconds : 2000
    }
    Connections {
        target: screen.preview
        function onConfirmed(text) { toast.show(text) }
    }
    AlertBox { alert: screen.preview ? screen.preview.alert : null }
}
