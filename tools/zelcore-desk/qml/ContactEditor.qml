// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// One contact: the record, and what he or she may do.
ColumnLayout {
    id: editor

    required property ContactModel contacts
    required property PersonModel contact

    signal done

    readonly property bool there: contact.there

    spacing: Theme.gap
    onThereChanged: {
        if (!there)
            done()
    }
    Keys.onEscapePressed: done()
    StackView.onActivated: back.forceActiveFocus()

    RowLayout {
        PushButton {
            id: back
            text: qsTr("‹ &Back")
            onClicked: editor.done()
        }
        Label {
            Layout.fillWidth: true
            elide: Text.ElideRight
            textFormat: Text.PlainText
            font.bold: true
            text: editor.contact.name
        }
        PushButton {
            text: qsTr("&Invites")
            onClicked: editor.contacts.invite(editor.contact.userId)
            ToolTip.text: qsTr("Tells applications that this contact sent an invitation")
            ToolTip.visible: hovered
            Accessible.description: ToolTip.text
        }
        PushButton {
            text: qsTr("Re&move")
            onClicked: editor.contacts.remove(editor.contact.userId)
        }
    }
    PersonForm {
        Layout.fillWidth: true
        Layout.fillHeight: true
        person: editor.contact
    }
}
