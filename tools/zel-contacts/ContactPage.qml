// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import ZelPlatform

// Somebody: who it is, and what can be done together.
Item {
    id: page

    required property Session session
    required property string handle
    required property bool canGoBack
    readonly property contact person: followed.contact
    signal back

    FollowedContact {
        id: followed
        context: page.session.context
        handle: page.handle
    }
    EcoContact {
        id: eco
        context: page.session.context
        ppId: page.person.ppId
    }

    ColumnLayout {
        anchors { fill: parent; margins: 16 }
        spacing: 12

        Heading {
            Layout.fillWidth: true
            title: page.person.null ? qsTr("Not a contact any more") : page.person.displayName
            canGoBack: page.canGoBack
            onBack: page.back()
        }
        RowLayout {
            visible: !page.person.null
            spacing: 20
            Layout.topMargin: 8

            Portrait {
                implicitWidth: 112
                Layout.alignment: Qt.AlignTop
                name: page.person.displayName
                handle: page.handle
                picture: followed.picture
                status: page.person.status
                ground: Colors.window
            }
            ColumnLayout {
                spacing: 6

                Label {
                    Layout.fillWidth: true
                    text: Words.ofPresence(page.person.status, page.person.statusMessage)
                    textFormat: Text.PlainText
                    color: page.person.status === UserStatus.Busy ? Colors.busy : Colors.available
                    wrapMode: Text.Wrap
                }
                Label {
                    Layout.fillWidth: true
                    visible: text !== ""
                    text: page.person.personalMessage
                    textFormat: Text.PlainText
                    wrapMode: Text.Wrap
                    font.pixelSize: 17
                }
                Label {
                    Layout.fillWidth: true
                    text: followed.present ? qsTr("Has version %1 of this application").arg(page.person.applicationVersion)
                                           : qsTr("Does not have this application any more")
                    textFormat: Text.PlainText
                    color: Colors.faint
                    wrapMode: Text.Wrap
                }
            }
        }
        RowLayout {
            visible: !page.person.null
            Layout.topMargin: 8
            spacing: 8

            ActionButton {
                text: qsTr("Chat")
                highlighted: true
                enabled: eco.ecoId !== ""
                onClicked: outcome.text = eco.chat() ? "" : qsTr("The messaging application does not answer.")
            }
            ActionButton {
                visible: eco.invitable || eco.status === EcoIdStatus.PendingContactInviteExists
                enabled: eco.invitable
                text: eco.invitable ? qsTr("Invite") : qsTr("Invited")
                onClicked: outcome.text = eco.invite(page.session.profile.displayName, qsTr("Let us talk here"))
                    ? qsTr("The invitation is with the messaging application.")
                    : qsTr("The messaging application does not answer.")
            }
        }
        Label {
            id: outcome
            Layout.fillWidth: true
            color: Colors.faint
            wrapMode: Text.Wrap
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
        Item { Layout.fillHeight: true }
    }
}
