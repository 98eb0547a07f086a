// Choosing the format of saved pictures, and what they keep.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../Common"

Sheet {
    id: sheet

    property var format: null

    shown: format !== null
    name: App.text("SaveFormat")
    sheetWidth: 460

    Rectangle {
        // The drag indicator.
        anchors { horizontalCenter: parent.horizontalCenter; top: parent.top; topMargin: Theme.s }
        width: 36
        height: 5
        radius: 3
        color: Theme.line
    }
    Scroller {
        id: scroll
        anchors {
            left: parent.left; right: parent.right; top: parent.top; bottom: done.top
            margins: Theme.l; topMargin: Theme.xl; bottomMargin: Theme.m
        }
        ColumnLayout {
            width: scroll.availableWidth
            spacing: Theme.m
            Card {
                heading: App.text("SaveFormat")
                Repeater {
                    model: sheet.format ? sheet.format.rows : []
                    ListRow {
                        required property var modelData
                        required property int index
                        Layout.fillWidth: true
                        text: modelData.name
                        detail: App.text(modelData.descriptionKey)
                        trailing: modelData.isSelected ? "check" : ""
                        trailingColor: Theme.accent
                        Accessible.role: Accessible.RadioButton
                        Accessible.checked: modelData.isSelected
                        onClicked: sheet.format.select(index)
                    }
                }
            }
            Card {
                heading: App.text("MetadataSettings")
                footer: App.text("MetadataSettingsNotice")
                Toggle {
                    Layout.fillWidth: true
                    symbol: "calendar"
                    text: App.text("PreserveCreationDate")
                    checked: sheet.format !== null && sheet.format.keepsDate
                    onToggled: sheet.format.keepsDate = checked
                }
                Toggle {
                    Layout.fillWidth: true
                    symbol: "place"
                    text: App.text("PreserveLocation")
                    checked: sheet.format !== null && sheet.format.keepsPlace
                    onToggled: sheet.format.keepsPlace = checked
                }
            }
        }
    }
    PlainButton {
        id: done
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom; margins: Theme.l }
        prominent: true
        text: App.text("Done")
        onClicked: sheet.format.done()
    }
}
