// SPDX-License-Identifier: Apache-2.0
pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import ZelCoreDesk

// What happens by order: scenarios and their timeline, recordings, the weather.
Flow {
    id: bar

    required property Desk desk
    readonly property Timeline timeline: desk.timeline
    readonly property Service service: desk.service

    spacing: Theme.gap

    PushButton {
        text: qsTr("&Scenario…")
        onClicked: scenarios.open()

        Menu {
            id: scenarios
            y: parent.height

            Instantiator {
                model: bar.timeline.scenarios
                delegate: MenuItem {
                    required property string modelData
                    text: modelData
                    onTriggered: () => bar.timeline.open(modelData)
                }
                onObjectAdded: (index, object) => scenarios.insertItem(index, object)
                onObjectRemoved: (index, object) => scenarios.removeItem(object)
            }
            MenuSeparator {}
            MenuItem {
                text: qsTr("From a file…")
                onTriggered: scenarioFile.open()
            }
            MenuItem {
                text: qsTr("Reset the world")
                onTriggered: bar.service.reset()
            }
            MenuSeparator {}
            MenuItem {
                text: qsTr("Play a recording…")
                onTriggered: replayFile.open()
            }
        }
    }
    PushButton {
        enabled: bar.timeline.scenario !== ""
        text: bar.timeline.paused ? qsTr("&Go on") : qsTr("&Pause")
        onClicked: bar.timeline.paused = !bar.timeline.paused
        Accessible.description: qsTr("The clock of the scenario's timeline")
    }
    PushButton {
        enabled: bar.timeline.scenario !== ""
        text: qsTr("S&tep")
        onClicked: bar.timeline.step()
        Accessible.description: qsTr("Runs the next entry of the scenario's timeline, and pauses")
    }
    BarLabel {
        visible: bar.timeline.scenario !== ""
        text: qsTr("%1 s").arg((bar.timeline.time / 1000).toLocaleString(Qt.locale(), "f", 1))
        color: bar.timeline.paused ? Theme.faint : Theme.text
        Accessible.name: qsTr("Time of the timeline: %1").arg(text)
    }
    PushButton {
        text: bar.service.recording ? qsTr("End the &recording") : qsTr("&Record…")
        highlighted: bar.service.recording
        onClicked: bar.service.recording ? bar.service.stopRecording() : recordingFile.open()
    }
    PushButton {
        text: qsTr("&Weather…")
        onClicked: weather.open()

        WeatherPopup {
            id: weather
            y: parent.height
            desk: bar.desk
        }
    }

    FileDialog {
        id: scenarioFile
        title: qsTr("Open a scenario")
        nameFilters: [qsTr("Scenarios (*.json)"), qsTr("All files (*)")]
        onAccepted: bar.timeline.openFile(selectedFile)
    }
    FileDialog {
        id: replayFile
        title: qsTr("Play a recording")
        nameFilters: [qsTr("Recordings (*.jsonl)"), qsTr("All files (*)")]
        onAccepted: bar.timeline.replay(selectedFile)
    }
    RecordDialog {
        id: recordingFile
        service: bar.service
    }
}
