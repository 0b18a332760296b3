// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// An application, and its registration.
ColumnLayout {
    id: row

    required property string number
    required property string uuid
    required property string registration
    required property list<string> choices // what the registration may be set to
    required property int process

    signal chosen(string number, string to)

    spacing: 2

    RowLayout {
        Label {
            Layout.fillWidth: true
            elide: Text.ElideRight
            text: row.process ? qsTr("%1, process %2").arg(row.number).arg(row.process) : row.number
        }
        ComboBox {
            Layout.preferredWidth: 190
            model: row.choices
            currentIndex: model.indexOf(row.registration)
            displayText: row.registration
            onActivated: index => {
                row.chosen(row.number, row.choices[index])
                currentIndex = Qt.binding(() => model.indexOf(row.registration))
            }
            Accessible.name: qsTr("Registration state of application %1").arg(row.number)
        }
    }
    Label {
        Layout.fillWidth: true
        elide: Text.ElideRight
        color: Theme.faint
        text: row.uuid || qsTr("no UUID yet")
    }
}
