// What the lower edge of the preview tells of source and result.
import QtQuick
import QtQuick.Layouts
import "../Common"

Rectangle {
    id: strip

    readonly property var detail: App.detail

    color: Qt.rgba(0, 0, 0, 0.8)
    implicitHeight: lines.implicitHeight + 2 * Theme.s

    component Notice: RowLayout {
        property color tint
        property string words
        Layout.fillWidth: true
        spacing: Theme.s
        Symbol { name: "info"; color: parent.tint; size: 16; Layout.alignment: Qt.AlignTop; Layout.topMargin: 1 }
        Text {
            Layout.fillWidth: true
            text: parent.words
            color: "#ffffff"
            font.pixelSize: Theme.caption
            wrapMode: Text.Wrap
        }
    }
    ColumnLayout {
        id: lines
        anchors {
            left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter
            margins: Theme.m
        }
        spacing: Theme.xs
        Notice {
            visible: strip.detail !== null && strip.detail.isVideo
            tint: "#f2c14b"
            words: App.text("VideoNotice")
        }
        Notice {
            visible: strip.detail !== null && strip.detail.tooBigNotice !== ""
            tint: "#ff7b72"
            words: strip.detail ? strip.detail.tooBigNotice : ""
        }
        PlainButton {
            visible: strip.detail !== null && strip.detail.tooBigNotice !== ""
            Layout.fillWidth: true
            implicitHeight: 34
            symbol: "gear"
            text: App.text("ResolutionLimitForOriginalImage")
            textColor: "#ffffff"
            font.pixelSize: Theme.caption
            background: Rectangle {
                radius: Theme.radiusS
                color: parent.hovered ? Qt.rgba(1, 1, 1, 0.28) : Qt.rgba(1, 1, 1, 0.18)
                FocusRing { target: parent.parent }
            }
            onClicked: strip.detail.resolutionLimitTapped()
        }
        RowLayout {
            Accessible.role: Accessible.StaticText
            Accessible.name: strip.detail
                ? App.text("SizeChange", strip.detail.sourceSize, strip.detail.resultSize) : ""
            Layout.alignment: Qt.AlignHCenter
            spacing: Theme.s
            Text { text: strip.detail ? strip.detail.sourceSize : ""; color: "#d5dae1"; font.pixelSize: Theme.body; Accessible.ignored: true }
            Text { text: strip.LayoutMirroring.enabled ? "←" : "→"; color: "#d5dae1"; font.pixelSize: Theme.body; Accessible.ignored: true }
            Text {
                text: strip.detail ? strip.detail.resultSize : ""
                color: "#ffffff"
                font.pixelSize: Theme.body
                font.weight: Font.Bold
                Accessible.ignored: true
            }
        }
    }
}
