// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// What is to become of the next message to an application.
Popup {
    id: popup

    required property Service service
    required property var types // texts
    readonly property string unit: service.amountOf(kind.currentIndex)

    focus: true
    margins: Theme.gap
    width: 300

    ColumnLayout {
        anchors.fill: parent
        spacing: Theme.gap

        Label {
            text: qsTr("The next message to an application")
            font.bold: true
        }
        ComboBox {
            id: kind
            Layout.fillWidth: true
            model: popup.service.faults
            focus: true
            Accessible.name: qsTr("Fault")
        }
        RowLayout {
            visible: popup.unit !== ""

            SpinBox {
                id: amount
                Layout.fillWidth: true
                from: 0
                to: 65536
                value: 500
                stepSize: 100
                editable: true
                Accessible.name: popup.unit
            }
            Label { text: popup.unit }
        }
        ComboBox {
            id: type
            Layout.fillWidth: true
            model: [qsTr("of any type"), ...popup.types]
            editable: currentIndex !== 0
            Accessible.name: qsTr("Type of the message")
        }
        Button {
            Layout.alignment: Qt.AlignRight
            text: qsTr("Order it")
            onClicked: popup.service.injectFault(kind.currentIndex, popup.unit ? amount.value : 0,
                                                 type.currentIndex === 0 ? "" : type.editText)
        }
    }
}
