// A column that scrolls, also to what the keyboard leads to.
import QtQuick
import QtQuick.Controls.Basic

ScrollView {
    id: scroller

    readonly property Item focused: Window.activeFocusItem

    contentWidth: availableWidth
    onFocusedChanged: {
        let item = focused
        while (item && item !== contentItem) item = item.parent
        if (!item || focused === contentItem) return
        const top = focused.mapToItem(contentItem.contentItem, 0, 0).y - Theme.m
        const bottom = top + focused.height + 2 * Theme.m
        const end = Math.max(0, contentItem.contentHeight - contentItem.height)
        if (top < contentItem.contentY) contentItem.contentY = Math.max(0, top)
        else if (bottom > contentItem.contentY + contentItem.height)
            contentItem.contentY = Math.min(end, bottom - contentItem.height)
    }
}
