// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import ZelCoreDesk

// Where the service is, who is there, and whether it is there itself.
Flow {
    id: bar

    required property Desk desk

    spacing: Theme.gap

    BarSwitch {
        text: checked ? qsTr("Serving") : qsTr("Away")
        checked: !bar.desk.service.away
        onToggled: {
            bar.desk.service.away = !checked
            checked = Qt.binding(() => !bar.desk.service.away)
        }
        ToolTip.text: qsTr("Lets the service go away, and come back")
        ToolTip.visible: hovered
        Accessible.name: qsTr("Serving")
    }
    Field {
        width: Math.min(contentWidth + leftPadding + rightPadding + 2, bar.width - copy.width - Theme.gap)
        readOnly: true
        text: bar.desk.service.exportLine
        font.family: Theme.monospace
        Accessible.name: qsTr("Line for the shell of an application")
    }
    PushButton {
        id: copy
        text: qsTr("Copy")
        onClicked: bar.desk.service.copyExportLine()
        Accessible.name: qsTr("Copy the line for the shell of an application")
    }
    BarLabel {
        text: bar.desk.applications.count === 1 ? qsTr("1 application")
                                                : qsTr("%L1 applications").arg(bar.desk.applications.count)
        color: bar.desk.applications.count ? Theme.text : Theme.faint
    }
    BarSwitch {
        text: qsTr("Dark")
        checked: Theme.dark
        onToggled: Theme.dark = checked
    }
}
