// One line of a list that can be tapped: a sign, a text, and what stands at its end.
import QtQuick

Pressable {
    id: row

    property string symbol
    property string detail
    property string trailing: "forward"
    property color trailingColor: Theme.secondaryText
    property bool trailingFilled: false

    implicitHeight: Math.max(54, words.height + 2 * Theme.m)
    Accessible.description: detail
    Accessible.onToggleAction: clicked()

    contentItem: Item {
        Symbol {
            id: sign
            visible: row.symbol !== ""
            name: row.symbol
            color: Theme.accent
            size: 22
            anchors { left: parent.left; leftMargin: Theme.l; verticalCenter: parent.verticalCenter }
        }
        Column {
            id: words
            anchors {
                left: parent.left
                leftMargin: row.symbol === "" ? Theme.l : Theme.l + 22 + Theme.m
                right: parent.right
                rightMargin: row.trailing === "" ? Theme.l : Theme.l + 18 + Theme.m
                verticalCenter: parent.verticalCenter
            }
            spacing: 2
            Text {
                width: parent.width
                text: row.text
                color: Theme.text
                horizontalAlignment: Text.AlignLeft  // the side that the window's lines begin at
                font.pixelSize: Theme.callout
                wrapMode: Text.Wrap
            }
            Text {
                width: parent.width
                visible: row.detail !== ""
                text: row.detail
                horizontalAlignment: Text.AlignLeft
                color: Theme.secondaryText
                font.pixelSize: Theme.caption
                wrapMode: Text.Wrap
            }
        }
        Symbol {
            visible: row.trailing !== ""
            name: row.trailing
            color: row.trailingColor
            filled: row.trailingFilled
            size: 18
            anchors {
                right: parent.right; rightMargin: Theme.l; verticalCenter: parent.verticalCenter
            }
            transform: Scale {
                xScale: row.trailing === "forward" && row.mirrored ? -1 : 1
                origin.x: 9
            }
        }
    }
    background: Rectangle {
        radius: Theme.radiusM
        color: row.hovered || row.down ? Theme.fillHovered : "transparent"
        FocusRing { target: row }
    }
}
