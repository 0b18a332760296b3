// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls.Basic

// A line to type.
TextField {
    id: field

    selectByMouse: true
    selectedTextColor: Colors.accentText
    background: Rectangle {
        implicitWidth: 120
        implicitHeight: 40
        radius: 6
        color: Colors.base
        border { width: field.activeFocus ? 2 : 1; color: field.activeFocus ? Colors.accent : Colors.line }
    }
}
