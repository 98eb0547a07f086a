// One line of a list that can be tapped: a sign, a text, and what stands at its end.
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T

T.Button {
    id: row

    property string symbol
    property string detail
    property string trailing: "forward"
    property color trailingColor: Theme.secondaryText

    implicitHeight: Math.max(54, content.implicitHeight + 2 * Theme.s)
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Accessible.name: text
    Accessible.description: detail
    Keys.onReturnPressed: click()
    Keys.onEnterPressed: click()

    contentItem: RowLayout {
        id: content
        spacing: Theme.m
        Symbol {
            visible: row.symbol !== ""
            name: row.symbol
            color: Theme.accent
            size: 22
            Layout.leftMargin: Theme.l
        }
        ColumnLayout {
            Layout.fillWidth: true
            Layout.leftMargin: row.symbol === "" ? Theme.l : 0
            spacing: 2
            Text {
                Layout.fillWidth: true
                text: row.text
                color: Theme.text
                font.pixelSize: Theme.callout
                wrapMode: Text.Wrap
            }
            Text {
                Layout.fillWidth: true
                visible: row.detail !== ""
                text: row.detail
                color: Theme.secondaryText
                font.pixelSize: Theme.caption
                wrapMode: Text.Wrap
            }
        }
        Symbol {
            visible: row.trailing !== ""
            name: row.trailing
            color: row.trailingColor
            size: 18
            Layout.rightMargin: Theme.l
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
