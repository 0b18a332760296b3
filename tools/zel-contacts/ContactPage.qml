// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import ZelPlatform

// Somebody: who it is, and what can be done together.
FocusScope {
    id: page

    required property Session session
    required property string handle
    required property bool canGoBack
    readonly property contact person: followed.contact
    // The last that was heard of whom the service does not list any more.
    property string name
    // What came of what was asked for.
    property string outcome
    signal back

    onHandleChanged: outcome = ""

    Binding on name {
        when: !page.person.null
        value: page.person.displayName
        restoreMode: Binding.RestoreNone
    }
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

    Scroller {
        anchors.fill: parent

        Heading {
            title: page.name
            canGoBack: page.canGoBack
            onBack: page.back()
        }
        Label {
            Layout.fillWidth: true
            visible: page.person.null
            text: qsTr("No longer among your contacts with this application")
            color: Colors.faint
            wrapMode: Text.Wrap
        }
        RowLayout {
            visible: !page.person.null
            spacing: 20
            Layout.topMargin: 8

            Portrait {
                implicitWidth: 112
                Layout.alignment: Qt.AlignTop
                name: page.name
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
                    horizontalAlignment: Text.AlignLeft
                    color: page.person.status === UserStatus.Busy ? Colors.busy : Colors.available
                    wrapMode: Text.Wrap
                }
                Label {
                    Layout.fillWidth: true
                    visible: text !== ""
                    text: page.person.personalMessage
                    textFormat: Text.PlainText
                    horizontalAlignment: Text.AlignLeft
                    wrapMode: Text.Wrap
                    font.pixelSize: Sizes.name
                }
                Label {
                    Layout.fillWidth: true
                    text: !followed.present ? qsTr("Does not have this application any more")
                        : page.person.applicationVersion === "" ? qsTr("Has this application")
                        : qsTr("Has version %1 of this application").arg(page.person.applicationVersion)
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
                id: chat
                text: qsTr("Chat")
                highlighted: true
                enabled: eco.ecoId !== ""
                onClicked: page.outcome = eco.chat() ? "" : qsTr("The messaging application does not answer.")
            }
            ActionButton {
                visible: eco.invitable || eco.status === EcoIdStatus.PendingContactInviteExists
                enabled: eco.invitable
                text: eco.invitable ? qsTr("Invite") : qsTr("Invited")
                onClicked: {
                    page.outcome = eco.invite(page.session.profile.displayName, qsTr("Let us talk here"))
                        ? qsTr("The invitation is with the messaging application.")
                        : qsTr("The messaging application does not answer.")
                    chat.forceActiveFocus()
                }
            }
        }
        Label {
            Layout.fillWidth: true
            visible: !page.person.null
            text: eco.ecoId !== "" ? page.outcome
                : qsTr("There is no chat until the messaging application says who this is.")
            color: Colors.faint
            wrapMode: Text.Wrap
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
    }
}
