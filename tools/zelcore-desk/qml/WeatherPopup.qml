// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// What applications must survive: what lasts above, what befalls the next message below.
Popup {
    id: popup

    required property Desk desk
    readonly property Weather weather: desk.weather
    readonly property string unit: weather.unitOf(kind.currentIndex)
    readonly property string chosenType: type.editText === type.model[0] ? "" : type.editText
    readonly property string chosenApplication: application.currentIndex === 0 ? "" : application.currentText

    focus: true
    margins: Theme.gap
    padding: Theme.gap
    width: Math.min(320, (Overlay.overlay?.width ?? 320) - 2 * margins)

    component Latency: NumberBox {
        Layout.fillWidth: true
        from: 0
        to: 60000
        stepSize: 100
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: Theme.gap

        Switch {
            focus: true
            text: qsTr("The service reads what comes")
            checked: popup.weather.reading
            onToggled: popup.weather.reading = checked
        }
        GridLayout {
            columns: 2

            Label {
                Layout.maximumWidth: popup.availableWidth - 100
                elide: Text.ElideRight
                text: qsTr("Latency from applications (ms)")
            }
            Latency {
                value: popup.weather.latencyFrom
                onValueModified: popup.weather.latencyFrom = value
                Accessible.name: qsTr("Milliseconds that records of applications take")
            }
            Label { text: qsTr("Latency to applications (ms)") }
            Latency {
                value: popup.weather.latencyTo
                onValueModified: popup.weather.latencyTo = value
                Accessible.name: qsTr("Milliseconds that records to applications take")
            }
        }
        Label {
            Layout.topMargin: Theme.gap
            text: qsTr("The next message")
            font.bold: true
        }
        ComboBox {
            id: direction
            Layout.fillWidth: true
            model: [qsTr("from"), qsTr("to")]
            currentIndex: 1
            Accessible.name: qsTr("Direction")
        }
        ComboBox {
            id: application
            Layout.fillWidth: true
            model: [qsTr("any application"), ...popup.desk.wire.applications]
            Accessible.name: qsTr("Application")
        }
        ComboBox {
            id: type
            editable: true
            Layout.fillWidth: true
            model: [qsTr("of any type"), ...popup.desk.wire.types]
            Accessible.name: qsTr("Type of the message")
        }
        RowLayout {
            ComboBox {
                id: kind
                Layout.fillWidth: true
                model: popup.weather.faults
                Accessible.name: qsTr("Fault")
            }
            NumberBox {
                id: amount
                visible: popup.unit !== ""
                Layout.preferredWidth: 90
                from: 0
                to: 65536
                value: 500
                stepSize: 100
                Accessible.name: popup.unit
            }
            Label {
                visible: popup.unit !== ""
                text: popup.unit
            }
            PushButton {
                text: qsTr("Order it")
                onClicked: popup.weather.injectFault(direction.currentIndex === 0, kind.currentIndex,
                                                     popup.unit ? amount.value : 0, popup.chosenType,
                                                     popup.chosenApplication)
                Accessible.description: qsTr("Orders the fault for the next message")
            }
        }
        PushButton {
            Layout.alignment: Qt.AlignRight
            enabled: direction.currentIndex === 0 && popup.chosenType !== ""
            text: qsTr("Refuse it")
            onClicked: popup.weather.refuseNext(popup.chosenType, popup.chosenApplication)
            ToolTip.text: qsTr("The next request of this type is refused, although it is right")
            ToolTip.visible: hovered
            Accessible.description: ToolTip.text
        }
    }
}
