// A short word that comes and goes by itself.
import QtQuick

Rectangle {
    id: toast

    property int milliseconds: 2000

    function show(words) {
        label.text = words
        opacity = 1
        timer.restart()
    }

    anchors { horizontalCenter: parent.horizontalCenter; bottom: parent.bottom; bottomMargin: 96 }
    width: row.width + 2 * Theme.xl
    height: 52
    radius: 26
    color: Theme.dark ? "#e9edf2" : "#1b2027"
    opacity: 0
    visible: opacity > 0
    Behavior on opacity { NumberAnimation { duration: Theme.calm } }
    Accessible.role: Accessible.AlertMessage
    Accessible.name: label.text

    Row {
        id: row
        anchors.centerIn: parent
        spacing: Theme.s
        Symbol { name: "check"; color: Theme.good; anchors.verticalCenter: parent.verticalCenter }
        Text {
            id: label
            color: Theme.dark ? "#15181d" : "#ffffff"
            font.pixelSize: Theme.callout
            anchors.verticalCenter: parent.verticalCenter
        }
    }
    Timer { id: timer; interval: toast.milliseconds; onTriggered: toast.opacity = 0 }
}
