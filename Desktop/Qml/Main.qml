// The window: the home screen, and the screens that lie over it.
import QtQuick
import QtQuick.Window
import "Common"
import "Home"
import "Detail"
import "Settings"

Window {
    id: window

    width: Math.min(1120, Screen.desktopAvailableWidth)
    height: Math.min(780, Screen.desktopAvailableHeight)
    minimumWidth: 360
    minimumHeight: 560
    visible: true
    title: App.text("AppName")
    color: Theme.background
    onClosing: (close) => close.accepted = App.mayClose()

    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true

    HomeScreen {
        id: home
        anchors.fill: parent
        // Nor the keyboard nor a screen reader gets beneath what lies over it.
        enabled: !detail.active && !picker.shown && !cropper.active && !settings.shown
            && !App.shareSheet.isShown && !App.home.alert.isShown && !App.alert.isShown
            && !App.home.isLoading
        focus: enabled
    }
    Loader {
        id: detail
        anchors.fill: parent
        active: App.detail !== null
        sourceComponent: Component { DetailScreen { } }
        enabled: !settings.shown && App.preview === null && !App.shareSheet.isShown
            && !App.alert.isShown
        focus: active && enabled
        onActiveChanged: {
            if (active) item.forceActiveFocus()
            else App.home.appear()
        }
    }
    Loader {
        anchors.fill: parent
        active: App.preview !== null
        enabled: !App.shareSheet.isShown && !App.alert.isShown
        focus: active && enabled
        sourceComponent: Component { VideoPreview { } }
        onActiveChanged: {
            if (active) item.forceActiveFocus()
            else if (detail.item) detail.item.forceActiveFocus()
        }
    }
    LibraryPicker {
        id: picker
        shown: App.home.showsPicturePicker || App.home.showsVideoPicker
    }
    LoadingSheet {
        active: App.home.isLoading
        onDismissed: App.home.cancelLoading()
        z: 10
    }
    Loader {
        id: cropper
        anchors.fill: parent
        active: App.home.cropper !== null
        sourceComponent: Component { Cropper { } }
        onLoaded: item.forceActiveFocus()
        z: 10
    }
    Loader {
        id: settings
        readonly property bool shown: App.settings !== null
        anchors.fill: parent
        active: shown
        enabled: !App.shareSheet.isShown && !App.alert.isShown
        focus: active && enabled
        sourceComponent: Component { SettingsSheet { } }
        z: 11
    }
    ShareMenu { focus: shown && !App.alert.isShown; z: 12 }
    AlertBox { alert: App.home.alert; z: 13 }
    AlertBox { alert: App.alert; z: 13 }

    FullScreenAd { id: ad; z: 14 }

    DropArea {
        anchors.fill: parent
        enabled: !detail.active && !cropper.active && !ad.shown
        onDropped: (drop) => {
            if (!drop.hasUrls) return
            drop.acceptProposedAction()
            App.home.open(drop.urls)
        }
        Rectangle {
            anchors { fill: parent; margins: Theme.m }
            visible: parent.containsDrag
            color: "transparent"
            radius: Theme.radiusL
            border.color: Theme.accent
            border.width: 3
        }
    }
    Shortcut {
        sequences: [StandardKey.Paste]
        // What is pasted takes the place of what is still on its way.
        enabled: (home.enabled || App.home.isLoading) && !ad.shown
        onActivated: App.home.paste()
    }
    // The application ends with its window, which asks where that would end work. Not every desktop
    // has a standard key for it.
    Shortcut { sequence: "Ctrl+Q"; onActivated: window.close() }
    Connections {
        target: App
        function onCloseAgreed() { window.close() }
    }
    FilePicker { }

    Component.onCompleted: App.home.appear()
}
