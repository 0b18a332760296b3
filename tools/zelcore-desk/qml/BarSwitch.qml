// SPDX-License-Identifier: Apache-2.0
import QtQuick.Controls

// A switch in a row of buttons, as high as they are.
Switch {
    height: Theme.barHeight
}
