// SPDX-License-Identifier: Apache-2.0
pragma Singleton
import QtQuick

// How big texts are, and what holds them: by the font that the desktop has.
QtObject {
    id: sizes

    readonly property FontMetrics usual: FontMetrics {}
    readonly property real name: 0.88 * usual.height
    readonly property real title: 1.18 * usual.height
    // Of lists, the same for every row: names with other scripts or emoji make their lines higher.
    readonly property real row: Math.max(60, 3.4 * usual.height)
}
