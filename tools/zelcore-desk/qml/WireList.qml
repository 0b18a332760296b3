// SPDX-License-Identifier: Apache-2.0
pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import ZelCoreDesk

// The records. It stays at the latest one until somebody looks further up.
ListView {
    id: list

    required property WireModel wire
    property bool following: true
    // The type of the record to begin with, when one passes.
    property string look

    signal chosen(string text)

    clip: true
    reuseItems: true
    activeFocusOnTab: true
    boundsBehavior: Flickable.StopAtBounds
    model: wire
    currentIndex: -1
    delegate: WireRow {
        onClicked: () => {
            list.currentIndex = index
            list.forceActiveFocus()
            list.choose()
        }
    }
    ScrollBar.vertical: ScrollBar {
        onPressedChanged: list.following = list.atYEnd
    }
    onMovementEnded: following = atYEnd
    onCountChanged: {
        if (look)
            lookAtLast()
        else if (following)
            end.restart()
    }
    Keys.onUpPressed: {
        decrementCurrentIndex()
        choose()
    }
    Keys.onDownPressed: {
        incrementCurrentIndex()
        choose()
    }
    Accessible.role: Accessible.List
    Accessible.name: qsTr("Records")

    // Rows that have come are laid out before one can go to them.
    Timer {
        id: end
        interval: 0
        onTriggered: list.positionViewAtEnd()
    }

    function lookAtLast() {
        const row = wire.lastOfType(look)
        if (row < 0)
            return
        look = ""
        currentIndex = row
        choose()
        forceLayout()
        positionViewAtIndex(row, ListView.Center)
    }
    function choose() {
        following = false
        chosen(wire.pretty(currentIndex))
    }
}
