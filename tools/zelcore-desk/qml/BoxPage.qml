// SPDX-License-Identifier: Apache-2.0
pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// The profile box: its items, each to be changed where it stands, and its icons.
ColumnLayout {
    id: page

    required property BoxModel box

    function add() {
        if (box.add(text.text))
            text.clear()
    }

    spacing: Theme.gap

    RowLayout {
        Field {
            id: text
            Layout.fillWidth: true
            placeholderText: qsTr("Text of a new item")
            onAccepted: page.add()
            Accessible.name: placeholderText
        }
        PushButton {
            text: qsTr("&Add")
            onClicked: page.add()
        }
        PushButton {
            text: qsTr("&Clear")
            enabled: list.count > 0
            onClicked: page.box.clear()
            Accessible.description: qsTr("Removes all items")
        }
    }
    Rectangle {
        Layout.fillWidth: true
        Layout.fillHeight: true
        color: Theme.base
        border.color: Theme.line

        ListView {
            id: list
            anchors.fill: parent
            anchors.margins: 1
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            model: page.box
            delegate: BoxRow {
                onRemoved: itemId => page.box.remove(itemId)
            }
            ScrollBar.vertical: ScrollBar {}
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Items of the profile box")
        }
        Label {
            anchors.centerIn: parent
            visible: list.count === 0
            color: Theme.faint
            text: qsTr("The box is empty.")
        }
    }
    Flow {
        Layout.fillWidth: true
        spacing: Theme.gap

        BarLabel {
            text: page.box.icons.length ? qsTr("Icons") : qsTr("No icons")
            color: Theme.faint
        }
        Repeater {
            model: page.box.icons
            delegate: PushButton {
                required property string modelData
                text: qsTr("%1 ✕").arg(modelData)
                onClicked: () => page.box.removeIcon(modelData)
                Accessible.name: qsTr("Remove the icon %1").arg(modelData)
            }
        }
        PushButton {
            text: qsTr("New &icon")
            onClicked: page.box.addIcon()
        }
    }
}
