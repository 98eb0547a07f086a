// The ad beneath the detail screen; without one it takes no room.
import QtQuick
import QtQuick.Layouts
import "../Common"

Rectangle {
    id: banner

    property bool shown: false

    visible: shown
    height: shown ? 64 : 0
    color: Theme.surface

    Rectangle { width: parent.width; height: 1; color: Theme.line }
    RowLayout {
        anchors { fill: parent; leftMargin: Theme.l; rightMargin: Theme.l }
        spacing: Theme.m
        Rectangle {
            implicitWidth: 40
            implicitHeight: 40
            radius: Theme.radiusS
            color: Theme.fill
            Symbol { anchors.centerIn: parent; name: App.ads.bannerIcon; color: Theme.accent; size: 24 }
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 0
            Text {
                Layout.fillWidth: true
                text: App.ads.banner
                color: Theme.text
                font.pixelSize: Theme.body
                font.weight: Font.DemiBold
                elide: Text.ElideRight
                Accessible.role: Accessible.StaticText
                Accessible.name: App.text("Advertisement") + ": " + text
            }
            Text {
                Layout.fillWidth: true
                text: App.text("Advertisement") + " · " + App.text("AnotherAppOfTheMaker")
                color: Theme.secondaryText
                font.pixelSize: Theme.caption
                elide: Text.ElideRight
            }
        }
        PlainButton {
            visible: App.offers.moreApps
            text: App.text("ViewInStore")
            Accessible.name: text + ": " + App.ads.banner
            onClicked: App.ads.openBanner()
        }
    }
}
