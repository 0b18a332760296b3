// SPDX-License-Identifier: Apache-2.0
import QtQuick

// How the registration stands, and what can be done about it.
FocusScope {
    id: page

    required property Session session
    readonly property var words: Words.ofRegistration(session.context.registrationState)
    readonly property bool busy: Words.isWaiting(session.context.registrationState)

    // With nothing to do the page itself has the focus, and is read out.
    Accessible.role: Accessible.AlertMessage
    Accessible.name: qsTr("%1. %2").arg(words.title).arg(words.text)

    Column {
        anchors.centerIn: parent
        width: Math.min(parent.width - 32, 420)
        spacing: 20

        Note {
            width: parent.width
            busy: page.busy
            title: page.words.title
            text: page.words.text
        }
        ActionButton {
            anchors.horizontalCenter: parent.horizontalCenter
            visible: text !== ""
            text: page.words.action ?? ""
            highlighted: true
            focus: visible
            onClicked: page.session.context.requestRegisterApplication()
        }
    }
}
