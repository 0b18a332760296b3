// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import ZelCoreDesk

// A record in a line.
ItemDelegate {
    id: row

    required property int index
    required property string time
    required property int application
    required property bool fromApplication
    required property string type
    required property string summary
    required property int size

    readonly property color directionColor: fromApplication ? Theme.fromApplication : Theme.toApplication

    width: ListView.view?.width ?? 0
    height: 24
    leftPadding: Theme.gap
    rightPadding: Theme.gap
    topPadding: 0
    bottomPadding: 0
    focusPolicy: Qt.NoFocus
    Accessible.name: fromApplication ? qsTr("%1 from application %2").arg(type).arg(application)
                                     : qsTr("%1 to application %2").arg(type).arg(application)

    background: Rectangle {
        color: row.ListView.isCurrentItem ? Theme.selection
             : row.hovered ? Theme.window : row.index % 2 ? Theme.alternate : Theme.base
    }
    contentItem: RowLayout {
        spacing: Theme.gap

        Label {
            visible: row.width > 480
            font.family: Theme.monospace
            color: Theme.faint
            text: row.time
        }
        Label {
            font.family: Theme.monospace
            color: row.directionColor
            text: row.fromApplication ? "%1 →".arg(row.application) : "%1 ←".arg(row.application)
        }
        Label {
            Layout.preferredWidth: row.width > 480 ? 150 : 110
            elide: Text.ElideRight
            color: row.directionColor
            textFormat: Text.PlainText
            text: row.type
        }
        Label {
            Layout.fillWidth: true
            elide: Text.ElideRight
            textFormat: Text.PlainText
            color: Theme.faint
            text: row.summary
        }
        Label {
            color: Theme.faint
            text: qsTr("%L1").arg(row.size)
        }
    }
}
