// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// Which new file to record into. Qt's own dialog of files has no name for one that is typed and not yet there.
Dialog {
    id: dialog

    required property Service service

    function record() {
        if (service.record(path.text.trim()))
            close()
        else
            problem.text = service.notices[0]
    }

    parent: Overlay.overlay
    anchors.centerIn: parent
    width: Math.min(520, parent.width - 2 * Theme.gap)
    title: qsTr("Record into a new file")
    modal: true
    closePolicy: Popup.CloseOnEscape
    onAboutToShow: {
        problem.text = ""
        path.text = service.newRecording()
        path.forceActiveFocus()
        path.select(path.text.lastIndexOf("/") + 1, path.text.length) // the name, for another to be typed
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: Theme.gap

        Label {
            Layout.fillWidth: true
            wrapMode: Text.Wrap
            color: Theme.faint
            text: qsTr("What is recorded is personal: names, messages, pictures.")
        }
        Field {
            id: path
            objectName: "path"
            Layout.fillWidth: true
            onAccepted: dialog.record()
            onTextEdited: problem.text = ""
            Accessible.name: qsTr("New file")
        }
        Label {
            id: problem
            objectName: "problem"
            Layout.fillWidth: true
            visible: text !== ""
            wrapMode: Text.Wrap
            textFormat: Text.PlainText
            color: Theme.complaint
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
    }
    footer: RowLayout {
        spacing: Theme.gap

        Item { Layout.fillWidth: true }
        PushButton {
            objectName: "record"
            Layout.margins: Theme.gap
            Layout.rightMargin: 0
            text: qsTr("&Record")
            enabled: path.text.trim() !== ""
            highlighted: true
            onClicked: dialog.record()
        }
        PushButton {
            Layout.margins: Theme.gap
            Layout.leftMargin: 0
            text: qsTr("Cancel")
            onClicked: dialog.close()
        }
    }
}
