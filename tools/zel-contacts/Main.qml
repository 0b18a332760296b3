// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Controls.Basic

// The list of contacts and a page beside it, or one of them where there is no room for both.
ApplicationWindow {
    id: window

    property string firstPage: ""
    property string colors: ""
    // What is open beside the list: "contact", "profile", "box" or nothing.
    property string page: firstPage === "contact" ? "" : firstPage
    property string handle: ""
    readonly property bool wide: width >= 720
    readonly property bool settled: session.settled && !awaitsFirst
    readonly property bool awaitsFirst: firstPage === "contact" && handle === "" && session.contacts.count > 0

    function open(which: string) {
        page = which
        takeFocus()
    }
    function close() {
        page = ""
        contacts.takeFocus()
    }
    // The keyboard goes with what is to be seen.
    function takeFocus() {
        if (!session.context.ready)
            registration.forceActiveFocus()
        else if (!contacts.visible)
            beside.nextItemInFocusChain().forceActiveFocus(Qt.TabFocusReason)
    }

    visible: true
    title: session.context.ready ? qsTr("%1: contacts").arg(session.profile.displayName) : qsTr("Contacts")
    minimumWidth: 320
    minimumHeight: 400
    color: Colors.window
    palette {
        window: Colors.window
        windowText: Colors.text
        base: Colors.base
        text: Colors.text
        button: Colors.control
        buttonText: Colors.text
        mid: Colors.line
        midlight: Colors.chosen
        light: Colors.chosen
        dark: Colors.accent
        brightText: Colors.accentText
        highlight: Colors.accent
        highlightedText: Colors.text // on what is chosen, in lists of Qt's own
        placeholderText: Colors.faint
    }

    Binding {
        target: Colors
        property: "forced"
        value: window.colors
    }
    Session {
        id: session
        onSettledChanged: if (settled && window.awaitsFirst) contacts.openFirst()
    }
    Shortcut {
        sequences: ["Esc", "Back", "Alt+Left"]
        enabled: window.page !== ""
        onActivated: window.close()
    }
    Shortcut {
        sequences: ["Ctrl+F"]
        onActivated: {
            if (!window.wide)
                window.page = ""
            contacts.search()
        }
    }

    onWideChanged: takeFocus()
    Connections {
        target: session.context
        function onReadyChanged() {
            if (contacts.visible)
                contacts.search()
            window.takeFocus()
        }
    }
    RegistrationPage {
        id: registration
        focus: true
        anchors.fill: parent
        visible: !session.context.ready
        session: session
    }
    ContactsPage {
        id: contacts
        anchors { top: parent.top; bottom: parent.bottom; left: parent.left }
        width: window.wide ? 320 : parent.width
        visible: session.context.ready && (window.wide || window.page === "")
        session: session
        onContactOpened: handle => { window.handle = handle; window.open("contact") }
        onProfileOpened: window.open("profile")
        onBoxOpened: window.open("box")
    }
    Rectangle {
        anchors { top: parent.top; bottom: parent.bottom; left: contacts.right }
        width: 1
        visible: contacts.visible && window.wide
        color: Colors.line
    }
    FocusScope {
        id: beside
        anchors { fill: parent; leftMargin: window.wide ? contacts.width + 1 : 0 }
        visible: session.context.ready

        Note {
            anchors.centerIn: parent
            width: Math.min(parent.width - 32, 360)
            visible: window.wide && window.page === "" && session.contacts.count > 0
            text: qsTr("Choose somebody in the list.")
        }
        ContactPage {
            anchors.fill: parent
            visible: window.page === "contact"
            session: session
            handle: window.handle
            canGoBack: !window.wide
            onBack: window.close()
        }
        ProfilePage {
            anchors.fill: parent
            visible: window.page === "profile"
            session: session
            canGoBack: !window.wide
            onBack: window.close()
        }
        BoxPage {
            anchors.fill: parent
            visible: window.page === "box"
            session: session
            canGoBack: !window.wide
            onBack: window.close()
        }
    }
}
