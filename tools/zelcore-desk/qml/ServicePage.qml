// SPDX-License-Identifier: Apache-2.0
pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// Registration, permissions, and the applications that are connected.
ScrollView {
    id: page

    required property Service service
    required property ApplicationModel applications

    contentWidth: availableWidth

    ColumnLayout {
        width: page.availableWidth
        spacing: Theme.gap

        Label {
            text: qsTr("Registration")
            font.bold: true
        }
        GridLayout {
            Layout.fillWidth: true
            columns: 2

            Label {
                text: qsTr("State of all")
                color: Theme.faint
            }
            ComboBox {
                Layout.fillWidth: true
                model: page.service.registrationStates
                currentIndex: model.indexOf(page.service.registrationState)
                displayText: page.service.registrationState
                onActivated: index => {
                    page.service.registrationState = model[index]
                    currentIndex = Qt.binding(() => model.indexOf(page.service.registrationState))
                }
                Accessible.name: qsTr("Registration state of all applications")
            }
            Label {
                text: qsTr("Requests are")
                color: Theme.faint
            }
            ComboBox {
                id: policy
                Layout.fillWidth: true
                model: [qsTr("granted"), qsTr("left pending"), qsTr("answered with")]
                currentIndex: page.service.registrationPolicy
                onActivated: page.choosePolicy()
                Accessible.name: qsTr("What becomes of registration requests")
            }
            Label {
                visible: outcome.visible
                text: qsTr("the state")
                color: Theme.faint
            }
            ComboBox {
                id: outcome
                Layout.fillWidth: true
                visible: policy.currentIndex === 2
                model: page.service.registrationStates
                currentIndex: model.indexOf(page.service.registrationOutcome)
                onActivated: page.choosePolicy()
                Accessible.name: qsTr("State that answers registration requests")
            }
            Label {
                text: qsTr("after (ms)")
                color: Theme.faint
            }
            NumberBox {
                id: delay
                Layout.fillWidth: true
                from: 0
                to: 60000
                value: page.service.registrationDelay
                stepSize: 100
                enabled: policy.currentIndex !== 1
                onValueModified: page.choosePolicy()
                Accessible.name: qsTr("Milliseconds until a registration request is answered")
            }
        }

        Label {
            text: qsTr("The user allows")
            font.bold: true
        }
        Switch {
            text: qsTr("showing the box of the application")
            checked: page.service.showAppBox
            onToggled: page.service.showAppBox = checked
        }
        Switch {
            text: qsTr("invitations")
            checked: page.service.zelInvites
            onToggled: page.service.zelInvites = checked
        }
        Switch {
            text: qsTr("the service is set up on the device")
            checked: page.service.zelSetup
            onToggled: page.service.zelSetup = checked
        }

        Label {
            text: qsTr("Applications")
            font.bold: true
        }
        Label {
            visible: page.applications.count === 0
            Layout.fillWidth: true
            wrapMode: Text.Wrap
            color: Theme.faint
            text: qsTr("None. Say the line above in a shell, and start one there.")
        }
        Repeater {
            model: page.applications
            delegate: ApplicationRow {
                Layout.fillWidth: true
                onChosen: (number, to) => page.applications.setState(number, to)
            }
        }
    }

    function choosePolicy() {
        service.setRegistrationPolicy(policy.currentIndex, outcome.currentText, delay.value)
    }
}
