// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls.Basic

// One of several: the model has their "text" and "value".
ComboBox {
    id: choice

    textRole: "text"
    valueRole: "value"
    implicitContentWidthPolicy: ComboBox.WidestText
    background: Rectangle {
        implicitWidth: 120
        implicitHeight: 40
        radius: 6
        color: Colors.control
        border { width: choice.visualFocus ? 2 : 0; color: Colors.accent }
    }
}
