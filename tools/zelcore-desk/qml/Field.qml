// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import ZelCoreDesk

// A line to type, whose edge is seen in the dark as well. It shows where its text begins until somebody is in it.
TextField {
    id: field

    selectByMouse: true
    onTextChanged: if (!activeFocus) cursorPosition = 0
    background: Rectangle {
        implicitWidth: 120
        implicitHeight: 24
        color: Theme.base
        border.color: field.activeFocus ? Theme.accent : Theme.line
    }
}
