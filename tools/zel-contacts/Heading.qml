// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The top of a page: where it leads back to, where there is no room for both, and what it is.
RowLayout {
    id: heading

    required property string title
    property bool canGoBack: false
    signal back

    Layout.fillWidth: true
    spacing: 8

    ActionButton {
        visible: heading.canGoBack
        Layout.alignment: Qt.AlignTop
        text: qsTr("Back")
        onClicked: heading.back()
    }
    Label {
        Layout.fillWidth: true
        Layout.minimumHeight: 40
        text: heading.title
        textFormat: Text.PlainText
        font { pixelSize: Sizes.title; weight: Font.DemiBold }
        horizontalAlignment: Text.AlignLeft
        verticalAlignment: Text.AlignVCenter
        wrapMode: Text.Wrap
        maximumLineCount: 3
        elide: Text.ElideRight
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
}
