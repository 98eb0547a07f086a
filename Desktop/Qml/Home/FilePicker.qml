// The system's own file picker.
import QtQuick
import QtQuick.Dialogs

FileDialog {
    id: dialog

    fileMode: FileDialog.OpenFile
    nameFilters: [App.text("Photo")
        + " (*.jpg *.jpeg *.png *.webp *.heic *.heif *.avif *.tif *.tiff *.jxl *.gif *.bmp)"]
    onAccepted: App.home.filePicked(selectedFile)
    onRejected: App.home.filePicked("")

    property Connections waits: Connections {
        target: App.home
        function onPickersChanged() {
            if (App.home.showsFilePicker && !dialog.visible) dialog.open()
        }
    }
}
