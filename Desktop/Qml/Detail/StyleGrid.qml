// The rows of styles.
import QtQuick
import QtQuick.Layouts
import "../Common"

ColumnLayout {
    id: grid

    property var rows
    signal tapped(int style)

    spacing: Theme.s
    Accessible.role: Accessible.Grouping
    Accessible.name: App.text("Styles")

    Repeater {
        model: grid.rows
        RowLayout {
            id: line
            required property var modelData
            Layout.fillWidth: true
            spacing: Theme.s
            Repeater {
                model: line.modelData
                Pressable {
                    id: style
                    required property var modelData
                    Layout.fillWidth: true
                    Layout.preferredWidth: 1
                    implicitHeight: Theme.controlHeight
                    text: modelData.text
                    Accessible.role: Accessible.RadioButton
                    Accessible.checked: modelData.isSelected
                    onClicked: grid.tapped(modelData.style)
                    contentItem: Text {
                        text: style.text
                        color: style.modelData.isSelected ? Theme.accentText
                            : style.modelData.isGray ? Theme.secondaryText : Theme.text
                        font.pixelSize: Theme.body
                        font.weight: style.modelData.isSelected ? Font.DemiBold : Font.Medium
                        fontSizeMode: Text.Fit
                        minimumPixelSize: 9
                        wrapMode: Text.WordWrap
                        maximumLineCount: 3
                        horizontalAlignment: Text.AlignHCenter
                        verticalAlignment: Text.AlignVCenter
                        leftPadding: 4
                        rightPadding: 4
                        elide: Text.ElideRight
                    }
                    background: Rectangle {
                        radius: Theme.radiusM
                        color: style.modelData.isSelected ? Theme.accent
                            : style.hovered || style.down ? Theme.fillHovered : Theme.fill
                        Behavior on color { ColorAnimation { duration: Theme.quick } }
                        FocusRing { target: style }
                    }
                }
            }
        }
    }
}
