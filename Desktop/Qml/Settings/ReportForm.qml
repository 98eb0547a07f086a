// The inquiry form.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../Common"

FocusScope {
    id: form

    readonly property var report: App.report
    readonly property bool held: report !== null && report.isLoading

    Keys.onEscapePressed: App.settings.showsReport = false

    Backdrop { color: Theme.background }
    ColumnLayout {
        anchors.fill: parent
        enabled: !form.held
        opacity: form.held ? 0.4 : 1
        spacing: Theme.m
        TopBar {
            Layout.fillWidth: true
            title: App.text("RequestQuestion")
            backText: App.text("Back")
            onBack: App.settings.showsReport = false
        }
        Text {
            Layout.fillWidth: true
            Layout.leftMargin: Theme.l
            Layout.rightMargin: Theme.l
            text: App.text("FormDescription")
            horizontalAlignment: Text.AlignLeft
            color: Theme.secondaryText
            font.pixelSize: Theme.body
            wrapMode: Text.Wrap
        }
        ScrollView {
            Layout.fillWidth: true
            Layout.fillHeight: true
            focus: true
            Layout.minimumHeight: 60
            Layout.leftMargin: Theme.l
            Layout.rightMargin: Theme.l
            TextArea {
                id: words
                focus: true
                padding: Theme.m
                text: form.report ? form.report.text : ""
                onTextChanged: if (form.report) form.report.text = text
                color: Theme.text
                font.pixelSize: Theme.callout
                wrapMode: TextArea.Wrap
                selectionColor: Theme.accent
                KeyNavigation.priority: KeyNavigation.BeforeItem
                KeyNavigation.tab: send
                Accessible.name: App.text("RequestQuestion")
                background: Rectangle {
                    radius: Theme.radiusM
                    color: Theme.fill
                    border { color: Theme.accent; width: words.activeFocus ? 2 : 0 }
                }
            }
        }
        PlainButton {
            id: send
            Layout.fillWidth: true
            Layout.margins: Theme.l
            Layout.topMargin: 0
            prominent: true
            text: App.text("Send")
            enabled: form.report !== null && form.report.canSend
            onClicked: form.report.sendTapped()
        }
    }
    BusyIndicator {
        anchors.centerIn: parent
        running: form.held
        Accessible.name: App.text("Loading")
        palette.dark: Theme.accent
    }
    AlertBox { alert: form.report ? form.report.alert : null }
}
