// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// A contact in the list: whether he or she has the application is a switch.
ItemDelegate {
    id: row

    required property string userId
    required property string handle
    required property string name
    required property string message
    required property bool busy
    required property bool installed

    readonly property string about: (busy ? qsTr("busy · ") : "") + handle + (message ? " · " + message : "")

    signal opened(string userId)
    signal switched(string userId, bool on)

    function open() {
        opened(userId)
    }
    function setOther() {
        switched(userId, !installed)
    }

    width: ListView.view?.width ?? 0
    height: Math.max(44, contentItem.implicitHeight + 8)
    focusPolicy: Qt.NoFocus
    highlighted: ListView.isCurrentItem && (ListView.view?.activeFocus ?? false)
    text: name
    Accessible.name: installed ? name : qsTr("%1, without the application").arg(name)
    Accessible.description: about
    onClicked: open()
    Keys.onReturnPressed: open()
    Keys.onSpacePressed: setOther()

    background: Rectangle {
        color: row.highlighted ? Theme.selection : row.hovered ? Theme.window : "transparent"
    }
    contentItem: RowLayout {
        spacing: Theme.gap

        ColumnLayout {
            spacing: 0
            opacity: row.installed ? 1 : 0.55

            Label {
                Layout.fillWidth: true
                horizontalAlignment: Text.AlignLeft
                elide: Text.ElideRight
                textFormat: Text.PlainText
                text: row.name
            }
            Label {
                Layout.fillWidth: true
                horizontalAlignment: Text.AlignLeft
                elide: Text.ElideRight
                textFormat: Text.PlainText
                font.pointSize: row.font.pointSize * 0.85
                color: Theme.faint
                text: row.about
            }
        }
        Switch {
            focusPolicy: Qt.NoFocus
            checked: row.installed
            onToggled: {
                row.setOther()
                checked = Qt.binding(() => row.installed)
            }
            ToolTip.text: qsTr("Has the application")
            ToolTip.visible: hovered
            ToolTip.delay: 500
            Accessible.name: qsTr("%1 has the application").arg(row.name)
        }
    }
}
