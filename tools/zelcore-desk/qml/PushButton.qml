// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import ZelCoreDesk

// A button that is read out without the mark of its key, and seen to be out of use.
Button {
    palette.buttonText: enabled ? Theme.text : Theme.disabled
    Accessible.name: text.replace("&", "")
}
