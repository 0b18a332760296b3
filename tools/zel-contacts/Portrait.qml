// SPDX-License-Identifier: Apache-2.0
import QtQuick
import ZelPlatform

// A round picture, with initials where there is none, and a dot that says whether the person may be disturbed.
Item {
    id: portrait

    property string name
    property string handle
    property url picture
    property int status: UserStatus.Available
    // What it stands on, which its corners take the colour of.
    property color ground: Colors.base

    implicitWidth: 44
    implicitHeight: implicitWidth
    Accessible.ignored: true

    Item {
        anchors.fill: parent
        clip: true

        Rectangle {
            anchors.fill: parent
            color: Colors.ofPerson(portrait.handle)
        }
        Text {
            anchors.centerIn: parent
            text: Words.initials(portrait.name)
            color: "white"
            font.pixelSize: parent.height * 0.38
        }
        Image {
            anchors.fill: parent
            source: portrait.picture
            sourceSize.width: 2 * width
            fillMode: Image.PreserveAspectCrop
            asynchronous: true
        }
        // Covers the corners, up to the circle.
        Rectangle {
            anchors.centerIn: parent
            width: 1.5 * parent.width
            height: width
            radius: width / 2
            color: "transparent"
            border.width: 0.25 * parent.width
            border.color: portrait.ground
        }
    }
    Rectangle {
        anchors { right: parent.right; bottom: parent.bottom }
        width: Math.max(12, parent.width * 0.22)
        height: width
        radius: width / 2
        color: portrait.status === UserStatus.Busy ? Colors.busy : Colors.available
        border { width: 2; color: portrait.ground }
    }
}
