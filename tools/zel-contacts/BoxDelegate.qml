// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// A line of the profile box.
Rectangle {
    id: delegate

    required property int index
    required property string id
    required property string text
    required property url icon
    signal removed(string id)

    implicitHeight: Math.max(56, row.implicitHeight + 16)
    color: Colors.base
    radius: 6
    Accessible.role: Accessible.ListItem
    Accessible.name: text

    RowLayout {
        id: row
        anchors { fill: parent; margins: 8 }
        spacing: 12

        Image {
            Layout.preferredWidth: 40
            Layout.preferredHeight: 40
            visible: status !== Image.Null
            source: delegate.icon
            sourceSize.width: 80
            fillMode: Image.PreserveAspectFit
        }
        Label {
            Layout.fillWidth: true
            Layout.leftMargin: 4
            text: delegate.text
            textFormat: Text.PlainText
            horizontalAlignment: Text.AlignLeft
            wrapMode: Text.Wrap
        }
        ActionButton {
            text: qsTr("Remove")
            Accessible.name: qsTr("Remove %1").arg(delegate.text)
            onClicked: delegate.removed(delegate.id)
            onActiveFocusChanged: if (activeFocus) delegate.ListView.view.positionViewAtIndex(delegate.index, ListView.Contain)
        }
    }
}
