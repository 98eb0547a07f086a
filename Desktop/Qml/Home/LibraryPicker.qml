// The photo library as a grid to pick from.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../Common"

Sheet {
    id: picker

    readonly property var library: App.home.library
    readonly property bool several: App.home.selectsMultiple && !App.home.showsVideoPicker

    name: bar.title
    sheetWidth: 980
    sheetHeight: 760
    onShownChanged: {
        library.videos = App.home.showsVideoPicker
        library.isActive = shown
        if (shown) grid.forceActiveFocus()
    }
    onDismissed: App.home.pickCancelled()

    TopBar {
        id: bar
        width: parent.width
        title: App.text(picker.library.videos ? "Video"
            : picker.several ? "SelectMultipleFromLibrary" : "Photo")
        backText: App.text("Cancel")
        backSymbol: "close"
        onBack: App.home.pickCancelled()
        PlainButton {
            visible: picker.several
            enabled: picker.library.selectionCount > 0
            prominent: true
            text: enabled ? App.text("AddCount", picker.library.selectionCount) : App.text("Add")
            onClicked: App.home.picked()
        }
    }
    GridView {
        id: grid

        readonly property int columns: Math.max(3, Math.floor(width / 150))

        anchors { left: parent.left; right: parent.right; top: bar.bottom; bottom: parent.bottom }
        anchors.margins: 2
        cellWidth: Math.floor(width / columns)
        cellHeight: cellWidth
        model: picker.library
        Accessible.role: Accessible.List
        Accessible.name: bar.title
        clip: true
        keyNavigationEnabled: true
        cacheBuffer: 600
        ScrollBar.vertical: ScrollBar { }
        Keys.onReturnPressed: take(currentIndex)
        Keys.onSpacePressed: take(currentIndex)

        function take(row) {
            if (row < 0) return
            if (picker.several) return picker.library.toggle(row)
            picker.library.selectOnly(row)
            App.home.picked()
        }

        delegate: Item {
            id: cell
            required property int index
            required property string identifier
            required property string name
            required property int number
            width: grid.cellWidth
            height: grid.cellHeight
            Accessible.role: Accessible.ListItem
            Accessible.name: name
            Accessible.focusable: true
            Accessible.focused: grid.activeFocus && grid.currentIndex === index
            Accessible.selectable: picker.several
            Accessible.selected: number > 0
            Accessible.onPressAction: grid.take(index)
            Rectangle {
                anchors { fill: parent; margins: 2 }
                color: Theme.fill
                radius: 4
                clip: true
                Image {
                    anchors.fill: parent
                    source: "image://thumbnails/" + cell.identifier
                    fillMode: Image.PreserveAspectCrop
                    asynchronous: true
                    opacity: status === Image.Ready ? 1 : 0
                    Behavior on opacity { NumberAnimation { duration: Theme.quick } }
                }
                Rectangle {
                    anchors.fill: parent
                    color: "transparent"
                    radius: 4
                    border.width: cell.number > 0
                        || (grid.activeFocus && grid.currentIndex === cell.index) ? 3 : 0
                    border.color: Theme.accent
                }
                Rectangle {
                    visible: cell.number > 0
                    anchors { right: parent.right; top: parent.top; margins: Theme.s }
                    width: 26
                    height: 26
                    radius: 13
                    color: Theme.accent
                    Text {
                        anchors.centerIn: parent
                        text: cell.number
                        color: Theme.accentText
                        font.pixelSize: Theme.body
                        font.weight: Font.Bold
                    }
                }
            }
            TapHandler { onTapped: { grid.currentIndex = cell.index; grid.take(cell.index) } }
        }
        Text {
            anchors.centerIn: parent
            width: parent.width - 2 * Theme.xl
            visible: picker.library.count === 0
            text: App.text("LibraryIsEmpty")
            color: Theme.secondaryText
            font.pixelSize: Theme.callout
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
        }
    }
}
