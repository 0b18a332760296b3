// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

RowLayout {
    id: field

    required property var model
    required property string label
    required property string value

    Label {
        Layout.preferredWidth: 120
        elide: Text.ElideRight
        text: field.label
        color: Theme.faint
    }
    ValueField {
        Layout.fillWidth: true
        value: field.value
        onChanged: to => field.model.value = to
        Accessible.name: field.label
    }
}
