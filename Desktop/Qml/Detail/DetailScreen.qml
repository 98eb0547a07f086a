// The detail screen.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../Common"

FocusScope {
    id: screen

    readonly property var detail: App.detail
    readonly property bool wide: width >= 760
    readonly property bool converting: detail !== null && detail.isConverting
    readonly property bool loading: detail !== null && detail.isLoading
    readonly property bool overlaid: detail === null || detail.showsShareView
        || detail.format !== null || detail.alert.isShown || detail.question.isShown

    // Out of the work first, and then out of the screen; a conversion can't be stopped.
    function stepOut() {
        if (loading && !detail.isStopping) detail.stopTapped()
        else leave()
    }
    function leave() { if (!converting) App.back() }

    Keys.onEscapePressed: stepOut()

    Backdrop { color: Theme.background }
    WayBack { enabled: !screen.overlaid; onTaken: screen.leave() }

    FocusScope {
        id: column
        anchors.fill: parent
        // Whoever comes back from what lay over it finds the keyboard where it was.
        focus: enabled
        enabled: !screen.converting && !screen.overlaid

        TopBar {
            id: bar
            width: parent.width
            backText: App.text("Back")
            onBack: App.back()
        }
        GridLayout {
            id: body
            enabled: !screen.loading
            anchors { left: parent.left; right: parent.right; top: bar.bottom; bottom: banner.top }
            columns: screen.wide ? 2 : 1
            columnSpacing: 0
            rowSpacing: 0

            Item {
                id: preview
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.margins: screen.wide ? Theme.l : 0
                Layout.topMargin: 0
                Rectangle { anchors.fill: parent; color: Theme.picture; radius: screen.wide ? Theme.radiusM : 0 }

                CompareView {
                    anchors.fill: parent
                    visible: screen.detail !== null && screen.detail.result.isThere
                    source: screen.detail ? screen.detail.source : undefined
                    result: screen.detail ? screen.detail.result : undefined
                    position: screen.detail ? screen.detail.slider : 0.5
                    dragThreshold: screen.detail ? screen.detail.minimumDragDistance : 0
                    onDragged: (x) => screen.detail.dragDivider(x, width, rightToLeft)
                    focus: true
                }
                ColumnLayout {
                    anchors.centerIn: parent
                    width: parent.width - 2 * Theme.xl
                    visible: screen.detail !== null && !screen.detail.result.isThere
                    spacing: Theme.m
                    Repeater {
                        model: screen.detail ? screen.detail.linesWithoutResult : []
                        Text {
                            required property string modelData
                            Layout.fillWidth: true
                            text: modelData
                            color: Theme.secondaryText
                            font.pixelSize: Theme.callout
                            wrapMode: Text.Wrap
                            horizontalAlignment: Text.AlignHCenter
                        }
                    }
                }
                InformationStrip {
                    anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
                    visible: screen.detail !== null && screen.detail.result.isThere
                }
            }
            ColumnLayout {
                Layout.fillWidth: !screen.wide
                Layout.preferredWidth: screen.wide ? 340 : -1
                Layout.maximumWidth: screen.wide ? 340 : -1
                Layout.fillHeight: screen.wide
                Layout.margins: Theme.l
                Layout.topMargin: screen.wide ? 0 : Theme.m
                spacing: Theme.m

                StyleGrid {
                    Layout.fillWidth: true
                    rows: screen.detail ? screen.detail.styleRows : []
                    onTapped: (style) => screen.detail.styleTapped(style)
                }
                Item { Layout.fillHeight: screen.wide }
                RowLayout {
                    Layout.fillWidth: true
                    spacing: Theme.m
                    PlainButton {
                        visible: screen.detail !== null && !screen.detail.isVideo
                        symbol: "down"
                        text: screen.detail ? screen.detail.formatName : ""
                        Accessible.name: App.text("SaveFormat")
                        Accessible.description: text
                        onClicked: screen.detail.formatTapped()
                    }
                    PlainButton {
                        Layout.fillWidth: true
                        prominent: true
                        symbol: screen.detail && screen.detail.isVideo ? "wand" : "save"
                        text: screen.detail ? App.text(screen.detail.mainButton) : ""
                        onClicked: screen.detail.mainButtonTapped()
                    }
                }
            }
        }
        AdBanner {
            id: banner
            enabled: !screen.loading
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
            shown: screen.detail !== null && screen.detail.showsBanner && App.ads.banner !== ""
        }
    }
    ShareOverlay {
        anchors.fill: parent
        shown: App.share !== null
    }
    ConversionProgress {
        anchors.fill: parent
        shown: screen.converting
        content: column
        progress: screen.detail ? screen.detail.conversionProgress : 0
    }
    BatchProgress {
        // The way back stays free.
        anchors { fill: parent; topMargin: bar.height }
        shown: screen.loading
        content: body
        title: screen.detail ? screen.detail.loadingTitle : ""
        progress: screen.detail ? screen.detail.videoProgress : 0
        lines: screen.detail ? screen.detail.progressLines : []
        stopping: screen.detail !== null && screen.detail.isStopping
        onCancelled: screen.detail.stopTapped()
    }
    FormatSheet {
        format: screen.detail ? screen.detail.format : null
        sheetHeight: screen.detail ? screen.detail.formatSheetHeight : 0
        onDismissed: screen.detail.closeFormat()
    }
    // An alert that comes while something is asked waits for the answer.
    AlertBox { alert: screen.detail && !screen.detail.question.isShown ? screen.detail.alert : null }
    AlertBox { alert: screen.detail ? screen.detail.question : null }
}
