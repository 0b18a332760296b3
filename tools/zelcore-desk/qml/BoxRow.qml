// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// An item. A field counts when Enter is pressed or the focus goes on.
RowLayout {
    id: row

    required property var model
    required property string itemId

    signal removed(string itemId)

    width: ListView.view?.width ?? 0

    component Field: TextField {
        property string value

        signal changed(string to)

        selectByMouse: true
        text: value
        onEditingFinished: {
            if (text !== value)
                changed(text)
            text = Qt.binding(() => value)
        }
    }

    Field {
        Layout.fillWidth: true
        Layout.leftMargin: 4
        Layout.topMargin: 4
        value: row.model.text
        onChanged: to => row.model.text = to
        Accessible.name: qsTr("Text")
    }
    Field {
        Layout.preferredWidth: 90
        Layout.topMargin: 4
        placeholderText: qsTr("cookie")
        value: row.model.cookie
        onChanged: to => row.model.cookie = to
        Accessible.name: qsTr("Cookie")
    }
    Field {
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
