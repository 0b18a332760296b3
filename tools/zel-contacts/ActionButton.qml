// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls.Basic

// A button; the one that a page is about is highlighted.
Button {
    id: button

    horizontalPadding: 16
    implicitWidth: Math.max(72, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: Math.max(40, implicitContentHeight + 16)
    opacity: enabled ? 1 : 0.5
    contentItem: Text {
        text: button.text
        font: button.font
        color: button.highlighted ? Colors.accentText : Colors.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }
    background: Rectangle {
        radius: 6
        color: button.highlighted ? Colors.accent : Colors.control
        border { width: button.visualFocus ? 2 : 0; color: button.highlighted ? Colors.text : Colors.accent }
        opacity: button.down ? 0.7 : button.hovered ? 0.9 : 1
    }
}
