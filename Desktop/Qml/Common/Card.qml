// A group of rows on one sheet of paper.
import QtQuick
import QtQuick.Layouts

Rectangle {
    id: card

    default property alias content: column.data
    property string heading
    property string footer

    Layout.fillWidth: true
    implicitHeight: column.implicitHeight + (heading === "" ? 0 : title.height + Theme.s)
        + (footer === "" ? 0 : note.height + Theme.s)
    color: "transparent"

    Text {
        id: title
        visible: card.heading !== ""
        text: card.heading
        horizontalAlignment: Text.AlignLeft
        color: Theme.secondaryText
        font.pixelSize: Theme.body
        font.weight: Font.DemiBold
        anchors { left: parent.left; right: parent.right; leftMargin: Theme.xs }
        elide: Text.ElideRight
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    Rectangle {
        anchors { left: parent.left; right: parent.right }
        y: card.heading === "" ? 0 : title.height + Theme.s
        height: column.implicitHeight
        radius: Theme.radiusL
        color: Theme.surface
        border.color: Theme.line
        border.width: Theme.dark ? 0 : 1
        ColumnLayout {
            id: column
            anchors.fill: parent
            spacing: 0
        }
    }
    Text {
        id: note
        visible: card.footer !== ""
        text: card.footer
        horizontalAlignment: Text.AlignLeft
        color: Theme.secondaryText
        font.pixelSize: Theme.caption
        wrapMode: Text.Wrap
        anchors {
            left: parent.left; right: parent.right; bottom: parent.bottom
            leftMargin: Theme.xs; rightMargin: Theme.xs
        }
    }
}
