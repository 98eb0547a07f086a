// A choice of a few, side by side.
import QtQuick
import QtQuick.Layouts

RowLayout {
    id: segments

    property string title
    property var names: []
    property int current: 0
    signal chosen(int index)

    spacing: Theme.s
    Accessible.role: Accessible.Grouping
    Accessible.name: title
    Repeater {
        model: segments.names
        Pressable {
            id: segment
            required property string modelData
            required property int index
            readonly property bool isCurrent: segments.current === index
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            implicitHeight: 38
            text: modelData
            Accessible.role: Accessible.RadioButton
            Accessible.checked: isCurrent
            onClicked: segments.chosen(index)
            contentItem: Text {
                text: segment.text
                color: segment.isCurrent ? Theme.accentText : Theme.text
                font.pixelSize: Theme.body
                font.weight: segment.isCurrent ? Font.DemiBold : Font.Medium
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
            }
            background: Rectangle {
                radius: Theme.radiusS
                color: segment.isCurrent ? Theme.accent : segment.hovered ? Theme.fillHovered : Theme.fill
                FocusRing { target: segment }
            }
        }
    }
}
