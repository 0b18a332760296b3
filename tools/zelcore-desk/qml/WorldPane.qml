// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// The world of the service, to look at and to change.
ColumnLayout {
    id: pane

    required property Desk desk

    function show(page) {
        tabs.currentIndex = { contacts: 0, user: 1, box: 2, service: 3 }[page] ?? 0
    }

    spacing: Theme.gap

    TabBar {
        id: tabs
        Layout.fillWidth: true
        Accessible.name: qsTr("World")

        TabButton { text: qsTr("Contacts") }
        TabButton { text: qsTr("User") }
        TabButton { text: qsTr("Box") }
        TabButton { text: qsTr("Service") }
    }
    StackLayout {
        Layout.fillWidth: true
        Layout.fillHeight: true
        currentIndex: tabs.currentIndex

        ContactsPage { desk: pane.desk }
        UserPage { user: pane.desk.user }
        BoxPage { box: pane.desk.box }
        ServicePage {
            service: pane.desk.service
            applications: pane.desk.applications
        }
    }
}
