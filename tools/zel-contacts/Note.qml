// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls.Basic

// A sentence where there is nothing else to show.
Column {
    id: note

    property string title
    property string text
    property bool busy: false

    spacing: 8

    BusyIndicator {
        visible: note.busy
        running: visible
        anchors.horizontalCenter: parent.horizontalCenter
    }
    Label {
        visible: text !== ""
        width: parent.width
        text: note.title
        font { pixelSize: Sizes.title; weight: Font.DemiBold }
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    Label {
        width: parent.width
        text: note.text
        color: Colors.faint
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
    }
}
