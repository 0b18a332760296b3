// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// A contact in the list.
ItemDelegate {
    id: delegate

    required property string handle
    required property string displayName
    required property string personalMessage
    required property string statusMessage
    required property int status
    required property url picture
    property bool focused: false
    readonly property color ground: highlighted ? Colors.chosen : hovered ? Colors.window : Colors.base

    // The list has the focus, and says which of its delegates goes with it.
    focusPolicy: Qt.NoFocus
    implicitHeight: Sizes.row
    padding: 8
    leftPadding: 12
    Accessible.name: qsTr("%1, %2").arg(displayName).arg(Words.ofPresence(status, statusMessage))
    Accessible.description: personalMessage

    background: Rectangle {
        color: delegate.ground
        border { width: delegate.focused ? 2 : 0; color: Colors.accent }
    }
    contentItem: RowLayout {
        spacing: 12

        Portrait {
            name: delegate.displayName
            handle: delegate.handle
            picture: delegate.picture
            status: delegate.status
            ground: delegate.ground
        }
        ColumnLayout {
            spacing: 2

            Label {
                Layout.fillWidth: true
                text: delegate.displayName
                textFormat: Text.PlainText
                horizontalAlignment: Text.AlignLeft
                elide: Text.ElideRight
                font.pixelSize: Sizes.name
            }
            Label {
                Layout.fillWidth: true
                visible: text !== ""
                text: delegate.personalMessage || delegate.statusMessage
                textFormat: Text.PlainText
                horizontalAlignment: Text.AlignLeft
                elide: Text.ElideRight
                maximumLineCount: 1
                color: Colors.faint
            }
        }
    }
}
