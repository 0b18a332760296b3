// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// An item.
RowLayout {
    id: row

    required property var model
    required property string itemId

    signal removed(string itemId)

    width: ListView.view?.width ?? 0

    ValueField {
        Layout.fillWidth: true
        Layout.leftMargin: 4
        Layout.topMargin: 4
        value: row.model.text
        onChanged: to => row.model.text = to
        Accessible.name: qsTr("Text")
    }
    ValueField {
        Layout.preferredWidth: 90
        Layout.topMargin: 4
        placeholderText: qsTr("cookie")
        value: row.model.cookie
        onChanged: to => row.model.cookie = to
        Accessible.name: qsTr("Cookie")
    }
    ValueField {
        Layout.preferredWidth: 50
        Layout.topMargin: 4
        placeholderText: qsTr("icon")
        value: row.model.icon
        onChanged: to => row.model.icon = to
        Accessible.name: qsTr("Icon")
    }
    ToolButton {
        Layout.topMargin: 4
        text: "✕"
        onClicked: row.removed(row.itemId)
        Accessible.name: qsTr("Remove the item")
    }
}
