// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// Everything that passes between the service and its applications, and one record in full.
ColumnLayout {
    id: pane

    required property WireModel wire
    property alias look: list.look

    spacing: Theme.gap

    WireFilterBar {
        Layout.fillWidth: true
        wire: pane.wire
    }
    SplitView {
        Layout.fillWidth: true
        Layout.fillHeight: true
        orientation: Qt.Vertical

        handle: Rectangle {
            implicitHeight: Theme.gap
            color: "transparent"
        }

        Rectangle {
            SplitView.fillHeight: true
            SplitView.minimumHeight: 100
            color: Theme.base
            border.color: Theme.line

            WireList {
                id: list
                anchors.fill: parent
                anchors.margins: 1
                wire: pane.wire
                onChosen: text => details.text = text
            }
            Label {
                anchors.centerIn: parent
                width: parent.width - 4 * Theme.gap
                visible: list.count === 0
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                color: Theme.faint
                text: pane.wire.passed ? qsTr("No record that is asked for.") : qsTr("Nothing has passed yet.")
            }
        }
        ScrollView {
            SplitView.preferredHeight: pane.height * 0.4
            SplitView.minimumHeight: 80
            visible: details.text !== ""

            TextArea {
                id: details
                readOnly: true
                selectByMouse: true
                textFormat: TextEdit.PlainText
                font.family: Theme.monospace
                background: Rectangle {
                    color: Theme.base
                    border.color: Theme.line
                }
                Accessible.name: qsTr("The record in full")
            }
        }
    }
}
