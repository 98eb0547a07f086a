// The settings.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../Common"

Sheet {
    id: sheet

    readonly property var settings: App.settings

    function close() {
        App.home.showSettings = false
        if (App.detail) App.detail.showsSettings = false
    }

    shown: true
    name: App.text("Settings")
    sheetWidth: 560
    sheetHeight: App.report !== null ? 720 : bar.height + rows.implicitHeight + 2 * Theme.l
    onDismissed: close()
    Component.onCompleted: forceActiveFocus()

    TopBar {
        id: bar
        width: parent.width
        enabled: App.report === null
        title: App.text("Settings")
        backText: App.text("Close")
        backSymbol: "close"
        onBack: sheet.close()
    }
    Scroller {
        id: scroll
        enabled: App.report === null
        anchors { left: parent.left; right: parent.right; top: bar.bottom; bottom: parent.bottom; margins: Theme.l }
        ColumnLayout {
            id: rows
            width: scroll.availableWidth
            spacing: Theme.xl
            Card {
                heading: App.text("ResolutionLimitForOriginalImage")
                footer: App.text("ResolutionLimitNotice")
                Segments {
                    Layout.fillWidth: true
                    Layout.margins: Theme.m
                    title: App.text("ResolutionLimitForOriginalImage")
                    names: ["1024px", "2048px"]
                    current: sheet.settings ? sheet.settings.limitIndex : 0
                    onChosen: (index) => sheet.settings.limitIndex = index
                }
            }
            Card {
                visible: App.offers.invitation
                ListRow {
                    Layout.fillWidth: true
                    symbol: "share"
                    text: App.text("ShareToFriends")
                    trailing: ""
                    onClicked: sheet.settings.shareToFriendsTapped()
                }
            }
            Card {
                id: waysOut
                readonly property var rows: [
                    ["inquiry", "bubble", "BugReport", "bugReportTapped"],
                    ["mail", "mail", "Contact", "contactTapped"],
                    ["moreApps", "apps", "MoreApps", "moreAppsTapped"],
                    ["review", "pencil", "WriteReview", "writeReviewTapped"]
                ].filter((row) => App.offers[row[0]])
                visible: waysOut.rows.length > 0
                Repeater {
                    model: waysOut.rows
                    ListRow {
                        required property var modelData
                        Layout.fillWidth: true
                        symbol: modelData[1]
                        text: App.text(modelData[2])
                        onClicked: sheet.settings[modelData[3]]()
                    }
                }
            }
            Card {
                visible: App.offers.moreApps
                heading: App.text("MoreApps")
                Repeater {
                    model: App.moreApps
                    ListRow {
                        required property var modelData
                        required property int index
                        Layout.fillWidth: true
                        symbol: modelData.icon
                        text: modelData.title
                        onClicked: sheet.settings.moreAppTapped(index)
                    }
                }
            }
        }
    }
    Loader {
        anchors.fill: parent
        active: App.report !== null
        sourceComponent: Component { ReportForm { } }
        onLoaded: item.forceActiveFocus()
    }
    AlertBox { alert: sheet.settings ? sheet.settings.alert : null }
}
