// An ad over everything, until the user closes it.
import QtQuick
import QtQuick.Layouts
import QtQuick.Window

FocusScope {
    id: ad

    readonly property bool shown: App.ads.fullScreen !== ""
    // What had the keyboard, and gets it back.
    property Item previous: null

    function takeFocus() {
        if (!shown || activeFocus) return
        previous = Window.activeFocusItem
        forceActiveFocus()
    }

    anchors.fill: parent
    visible: shown
    onShownChanged: {
        if (shown) takeFocus()
        else if (previous) previous.forceActiveFocus()
    }
    // A screen beneath may ask for it meanwhile.
    onActiveFocusChanged: if (Window.active) Qt.callLater(takeFocus)
    Keys.onEscapePressed: App.ads.closeFullScreen()

    Rectangle {
        anchors.fill: parent
        color: Theme.background
        Blocker { }
    }
    Text {
        anchors { left: parent.left; verticalCenter: close.verticalCenter; leftMargin: Theme.l }
        text: App.text("Advertisement")
        color: Theme.secondaryText
        font.pixelSize: Theme.body
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    IconButton {
        id: close
        anchors { right: parent.right; top: parent.top; margins: Theme.s }
        focus: true
        symbol: "close"
        text: App.text("Close")
        KeyNavigation.tab: App.offers.moreApps ? store : close
        KeyNavigation.backtab: KeyNavigation.tab
        onClicked: App.ads.closeFullScreen()
    }
    ColumnLayout {
        anchors.centerIn: parent
        width: Math.min(parent.width - 2 * Theme.xl, 420)
        spacing: Theme.m
        Rectangle {
            Layout.alignment: Qt.AlignHCenter
            implicitWidth: 120
            implicitHeight: 120
            radius: Theme.radiusL
            color: Theme.fill
            Symbol { anchors.centerIn: parent; name: App.ads.fullScreenIcon; color: Theme.accent; size: 64 }
        }
        Text {
            Layout.fillWidth: true
            Layout.topMargin: Theme.m
            text: App.ads.fullScreen
            color: Theme.text
            font.pixelSize: Theme.display
            font.weight: Font.Bold
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        Text {
            Layout.fillWidth: true
            text: App.text("AnotherAppOfTheMaker")
            color: Theme.secondaryText
            font.pixelSize: Theme.callout
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        PlainButton {
            id: store
            visible: App.offers.moreApps
            Layout.fillWidth: true
            Layout.topMargin: Theme.l
            prominent: true
            symbol: "open"
            text: App.text("ViewInStore")
            KeyNavigation.tab: close
            KeyNavigation.backtab: close
            onClicked: App.ads.openFullScreen()
        }
    }
}
