// SPDX-License-Identifier: Apache-2.0
pragma Singleton
import QtQuick

// What the window is painted in: light or dark as the desktop, unless "forced" says which.
QtObject {
    id: colors

    property string forced: ""
    readonly property SystemPalette system: SystemPalette {}
    readonly property bool dark: forced === "" ? system.window.hslLightness < 0.5 : forced === "dark"

    readonly property color window: dark ? "#17191e" : "#f3f4f6"
    readonly property color base: dark ? "#20232a" : "#ffffff"
    readonly property color text: dark ? "#e9ebee" : "#1b1d21"
    readonly property color faint: dark ? "#a3abb6" : "#5c636d"
    readonly property color line: dark ? "#3a3f49" : "#d5d8dd"
    readonly property color control: dark ? "#313640" : "#e4e7eb"
    readonly property color accent: dark ? "#7fb0ff" : "#1f5fbf"
    readonly property color accentText: dark ? "#101318" : "#ffffff"
    readonly property color chosen: dark ? "#2c3c58" : "#dce8fa"
    readonly property color available: dark ? "#4cc381" : "#1f8a4c"
    readonly property color busy: dark ? "#f0a04b" : "#c2571a"

    // The same colour for the same person.
    function ofPerson(handle: string) : color {
        let sum = 0
        for (let i = 0; i < handle.length; ++i)
            sum = (sum * 31 + handle.charCodeAt(i)) % 360
        return Qt.hsla(sum / 360, 0.42, colors.dark ? 0.34 : 0.42, 1)
    }
}
