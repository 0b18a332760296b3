// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import ZelCoreDesk

ApplicationWindow {
    id: window

    required property Desk desk
    // What the command line asks for.
    property bool dark: false
    property string page
    property string look

    // The type of the record to begin with, until one has passed.
    readonly property alias awaited: records.look
    readonly property bool wide: width >= 860
    readonly property bool wireOnly: !wide && panes.currentIndex === 1

    visible: true
    minimumWidth: 320
    minimumHeight: 480
    title: qsTr("Core service: %1").arg(desk.timeline.scenario || qsTr("a world of its own"))

    palette {
        window: Theme.window
        windowText: Theme.text
        base: Theme.base
        alternateBase: Theme.alternate
        text: Theme.text
        button: Theme.button
        buttonText: Theme.text
        brightText: Theme.text
        highlight: Theme.accent
        highlightedText: Theme.base
        placeholderText: Theme.faint
        mid: Theme.line
        light: Theme.base
        dark: Theme.faint
        toolTipBase: Theme.base
        toolTipText: Theme.text
    }
    color: palette.window

    Component.onCompleted: {
        if (dark)
            Theme.dark = true
        if (page === "wire")
            panes.currentIndex = 1
        else
            world.show(page)
        commands.forceActiveFocus() // the keyboard has a place from the beginning
    }

    header: Column {
        padding: Theme.gap
        spacing: Theme.gap

        ServiceBar {
            width: parent.width - 2 * parent.padding
            desk: window.desk
        }
        ScenarioBar {
            width: parent.width - 2 * parent.padding
            desk: window.desk
        }
        TabBar {
            id: panes
            visible: !window.wide
            width: parent.width - 2 * parent.padding
            Accessible.name: qsTr("Panes")

            TabButton { text: qsTr("World") }
            TabButton { text: qsTr("Wire (%L1)").arg(window.desk.wire.passed) }
        }
    }

    SplitView {
        anchors.fill: parent
        anchors.leftMargin: Theme.gap
        anchors.rightMargin: Theme.gap

        handle: Rectangle {
            implicitWidth: Theme.gap
            color: "transparent"

            Rectangle {
                anchors.centerIn: parent
                width: 1
                height: parent.height
                color: Theme.line
            }
        }

        WorldPane {
            id: world
            SplitView.preferredWidth: 380
            SplitView.minimumWidth: 300
            SplitView.fillWidth: !window.wide
            visible: !window.wireOnly
            desk: window.desk
        }
        WirePane {
            id: records
            SplitView.minimumWidth: 300
            SplitView.fillWidth: true
            visible: window.wide || window.wireOnly
            wire: window.desk.wire
            look: window.look
        }
    }

    footer: CommandBar {
        id: commands
        padding: Theme.gap
        service: window.desk.service
    }
}
