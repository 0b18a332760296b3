// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// What was said last, and a line for everything that zelcore-sim can be told.
Pane {
    id: bar

    required property Service service

    contentItem: ColumnLayout {
        spacing: Theme.gap

        Label {
            Layout.fillWidth: true
            visible: text !== ""
            elide: Text.ElideRight
            maximumLineCount: 6
            wrapMode: Text.Wrap
            textFormat: Text.PlainText
            color: bar.service.complaint ? Theme.complaint : Theme.text
            text: bar.service.notices.length ? bar.service.notices[bar.service.notices.length - 1] : ""
            Accessible.role: Accessible.StatusBar
        }
        RowLayout {
            TextField {
                id: line
                Layout.fillWidth: true
                placeholderText: qsTr("A command of zelcore-sim: help")
                font.family: Theme.monospace
                onAccepted: {
                    if (bar.service.execute(text))
                        clear()
                }
                Accessible.name: qsTr("Command")
            }
            Button {
                text: qsTr("&Notices…")
                enabled: bar.service.notices.length > 0
                onClicked: notices.open()
            }
        }
    }

    Dialog {
        id: notices
        parent: Overlay.overlay
        anchors.centerIn: parent
        width: Math.min(640, parent.width - 2 * Theme.gap)
        height: Math.min(420, parent.height - 2 * Theme.gap)
        title: qsTr("What was said")
        modal: true
        standardButtons: Dialog.Close

        contentItem: ScrollView {
            TextArea {
                readOnly: true
                selectByMouse: true
                wrapMode: Text.Wrap
                textFormat: TextEdit.PlainText
                font.family: Theme.monospace
                text: bar.service.notices.join("\n")
                Accessible.name: qsTr("What was said, the latest last")
            }
        }
    }
}
