// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// What came of a request. The service has no word for what it does not take: it is told when nothing comes in time.
Label {
    id: outcome

    readonly property bool awaited: patience.running
    property string otherwise

    function awaitOr(sentence: string) {
        text = ""
        otherwise = sentence
        patience.restart()
    }
    function come() {
        patience.stop()
        text = ""
    }
    function fail(sentence: string) {
        patience.stop()
        text = sentence
    }

    Layout.fillWidth: true
    visible: text !== ""
    color: Colors.busy
    wrapMode: Text.Wrap
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    Timer {
        id: patience
        interval: 4000
        onTriggered: outcome.text = outcome.otherwise
    }
}
