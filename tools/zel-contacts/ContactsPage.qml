// SPDX-License-Identifier: Apache-2.0
pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import ZelPlatform

// The user, and the contacts whom he or she looks for.
Rectangle {
    id: page

    required property Session session
    signal contactOpened(string handle)
    signal profileOpened
    signal boxOpened

    function takeFocus() { list.forceActiveFocus() }
    function search() { searchField.forceActiveFocus() }
    function openFirst() {
        list.currentIndex = 0
        page.contactOpened(page.session.people.contact(0).handle)
    }

    color: Colors.base

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        RowLayout {
            Layout.margins: 8
            spacing: 8

            AbstractButton {
                id: own
                readonly property color ground: hovered ? Colors.window : Colors.base
                readonly property string told: Words.ofPresence(page.session.profile.status, page.session.profile.statusMessage)
                Layout.fillWidth: true
                focusPolicy: Qt.StrongFocus
                padding: 4
                Accessible.name: qsTr("Your profile: %1, %2").arg(page.session.profile.displayName).arg(own.told)
                onClicked: page.profileOpened()
                background: Rectangle {
                    color: own.ground
                    border { width: own.visualFocus ? 2 : 0; color: Colors.accent }
                }
                contentItem: RowLayout {
                    spacing: 12
                    Portrait {
                        name: page.session.profile.displayName
                        handle: page.session.profile.handle
                        picture: page.session.profile.picture
                        status: page.session.profile.status
                        ground: own.ground
                    }
                    ColumnLayout {
                        spacing: 2
                        Label {
                            Layout.fillWidth: true
                            text: page.session.profile.displayName
                            textFormat: Text.PlainText
                            horizontalAlignment: Text.AlignLeft
                            elide: Text.ElideRight
                            font { pixelSize: Sizes.name; weight: Font.DemiBold }
                        }
                        Label {
                            Layout.fillWidth: true
                            text: own.told
                            textFormat: Text.PlainText
                            horizontalAlignment: Text.AlignLeft
                            elide: Text.ElideRight
                            color: Colors.faint
                        }
                    }
                }
            }
            ActionButton {
                text: qsTr("Box")
                Accessible.name: qsTr("Your profile box")
                onClicked: page.boxOpened()
            }
        }
        RowLayout {
            Layout.margins: 8
            Layout.topMargin: 0
            spacing: 8

            Field {
                id: searchField
                Layout.fillWidth: true
                placeholderText: qsTr("Search")
                Accessible.name: qsTr("Search contacts")
                onTextChanged: {
                    page.session.people.searchText = text
                    list.positionViewAtBeginning()
                }
                Keys.onDownPressed: list.forceActiveFocus()
            }
            Choice {
                id: presence
                model: [
                    { text: qsTr("Everybody"), value: ContactFilterModel.Anybody },
                    { text: qsTr("Available"), value: ContactFilterModel.Available },
                    { text: qsTr("Busy"), value: ContactFilterModel.Busy }
                ]
                Accessible.name: qsTr("Whom to show")
                onActivated: page.session.people.presence = currentValue
            }
        }
        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Colors.line
        }
        ListView {
            id: list
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            activeFocusOnTab: true
            currentIndex: -1
            onActiveFocusChanged: if (activeFocus && currentIndex === -1) currentIndex = 0
            model: page.session.people
            reuseItems: true
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Contacts")
            Keys.onReturnPressed: (currentItem as ContactDelegate)?.clicked()
            Keys.onEnterPressed: (currentItem as ContactDelegate)?.clicked()
            ScrollBar.vertical: ScrollBar {}
            delegate: ContactDelegate {
                id: person
                required property int index
                width: ListView.view.width
                // The place of who goes is not handed on to the next.
                ListView.onRemove: if (ListView.isCurrentItem) list.currentIndex = -1
                highlighted: ListView.isCurrentItem
                focused: highlighted && ListView.view.activeFocus
                onClicked: () => {
                    list.forceActiveFocus()
                    ListView.view.currentIndex = person.index
                    page.contactOpened(person.handle)
                }
            }

            Note {
                anchors.centerIn: parent
                width: parent.width - 48
                visible: list.count === 0
                busy: !page.session.contacts.complete
                text: busy ? qsTr("Reading your contacts")
                    : page.session.contacts.count > 0 ? qsTr("Nobody whom you look for.")
                    : qsTr("None of your contacts has this application yet. They appear here when they do.")
            }
        }
        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Colors.line
        }
        Label {
            Layout.margins: 8
            Layout.leftMargin: 12
            color: Colors.faint
            text: list.count === page.session.contacts.count
                ? (list.count === 1 ? qsTr("1 contact") : qsTr("%L1 contacts").arg(list.count))
                : qsTr("%L1 of %L2 contacts").arg(list.count).arg(page.session.contacts.count)
        }
    }
}
