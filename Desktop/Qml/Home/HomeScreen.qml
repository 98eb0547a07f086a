// The first screen: every way in.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../Common"

FocusScope {
    id: screen

    readonly property bool wide: width >= 820

    component SampleButton: Pressable {
        id: sample
        property string picture
        Layout.fillWidth: true
        Layout.preferredWidth: 1
        Layout.preferredHeight: (column.width - Theme.l) / 2 * 0.62
        contentItem: Item { }
        background: Rectangle {
            radius: Theme.radiusL
            color: Theme.picture
            Item {
                anchors.fill: parent
                clip: true
                Image {
                    anchors.fill: parent
                    source: sample.picture
                    fillMode: Image.PreserveAspectCrop
                    sourceSize: Qt.size(700, 460)
                    asynchronous: true
                    scale: sample.hovered ? 1.02 : 1
                    Behavior on scale { NumberAnimation { duration: Theme.calm } }
                }
            }
            // Rounds the picture's corners, by what lies around it.
            Rectangle {
                readonly property int around: 8
                anchors { fill: parent; margins: -around }
                radius: Theme.radiusL + around
                color: "transparent"
                border { color: Theme.background; width: around }
            }
            FocusRing { target: sample }
            Rectangle {
                anchors { left: parent.left; bottom: parent.bottom; margins: Theme.m }
                width: name.width + 2 * Theme.m
                height: 30
                radius: 15
                color: Qt.rgba(0, 0, 0, 0.62)
                Text {
                    id: name
                    anchors.centerIn: parent
                    text: sample.text
                    color: "#ffffff"
                    font.pixelSize: Theme.body
                    font.weight: Font.DemiBold
                }
            }
        }
    }

    Scroller {
        id: scroll
        anchors.fill: parent
        Item {
            width: scroll.availableWidth
            implicitHeight: column.height + 2 * column.anchors.topMargin
            ColumnLayout {
                id: column
                width: Math.min(parent.width - 2 * Theme.l, screen.wide ? 980 : 560)
                anchors {
                    top: parent.top
                    topMargin: screen.wide ? Theme.xxl : Theme.xl
                    horizontalCenter: parent.horizontalCenter
                }
                spacing: Theme.xl

                Text {
                    text: App.text("AppName")
                    color: Theme.text
                    font.pixelSize: Theme.display
                    font.weight: Font.Bold
                    Accessible.role: Accessible.Heading
                    Accessible.name: text
                }
                Card {
                    visible: App.offers.moreApps && App.home.showsMoreApps
                    heading: App.text("MoreApps")
                    ListRow {
                        Layout.fillWidth: true
                        symbol: App.moreApps[App.home.moreApp].icon
                        text: App.moreApps[App.home.moreApp].title
                        onClicked: App.home.moreAppTapped()
                    }
                }
                ColumnLayout {
                    spacing: Theme.s
                    Text {
                        text: App.text("TrySample")
                        color: Theme.secondaryText
                        font.pixelSize: Theme.body
                        font.weight: Font.DemiBold
                        Layout.leftMargin: Theme.xs
                    }
                    RowLayout {
                        spacing: Theme.l
                        SampleButton {
                            text: App.text("SampleIllustration")
                            picture: App.sampleIllustration
                            onClicked: App.home.illustrationTapped()
                        }
                        SampleButton {
                            text: App.text("SamplePhoto")
                            picture: App.samplePhoto
                            onClicked: App.home.photoTapped()
                        }
                    }
                }
                GridLayout {
                    columns: screen.wide ? 2 : 1
                    columnSpacing: Theme.l
                    rowSpacing: Theme.xl
                    Card {
                        heading: App.text("Photo")
                        Layout.alignment: Qt.AlignTop
                        Layout.preferredWidth: 1
                        ListRow {
                            Layout.fillWidth: true
                            symbol: "photo"
                            text: App.text("SelectFromLibrary")
                            focus: true
                            onClicked: App.home.selectFromLibraryTapped()
                        }
                        ListRow {
                            Layout.fillWidth: true
                            symbol: "folder"
                            text: App.text("SelectFromFiles")
                            onClicked: App.home.selectFromFilesTapped()
                        }
                        ListRow {
                            Layout.fillWidth: true
                            symbol: "crop"
                            text: App.text("EnableCrop")
                            detail: App.text("CropDescription")
                            checkable: true
                            checked: App.home.enableCrop
                            trailing: "checkSquare"
                            trailingFilled: App.home.enableCrop
                            trailingColor: App.home.enableCrop ? Theme.good : Theme.secondaryText
                            Accessible.role: Accessible.CheckBox
                            Accessible.checked: App.home.enableCrop
                            onClicked: App.home.cropRowTapped()
                        }
                        ListRow {
                            Layout.fillWidth: true
                            symbol: "photos"
                            text: App.text("SelectMultipleFromLibrary")
                            onClicked: App.home.selectMultipleTapped()
                        }
                    }
                    ColumnLayout {
                        Layout.alignment: Qt.AlignTop
                        Layout.fillWidth: true
                        Layout.preferredWidth: 1
                        spacing: Theme.xl
                        Card {
                            heading: App.text("Video")
                            ListRow {
                                Layout.fillWidth: true
                                symbol: "film"
                                text: App.text("SelectFromLibrary")
                                onClicked: App.home.selectVideoTapped()
                            }
                        }
                        GridLayout {
                            // One below the other where a language needs more room.
                            readonly property bool narrow: width < columnSpacing
                                + 2 * Math.max(settings.implicitWidth, invite.implicitWidth)
                            Layout.fillWidth: true
                            columns: narrow ? 1 : 2
                            columnSpacing: Theme.m
                            rowSpacing: Theme.m
                            PlainButton {
                                id: settings
                                Layout.fillWidth: true
                                Layout.preferredWidth: 1
                                symbol: "gear"
                                text: App.text("Settings")
                                onClicked: App.home.showSettings = true
                            }
                            PlainButton {
                                id: invite
                                visible: App.offers.invitation
                                Layout.fillWidth: true
                                Layout.preferredWidth: 1
                                symbol: "share"
                                text: App.text("ShareToFriends")
                                onClicked: App.home.shareToFriendsTapped()
                            }
                        }
                    }
                }
                Item { implicitHeight: Theme.l }
            }
        }
    }
}
