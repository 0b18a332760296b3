// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtTest
import ZelPlatform
import "qrc:/ZelContacts" as Contacts

// The program as a person uses it: by keyboard, and what is told to whoever cannot see it.
TestCase {
    id: test
    name: "Contacts"
    when: windowShown
    visible: true

    property QtObject window

    Component { id: windowComponent; Contacts.Main {} }

    function init() {
        compare(world.begin(), "")
        world.run("contact add anna displayName=Anna ppId=pp-anna")
        world.run("contact add bert displayName=Bert showBusy=true statusMessage=driving ppId=pp-bert")
        world.run("eco pp-bert eco-bert")
    }
    function cleanup() { test.parent = null }

    // Keys go to the window that the test case is in.
    function start(width) {
        test.window = createTemporaryObject(windowComponent, test, {width: width, height: 600})
        test.parent = test.window.contentItem
        test.window.requestActivate()
        tryCompare(test.window, "settled", true)
        // Without a screen Qt 6.8 makes only the first window of a process active, and shortcuts are for that alone.
        for (let waited = 0; !test.window.active && waited < 5000; waited += 50)
            wait(50)
        if (!test.window.active)
            skip("the window does not become active on this platform")
        tryVerify(() => said() === "Search contacts")
    }
    // What is said of what has the focus.
    function said() { return test.window.activeFocusItem?.Accessible.name || test.window.activeFocusItem?.text || "" }
    function go(key, name) { tryVerify(() => said() === name || (keyClick(key), false), 5000, name) }
    function type(text) { Array.from(text).forEach(key => keyClick(key)) }

    function test_goesByKeyboard_data() { return [{tag: "wide", width: 960}, {tag: "narrow", width: 380}] }

    function test_goesByKeyboard(data) {
        start(data.width)
        type("ber")
        keyClick(Qt.Key_Down)
        tryVerify(() => said() === "Bert, Busy: driving")
        keyClick(Qt.Key_Return)
        compare([test.window.page, test.window.handle], ["contact", "bert"])
        compare(said(), data.tag === "wide" ? "Bert, Busy: driving" : "Back") // never nothing, and never what is hidden
        go(Qt.Key_Tab, "Chat")
        keyClick(Qt.Key_Space)
        tryVerify(() => world.asked("sys.zel.chathandler") === 1)
        keyClick(Qt.Key_Escape)
        compare(test.window.page, "")
        keyClick("f", Qt.ControlModifier)
        compare(said(), "Search contacts")
        go(Qt.Key_Backtab, "Your profile box")
        keyClick(Qt.Key_Space)
        go(Qt.Key_Tab, "Another line for the box")
        type("level 8")
        keyClick(Qt.Key_Return)
        tryVerify(() => world.run("box").includes("level 8"))
        compare(world.refusals(), [])
    }

    function find(name, item) {
        return item.Accessible.name === name ? item : Array.from(item.children).reduce((found, child) => found ?? find(name, child), null)
    }

    function test_staysWithWhoIsChosen() {
        world.run("contact add cleo displayName=Cleo")
        start(960)
        const list = find("Contacts", test.window.contentItem)
        keyClick(Qt.Key_Down)
        go(Qt.Key_Down, "Bert, Busy: driving")
        keyClick(Qt.Key_Return)
        world.run("contact change cleo displayName=Aaron")
        tryVerify(() => list.itemAtIndex(0).displayName === "Aaron")
        compare(said(), "Bert, Busy: driving")
        // Gone while nobody was told: still who it was, and the list is at nobody else.
        world.run("away")
        world.run("contact uninstall bert")
        world.run("back")
        tryVerify(() => list.count === 2 && list.currentIndex === -1)
        verify(find("Bert", test.window.contentItem))
    }

    // What is half changed and not saved is nobody else's to change back.
    function test_keepsWhatIsBeingChanged() {
        start(960)
        go(Qt.Key_Backtab, "Your profile box")
        keyClick(Qt.Key_Backtab)
        keyClick(Qt.Key_Space)
        go(Qt.Key_Tab, "Personal message")
        type("new")
        go(Qt.Key_Tab, "Status message")
        world.run("profile personalMessage=theirs statusMessage=away")
        tryCompare(test.window.activeFocusItem, "text", "away")
        go(Qt.Key_Tab, "Save")
        keyClick(Qt.Key_Space)
        tryVerify(() => world.run("profile").includes("new"))
        compare(said(), "Personal message")
    }

    function test_saysHowTheRegistrationStands() {
        start(960)
        world.run("state NoDataConnection")
        tryVerify(() => said() === "Try again")
        keyClick(Qt.Key_Space)
        tryVerify(() => said() === "Search contacts")
        world.run("state Expired") // nothing to do but to hear of it
        tryVerify(() => said().startsWith("Expired. "))
        world.run("state Success")
        tryVerify(() => said() === "Search contacts")
        // Every state has words, and a way on where a request is possible.
        const words = Contacts.Words
        for (let state = RegistrationState.Allowed; state <= RegistrationState.BlockedEnterprisePerimeter; ++state)
            verify(words.ofRegistration(state).title !== "" && words.ofRegistration(state).text !== "", state)
        compare(words.ofRegistration(RegistrationState.CancelledByUser).action, "Try again")
        compare(words.ofRegistration(RegistrationState.Expired).action, undefined)
    }
}
