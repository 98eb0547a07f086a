// The overlay of a running conversion: a dim layer, and a card with a ring and its percentage.
import QtQuick
import "../Common"

WorkOverlay {
    id: overlay

    property Item content
    readonly property var measures: App.conversionMeasures

    property real presence: shown ? 1 : 0
    Behavior on presence {
        SpringAnimation {
            spring: overlay.measures.spring
            damping: overlay.measures.springDamping
            epsilon: 0.001
        }
    }
    visible: presence > 0

    Rectangle {
        anchors.fill: parent
        color: "#000000"
        opacity: overlay.measures.dimOpacity * overlay.presence
        Blocker { enabled: overlay.shown }
    }
    Item {
        anchors.fill: parent
        opacity: overlay.presence
        scale: overlay.measures.cardStartScale + (1 - overlay.measures.cardStartScale) * overlay.presence

        Shadow {
            card: card
            radius: overlay.measures.cardRadius
            offset: overlay.measures.cardShadowOffset
            blur: overlay.measures.cardShadowRadius
            strength: overlay.measures.cardShadowOpacity
        }
        Material {
            id: card
            anchors.centerIn: parent
            width: column.width + 2 * overlay.measures.cardHorizontalPadding
            height: column.height + 2 * overlay.measures.cardVerticalPadding
            beneath: overlay.content
            radius: overlay.measures.cardRadius
            shade: overlay.measures.dimOpacity

            Rectangle {
                anchors.fill: parent
                radius: overlay.measures.cardRadius
                color: "transparent"
                border { color: Qt.rgba(1, 1, 1, overlay.measures.cardOutlineOpacity); width: 1 }
            }
            Column {
                id: column
                anchors.centerIn: parent
                spacing: overlay.measures.cardSpacing
                ProgressRing {
                    anchors.horizontalCenter: parent.horizontalCenter
                    width: overlay.measures.ringSize
                    height: overlay.measures.ringSize
                    thickness: overlay.measures.ringWidth
                    track: Qt.rgba(1, 1, 1, overlay.measures.ringTrackOpacity)
                    from: overlay.measures.gradientTopLeft
                    to: overlay.measures.gradientBottomRight
                    milliseconds: overlay.measures.progressMilliseconds
                    progress: overlay.reached
                    Text {
                        anchors.centerIn: parent
                        text: App.percentage(overlay.reached)
                        color: Theme.text
                        font.pixelSize: overlay.measures.percentageSize
                        font.weight: Font.Bold
                    }
                }
                GradientText {
                    anchors.horizontalCenter: parent.horizontalCenter
                    text: App.text("Processing")
                    font.pixelSize: overlay.measures.titleSize
                    font.weight: Font.DemiBold
                    from: overlay.measures.gradientTopLeft
                    to: overlay.measures.gradientBottomRight
                }
                Text {
                    width: 240 + 2 * overlay.measures.noticePadding
                    leftPadding: overlay.measures.noticePadding
                    rightPadding: overlay.measures.noticePadding
                    text: App.text("ConversionTimeNotice")
                    color: Theme.text
                    opacity: overlay.measures.noticeOpacity
                    font.pixelSize: overlay.measures.noticeSize
                    wrapMode: Text.Wrap
                    horizontalAlignment: Text.AlignHCenter
                }
            }
        }
    }
}
