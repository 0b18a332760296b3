// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls

// A label in a row of buttons, as high as they are.
Label {
    height: Theme.barHeight
    verticalAlignment: Text.AlignVCenter
}
