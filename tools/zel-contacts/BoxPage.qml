// SPDX-License-Identifier: Apache-2.0
pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import ZelPlatform

// What others see of this application in the user's profile.
FocusScope {
    id: page

    required property Session session
    required property bool canGoBack
    // The line that the service has yet to take.
    property string asked: ""
    signal back

    function add() {
        line.forceActiveFocus()
        if (line.text === "" || (outcome.awaited && line.text === page.asked))
            return
        page.asked = line.text
        if (page.session.permissions.permissionValue(Permission.ProfileUpdatesAllowed) === PermissionValue.Denied)
            outcome.fail(qsTr("You do not let this application show a box. Allow it in the messaging application."))
        else if (page.session.box.requestAddItem(line.text, ""))
            outcome.awaitOr(qsTr("The service has not taken this line. The box may be full."))
        else
            outcome.fail(qsTr("This line cannot be taken now."))
    }
    function take() {
        if (line.text === page.asked)
            line.clear()
        page.asked = ""
        outcome.come()
    }

    Connections {
        target: page.session.items
        function onRowsInserted(parent, first, last) {
            for (let row = first; row <= last && page.asked !== ""; ++row) {
                if (page.session.items.item(row).text === page.asked)
                    page.take()
            }
        }
    }

    ColumnLayout {
        anchors { fill: parent; margins: 16 }
        spacing: 12

        Heading {
            title: qsTr("Your profile box")
            canGoBack: page.canGoBack
            onBack: page.back()
        }
        Label {
            Layout.fillWidth: true
            text: qsTr("Your contacts see these lines in your profile.")
            color: Colors.faint
            wrapMode: Text.Wrap
        }
        ListView {
            id: list
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            spacing: 8
            model: page.session.items
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Lines of the box")
            ScrollBar.vertical: ScrollBar {}
            delegate: BoxDelegate {
                width: ListView.view.width
                onRemoved: id => {
                    page.session.box.requestRemoveItem(id)
                    line.forceActiveFocus()
                }
            }

            Note {
                anchors.centerIn: parent
                width: parent.width - 48
                visible: list.count === 0
                text: qsTr("The box is empty.")
            }
        }
        Outcome { id: outcome }
        RowLayout {
            spacing: 8

            Field {
                id: line
                Layout.fillWidth: true
                maximumLength: page.session.box.maximumTextLength
                placeholderText: qsTr("Another line")
                Accessible.name: qsTr("Another line for the box")
                onAccepted: page.add()
                onTextEdited: if (!outcome.awaited) outcome.come()
            }
            ActionButton {
                text: qsTr("Add")
                highlighted: enabled
                enabled: line.text !== ""
                onClicked: page.add()
            }
        }
    }
}
