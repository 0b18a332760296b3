// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// What stands on a page, one below the other. It moves where there is no room for all, and along with the keyboard.
Flickable {
    id: scroller

    default property alias contents: column.data
    readonly property Item focused: Window.activeFocusItem

    function holds(item: Item) : bool {
        while (item && item !== column)
            item = item.parent
        return item === column
    }

    contentHeight: column.implicitHeight + 2 * column.y
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    ScrollBar.vertical: ScrollBar {}
    onFocusedChanged: {
        if (!holds(focused))
            return
        const top = focused.mapToItem(scroller.contentItem, 0, 0).y
        contentY = Math.max(top + focused.height + column.y - height, Math.min(contentY, top - column.y))
    }

    ColumnLayout {
        id: column
        x: 16
        y: 16
        width: scroller.width - 2 * x
        spacing: 12
    }
}
