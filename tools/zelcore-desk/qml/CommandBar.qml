// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// What was said last, and a line for everything that zelcore-sim can be told.
Pane {
    id: bar

    required property Service service
    readonly property string latest: service.notices[0] ?? ""

    function execute(command) {
        if (service.execute(command))
            line.clear()
        if (latest.includes("\n"))
            notices.open()
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: Theme.gap

        Label {
            Layout.fillWidth: true
            visible: text !== ""
            elide: Text.ElideRight
            maximumLineCount: 1
            textFormat: Text.PlainText
            color: bar.service.complaint ? Theme.complaint : Theme.text
            text: bar.latest.split("\n")[0]
            Accessible.role: Accessible.StatusBar
        }
        RowLayout {
            Field {
                id: line
                Layout.fillWidth: true
                focus: true
                placeholderText: qsTr("A command of zelcore-sim: help")
                font.family: Theme.monospace
                onAccepted: bar.execute(text)
                Accessible.name: qsTr("Command")
            }
            PushButton {
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
        width: Math.min(720, parent.width - 2 * Theme.gap)
        height: Math.min(420, parent.height - 2 * Theme.gap)
        title: qsTr("What was said")
        modal: true
        standardButtons: Dialog.Close

        contentItem: ScrollView {
            contentWidth: availableWidth

            TextArea {
                readOnly: true
                selectByMouse: true
                textFormat: TextEdit.PlainText
                wrapMode: TextEdit.Wrap
                font.family: Theme.monospace
                text: [...bar.service.notices].join("\n")
                Accessible.name: qsTr("What was said, the latest first")
            }
        }
    }
}
