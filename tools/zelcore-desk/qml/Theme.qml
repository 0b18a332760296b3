// SPDX-License-Identifier: Apache-2.0
pragma Singleton

import QtQuick

// The colours that the style's palette does not have, and the palette of the window.
QtObject {
    id: theme

    // Follows the desktop until somebody chooses.
    property bool dark: system.window.hslLightness < 0.5

    readonly property SystemPalette system: SystemPalette {}
    readonly property color window: dark ? "#20242a" : "#f3f4f6"
    readonly property color base: dark ? "#171a1f" : "#ffffff"
    readonly property color alternate: dark ? "#1c2026" : "#f8f9fb"
    readonly property color text: dark ? "#e4e7ec" : "#1d2229"
    readonly property color faint: dark ? "#98a2b0" : "#626c7a"
    readonly property color disabled: dark ? "#6b7482" : "#9aa1ac"
    readonly property color line: dark ? "#4a515d" : "#d5d9e0"
    readonly property color button: dark ? "#343a44" : "#e9ebef"
    readonly property color accent: dark ? "#7aa7ff" : "#2a62c9"
    readonly property color selection: dark ? "#2f4a7a" : "#cfe0ff"
    readonly property color complaint: dark ? "#ff8f85" : "#b3261e"
    readonly property color fromApplication: dark ? "#ffb86b" : "#a85400"
    readonly property color toApplication: dark ? "#7fd1a5" : "#1b7a4b"

    readonly property int gap: 8
    readonly property int barHeight: 24
    readonly property string monospace: "monospace"
}
