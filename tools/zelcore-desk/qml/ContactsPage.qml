// SPDX-License-Identifier: Apache-2.0
pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// Everybody, and one of them in full.
StackView {
    id: page

    required property Desk desk

    function look(userId) {
        desk.contact.userId = userId
        if (depth === 1)
            push(editor, { contacts: desk.contacts, contact: desk.contact })
    }

    clip: true
    initialItem: ColumnLayout {
        spacing: Theme.gap

        RowLayout {
            Field {
                id: search
                Layout.fillWidth: true
                placeholderText: qsTr("Search, or a new name")
                text: page.desk.shownContacts.text
                onTextEdited: page.desk.shownContacts.text = text
                Accessible.name: placeholderText
            }
            PushButton {
                text: qsTr("&Add")
                enabled: search.text.trim() !== ""
                onClicked: {
                    page.desk.shownContacts.text = ""
                    page.look(page.desk.contacts.add(search.text.trim()))
                    search.clear()
                }
                Accessible.description: qsTr("Adds a contact of this name")
            }
        }
        Rectangle {
            Layout.fillWidth: true
            Layout.fillHeight: true
            color: Theme.base
            border.color: Theme.line

            ListView {
                id: list
                anchors.fill: parent
                anchors.margins: 1
                clip: true
                reuseItems: true
                activeFocusOnTab: true
                boundsBehavior: Flickable.StopAtBounds
                model: page.desk.shownContacts
                delegate: ContactRow {
                    onOpened: userId => page.look(userId)
                    onSwitched: (userId, on) => page.desk.contacts.setInstalled(userId, on)
                }
                ScrollBar.vertical: ScrollBar {}
                Accessible.role: Accessible.List
                Accessible.name: qsTr("Contacts")
            }
            Label {
                anchors.centerIn: parent
                width: parent.width - 4 * Theme.gap
                visible: list.count === 0
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                color: Theme.faint
                text: page.desk.contacts.count ? qsTr("Nobody of that name.")
                                               : qsTr("No contacts yet. Type a name and add it, or make some up.")
            }
        }
        Flow {
            Layout.fillWidth: true
            spacing: Theme.gap

            BarLabel {
                text: qsTr("%L1 of %L2").arg(list.count).arg(page.desk.contacts.count)
                color: Theme.faint
            }
            PushButton {
                text: qsTr("&Make up")
                onClicked: page.desk.contacts.generate(howMany.value)
                Accessible.description: qsTr("Adds so many made-up contacts")
            }
            NumberBox {
                id: howMany
                width: 84
                from: 1
                to: 10000
                value: 25
                Accessible.name: qsTr("How many contacts to make up")
            }
            Row {
                spacing: Theme.gap

                BarLabel {
                    text: qsTr("changes/s")
                }
                NumberBox {
                    width: 74
                    from: 0
                    to: 1000
                    onValueModified: page.desk.contacts.live(value)
                    Accessible.name: qsTr("Changes of contacts per second")
                }
            }
        }
    }

    Component {
        id: editor

        ContactEditor {
            onDone: () => {
                page.pop()
                list.forceActiveFocus()
            }
        }
    }
}
