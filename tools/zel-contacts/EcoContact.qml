// SPDX-License-Identifier: Apache-2.0
import QtQuick
import ZelPlatform

// Somebody as the messaging application knows him or her: what chats and invitations go by.
Item {
    id: person

    required property Session session
    required property string ppId
    property string ecoId: ""
    property int status: EcoIdStatus.Unknown
    readonly property bool known: ecoId !== ""

    function lookUp() {
        person.ecoId = ""
        person.status = EcoIdStatus.Unknown
        if (person.ppId !== "")
            person.session.utils.requestEcoId(person.ppId)
    }
    function invite(message: string) : bool {
        const sent = person.session.utils.sendContactInvitation(person.ecoId, person.session.profile.displayName, message)
        person.session.utils.requestEcoIdStatus(person.ecoId)
        return sent
    }
    function chat() : bool { return person.session.utils.invokeChat(person.ecoId) }

    onPpIdChanged: lookUp()
    Component.onCompleted: lookUp()

    Connections {
        target: person.session.utils
        function onEcoIdUpdated(ppId: string, ecoId: string) {
            if (ppId !== person.ppId)
                return
            person.ecoId = ecoId
            if (ecoId !== "")
                person.session.utils.requestEcoIdStatus(ecoId)
        }
        function onEcoIdStatusUpdated(ecoId: string, status: int) {
            if (ecoId === person.ecoId)
                person.status = status
        }
    }
}
