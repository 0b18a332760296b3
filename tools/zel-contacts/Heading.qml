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

    spacing: 8

    ActionButton {
        visible: heading.canGoBack
        text: qsTr("Back")
        onClicked: heading.back()
    }
    Label {
        Layout.fillWidth: true
        Layout.minimumHeight: 40
        text: heading.title
        font { pixelSize: 20; weight: Font.DemiBold }
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
}
