// An overlay of long work, and how far the work is.
import QtQuick

Item {
    property bool shown: false
    property real progress: 0
    // The work is reset when it ends: what was reached stays until the overlay is gone.
    property real reached: 0

    onProgressChanged: note()
    onShownChanged: note()
    function note() { if (shown) reached = Math.max(0, progress) }

    Accessible.role: Accessible.ProgressBar
    Accessible.name: App.text("Processing")
    // What a screen reader asks a progress bar for.
    readonly property real value: reached
    readonly property real from: 0
    readonly property real to: 1
}
