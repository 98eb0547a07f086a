// Holds what lies beneath while something is under way: blurred where that can be drawn, and with
// a box in the middle that grows with what it holds beside its title and activity indicator.
import QtQuick
import QtQuick.Controls.Basic

Item {
    id: view

    property string title
    property bool isShowing: false
    // As long as nothing in the box tells it better.
    property bool isBusy: isShowing
    property Item content
    default property alias box: column.data
    readonly property var measures: App.loadingMeasures

    visible: opacity > 0
    opacity: isShowing ? 1 : 0
    Behavior on opacity { NumberAnimation { duration: Theme.calm } }

    Blurred {
        anchors.fill: parent
        beneath: view.content
        deviation: view.measures.contentBlurRadius
    }
    Rectangle {
        anchors.fill: parent
        color: Theme.dim
        Blocker { enabled: view.isShowing }
    }
    Rectangle {
        anchors.centerIn: parent
        width: Math.max(parent.width * view.measures.boxWidthShare,
                        column.implicitWidth + 2 * Theme.xl)
        height: Math.max(parent.height * view.measures.boxHeightShare,
                         column.implicitHeight + 2 * Theme.xl)
        radius: view.measures.boxCornerRadius
        color: Theme.raised
        Column {
            id: column
            anchors.centerIn: parent
            spacing: Theme.m
            BusyIndicator {
                anchors.horizontalCenter: parent.horizontalCenter
                visible: view.isBusy
                running: visible
                palette.dark: Theme.accent
                Accessible.name: App.text("Loading")
            }
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                visible: text !== ""
                text: view.title
                color: Theme.text
                font.pixelSize: Theme.callout
            }
        }
    }
}
