// SPDX-License-Identifier: Apache-2.0
pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// What others see of this application in the user's profile.
FocusScope {
    id: page

    required property Session session
    required property bool canGoBack
    signal back

    function add() {
        if (page.session.box.requestAddItem(line.text, ""))
            line.clear()
        line.forceActiveFocus()
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
        RowLayout {
            spacing: 8

            Field {
                id: line
                Layout.fillWidth: true
                maximumLength: page.session.box.maximumTextLength
                placeholderText: qsTr("Another line")
                Accessible.name: qsTr("Another line for the box")
                onAccepted: page.add()
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
