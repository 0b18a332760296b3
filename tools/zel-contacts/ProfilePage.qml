// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Dialogs
import QtQuick.Layouts
import ZelPlatform

// The user's own profile, to change.
FocusScope {
    id: page

    required property Session session
    required property bool canGoBack
    readonly property UserProfile profile: session.profile
    readonly property bool messageChanged: message.text !== profile.personalMessage
    readonly property bool statusChanged: status.currentValue !== profile.status || statusMessage.text !== profile.statusMessage
    readonly property bool changed: messageChanged || statusChanged
    // As they were read last.
    property string readMessage: ""
    property string readStatusMessage: ""
    property int readStatus: UserStatus.Available
    signal back

    function save() {
        const isMessageAsked = !page.messageChanged || page.profile.requestUpdatePersonalMessage(message.text)
        const isStatusAsked = !page.statusChanged || page.profile.requestUpdateStatus(status.currentValue, statusMessage.text)
        if (!isMessageAsked || !isStatusAsked)
            outcome.fail(qsTr("This cannot be changed now."))
        else if (page.changed)
            outcome.awaitOr(qsTr("The service has not taken what you changed. You may save it again."))
    }
    // What was changed here and is not saved stays; everything else follows the profile.
    function read() {
        if (message.text === page.readMessage)
            message.text = page.profile.personalMessage
        if (statusMessage.text === page.readStatusMessage)
            statusMessage.text = page.profile.statusMessage
        if (status.currentValue === page.readStatus)
            status.currentIndex = status.indexOfValue(page.profile.status)
        page.readMessage = page.profile.personalMessage
        page.readStatusMessage = page.profile.statusMessage
        page.readStatus = page.profile.status
    }

    Component.onCompleted: read()
    onChangedChanged: if (!changed) outcome.come()
    Connections {
        target: page.profile
        function onProfileChanged() { page.read() }
        function onPictureChanged() { problem.come() }
    }
    FileDialog {
        id: files
        title: qsTr("A picture of you")
        nameFilters: [qsTr("Pictures (*.png *.jpg *.jpeg *.gif *.bmp)")]
        onAccepted: page.profile.requestUpdateDisplayPictureFile(selectedFile)
            ? problem.awaitOr(qsTr("Your picture is as before: it is the same, or the service has not taken the other."))
            : problem.fail(qsTr("This picture cannot be taken now."))
    }

    Scroller {
        anchors.fill: parent

        Heading {
            title: page.profile.displayName
            canGoBack: page.canGoBack
            onBack: page.back()
        }
        RowLayout {
            spacing: 20
            Layout.topMargin: 8

            Portrait {
                implicitWidth: 112
                name: page.profile.displayName
                handle: page.profile.handle
                picture: page.profile.picture
                status: page.profile.status
                ground: Colors.window
            }
            ColumnLayout {
                ActionButton {
                    Layout.fillWidth: true
                    Layout.maximumWidth: implicitWidth
                    text: qsTr("Another picture…")
                    onClicked: files.open()
                }
                Outcome { id: problem }
            }
        }
        GridLayout {
            Layout.topMargin: 8
            Layout.maximumWidth: 520
            columns: 2
            columnSpacing: 12
            rowSpacing: 8

            Label { text: qsTr("Message") }
            Field {
                id: message
                Layout.fillWidth: true
                Accessible.name: qsTr("Personal message")
                onAccepted: page.save()
            }
            Label { text: qsTr("Status") }
            Choice {
                id: status
                Layout.fillWidth: true
                model: [
                    { text: Words.ofStatus(UserStatus.Available), value: UserStatus.Available },
                    { text: Words.ofStatus(UserStatus.Busy), value: UserStatus.Busy }
                ]
                Accessible.name: qsTr("Status")
            }
            Label { text: qsTr("About it") }
            Field {
                id: statusMessage
                Layout.fillWidth: true
                Accessible.name: qsTr("Status message")
                onAccepted: page.save()
            }
            Item { implicitWidth: 1; implicitHeight: 1 }
            ActionButton {
                text: qsTr("Save")
                highlighted: enabled
                enabled: page.changed
                onClicked: {
                    page.save()
                    message.forceActiveFocus() // it has nothing to do any more
                }
            }
        }
        Outcome { id: outcome }
    }
}
