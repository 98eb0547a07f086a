// The system's own file picker.
import QtQuick
import QtQuick.Dialogs

FileDialog {
    id: dialog

    readonly property var endings: ["jpg", "jpeg", "png", "webp", "heic", "heif", "avif", "tif",
        "tiff", "jxl", "gif", "bmp"]
    // Cameras write their names in capitals, and pickers take a pattern's letters as they stand.
    function anyCase(ending) { return ending.replace(/[a-z]/g, (c) => "[" + c + c.toUpperCase() + "]") }

    fileMode: FileDialog.OpenFile
    nameFilters: [
        // Where a picker shows patterns, the legible ones are seen.
        App.text("Photo") + " (" + endings.concat(endings.map(anyCase)).map((e) => "*." + e).join(" ") + ")",
        App.text("AllFiles") + " (*)"
    ]
    onAccepted: App.home.filePicked(selectedFile)
    onRejected: App.home.filePicked("")

    property Connections waits: Connections {
        target: App.home
        function onPickersChanged() {
            if (App.home.showsFilePicker && !dialog.visible) dialog.open()
        }
    }
}
