// What this system can do with a picture, a video or a text.
import QtCore
import QtQuick
import QtQuick.Dialogs
import QtQuick.Layouts

Sheet {
    id: menu

    readonly property var sheet: App.shareSheet
    readonly property var symbols: ({
        "copy": "copy", "saveAs": "save", "showInFolder": "folder", "openWith": "open", "mail": "mail"
    })
    readonly property var keys: ({
        "copy": "ShareCopy", "saveAs": "ShareSaveAs", "showInFolder": "ShareShowInFolder",
        "openWith": "ShareOpenWith", "mail": "ShareMail"
    })

    // Not bound to the folder that the dialog shows: Qt's own dialog crashes when that changes the
    // file while the user goes up to the root.
    function askWhere() {
        const folder = dialog.currentFolder.toString() === ""
            ? StandardPaths.writableLocation(StandardPaths.HomeLocation) : dialog.currentFolder
        dialog.currentFile = folder + "/" + sheet.suggestedName
        dialog.open()
    }

    shown: sheet.isShown
    name: App.text("Share")
    sheetWidth: 400
    sheetHeight: column.implicitHeight + 2 * Theme.l
    onDismissed: sheet.close()

    ColumnLayout {
        id: column
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: Theme.l }
        spacing: Theme.xs
        Text {
            Layout.leftMargin: Theme.l
            Layout.bottomMargin: Theme.s
            text: App.text("Share")
            color: Theme.text
            font.pixelSize: Theme.headline
            font.weight: Font.DemiBold
        }
        Repeater {
            model: menu.sheet.actions
            ListRow {
                required property string modelData
                required property int index
                Layout.fillWidth: true
                focus: index === 0
                symbol: menu.symbols[modelData]
                text: App.text(menu.keys[modelData])
                trailing: ""
                onClicked: {
                    if (modelData === "saveAs") menu.askWhere()
                    else menu.sheet[modelData]()
                }
            }
        }
        PlainButton {
            Layout.fillWidth: true
            Layout.topMargin: Theme.s
            text: App.text("Cancel")
            onClicked: menu.sheet.close()
        }
    }
    FileDialog {
        id: dialog
        fileMode: FileDialog.SaveFile
        onAccepted: menu.sheet.saveAs(selectedFile)
    }
}
