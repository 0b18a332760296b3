// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import ZelCoreDesk

// A number, typed or stepped. What has the focus is the line within, which is called what the box is.
SpinBox {
    id: box

    editable: true
    background: Rectangle {
        implicitWidth: 120
        implicitHeight: 24
        color: Theme.base
        border.color: box.contentItem.activeFocus ? Theme.accent : Theme.line
    }
    contentItem: TextInput {
        text: box.displayText
        font: box.font
        color: box.enabled ? Theme.text : Theme.faint
        selectionColor: Theme.accent
        selectedTextColor: Theme.base
        horizontalAlignment: Qt.AlignHCenter
        verticalAlignment: Qt.AlignVCenter
        selectByMouse: true
        validator: box.validator
        inputMethodHints: Qt.ImhDigitsOnly
        Accessible.role: Accessible.EditableText
        Accessible.name: box.Accessible.name
    }
}
