// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// The fields of a person. A field counts when Enter is pressed or the focus goes on.
ScrollView {
    id: form

    required property PersonModel person

    contentWidth: availableWidth

    ColumnLayout {
        width: form.availableWidth
        spacing: Theme.gap

        Switch {
            text: qsTr("Shown as busy")
            checked: form.person.busy
            onToggled: {
                form.person.busy = checked
                checked = Qt.binding(() => form.person.busy)
            }
        }
        Repeater {
            model: form.person
            delegate: PersonField {
                Layout.fillWidth: true
            }
        }
        RowLayout {
            Label {
                Layout.fillWidth: true
                elide: Text.ElideRight
                text: qsTr("Picture: %1").arg(form.person.picture)
            }
            PushButton {
                text: qsTr("New")
                onClicked: form.person.setPictureSize(2000 + Math.floor(Math.random() * 20000))
                Accessible.name: qsTr("A new made-up picture")
            }
            PushButton {
                text: qsTr("None")
                onClicked: form.person.setPictureSize(0)
                Accessible.name: qsTr("No picture")
            }
        }
    }
}
