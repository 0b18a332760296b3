// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import ZelCoreDesk

// Which records are shown.
Flow {
    id: bar

    required property WireModel wire

    spacing: Theme.gap

    component Choice: ComboBox {
        property string all
        property var values // texts
        property string value

        signal chosen(string to)

        model: [all, ...values]
        currentIndex: value ? Math.max(0, values.indexOf(value) + 1) : 0
        onActivated: index => {
            chosen(index ? values[index - 1] : "")
            currentIndex = Qt.binding(() => value ? Math.max(0, values.indexOf(value) + 1) : 0)
        }
    }

    Choice {
        width: 140
        all: qsTr("All types")
        values: bar.wire.types
        value: bar.wire.type
        onChosen: to => bar.wire.type = to
        Accessible.name: qsTr("Type")
    }
    ComboBox {
        width: 130
        model: [qsTr("Both directions"), qsTr("From applications"), qsTr("To applications")]
        currentIndex: bar.wire.direction
        onActivated: index => bar.wire.direction = index
        Accessible.name: qsTr("Direction")
    }
    Choice {
        width: 125
        all: qsTr("All applications")
        values: bar.wire.applications
        value: bar.wire.application
        onChosen: to => bar.wire.application = to
        Accessible.name: qsTr("Application")
    }
    Field {
        width: 100
        placeholderText: qsTr("that contain …")
        text: bar.wire.text
        onTextEdited: bar.wire.text = text
        Accessible.name: qsTr("Text in the record")
    }
    BarSwitch {
        text: qsTr("Hold")
        checked: bar.wire.held
        onToggled: bar.wire.held = checked
        ToolTip.text: qsTr("New records wait")
        ToolTip.visible: hovered
        Accessible.description: ToolTip.text
    }
    PushButton {
        width: 60
        text: qsTr("C&lear")
        onClicked: bar.wire.clear()
        Accessible.description: qsTr("Forgets the records that have passed")
    }
    BarLabel {
        text: qsTr("%L1 of %L2").arg(bar.wire.count).arg(bar.wire.passed)
        color: Theme.faint
        Accessible.name: qsTr("%L1 records shown, %L2 have passed").arg(bar.wire.count).arg(bar.wire.passed)
    }
}
