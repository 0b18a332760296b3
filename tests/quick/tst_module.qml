// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtTest
import ZelPlatform

TestCase {
    id: test
    name: "Module"
    when: windowShown
    width: 200
    height: 200
    visible: true

    // Of the pictures that the service makes up, by their bytes.
    readonly property var colors: ({3000: "#fc5dc3", 4000: "#fdfaa6"})

    Component {
        id: applicationComponent

        Item {
            readonly property Context context: Context { id: context; uuid: "6f8d2c4e-5b0a-4a37-9d0e-0c8f3f1f2a10"; registration: Context.Automatic }
            readonly property UserProfile profile: UserProfile { id: profile; context: context }
            readonly property ContactListModel contacts: ContactListModel { id: contacts; context: context }
            readonly property ContactFilterModel filter: ContactFilterModel { id: filter; sourceModel: contacts }
            readonly property ProfileBoxModel items: ProfileBoxModel { id: items; context: context }
            readonly property ProfileBox box: ProfileBox { context: context }
            readonly property Utils utils: Utils { context: context }
            readonly property ApplicationPermissions permissions: ApplicationPermissions { context: context }
            readonly property FollowedContact anna: FollowedContact { context: context; handle: "anna" }
            property alias shown: shown
            property alias icons: icons
            property alias ownImage: ownImage
            readonly property string message: profile.personalMessage

            // Without Qt's own cache, so that all that is asked for comes to the module.
            Image { id: ownImage; y: 100; width: 8; height: 8; source: profile.picture; cache: false }
            Repeater {
                id: shown
                model: filter
                // As two delegates may: both show the same.
                Item {
                    required property string displayName
                    required property url picture
                    required property int index
                    property alias image: first
                    property alias small: second
                    Image { id: first; x: parent.index * 20; width: 8; height: 8; source: parent.picture; cache: false }
                    Image { id: second; x: parent.index * 20; y: 20; width: 8; height: 8; source: parent.picture; sourceSize.width: 4; cache: false }
                }
            }
            Repeater {
                id: icons
                model: items
                Image { required property url icon; required property int index; x: index * 20; y: 120; width: 8; height: 8; source: icon; sourceSize.height: 4; cache: false }
            }
        }
    }

    Component { id: imageComponent; Image { cache: false } }

    function init() {
        failOnWarning(/^\w+::\w+: /) // what the library says of calls that can never work
        compare(world.begin(), "")
    }
    // The pictures of the last function go with the next frame.
    function cleanupTestCase() { grabImage(test) }
    function start() { return createTemporaryObject(applicationComponent, test) }
    function color(item) { return String(grabImage(item).pixel(2, 2)) }
    function shown(repeater) { return Array.from({length: repeater.count}, (_, row) => repeater.itemAt(row)) }
    function names(repeater) { return shown(repeater).map(item => item?.displayName).join() }
    // What comes while an image waits for it is no news.
    function nothingLoads(app) {
        return shown(app.shown).every(item => item.image.status === Image.Ready && item.small.status === Image.Ready)
    }

    function test_registersByItselfWhenTold_data() {
        return [{tag: "never", registration: Context.Manual, requests: 0, how: "aloud"},
                {tag: "never, but another", registration: Context.Manual, requests: 1, how: "silently"},
                {tag: "the user may be asked", registration: Context.Automatic, requests: 1, how: "aloud"},
                {tag: "nobody is asked", registration: Context.Silent, requests: 1, how: "silently"}]
    }

    function test_registersByItselfWhenTold(data) {
        const app = start()
        app.context.registration = Context.Manual
        tryCompare(app.context, "registrationState", RegistrationState.Unregistered)
        app.context.registration = Context.Automatic // in one turn: never mind
        app.context.registration = data.registration
        const another = ('import ZelPlatform; Context { property int told; uuid: "%1"; registration: %2; onReadyChanged: ++told;' +
                         'property int changes; property int version: platformVersion; onVersionChanged: ++changes }')
            .arg(app.context.uuid)
        if (data.registration === Context.Manual)
            verify(data.how === "aloud" ? app.context.requestRegisterApplication()
                                        : createTemporaryQmlObject(another.arg("Context.Silent"), test))
        tryCompare(app.context, "ready", true)
        compare(app.context.registrationState, RegistrationState.Allowed)
        compare(world.asked(data.how), 1)
        const late = createTemporaryQmlObject(another.arg("Context.Manual"), test)
        compare([late.told, late.changes], [1, 1])
        // A service that registers nobody is asked again, but not at once and over and over.
        world.run("registration manual")
        world.run("state Unregistered")
        tryVerify(() => world.asked(data.how) === 1 + data.requests)
        for (let i = 0; i < 3; ++i)
            world.run("state Unregistered")
        world.run("state NoDataConnection")
        tryCompare(app.context, "registrationState", RegistrationState.NoDataConnection)
        compare(world.asked(data.how), 1 + data.requests)
    }

    function test_saysWhatCanNeverWork() {
        ignoreWarning(/the uuid "nonsense" is none/)
        const context = createTemporaryQmlObject('import ZelPlatform; Context { uuid: "nonsense" }', test)
        ignoreWarning(/the uuid stays/)
        context.uuid = "6f8d2c4e-5b0a-4a37-9d0e-0c8f3f1f2a10"
        compare(context.uuid, "nonsense")
        const app = start()
        const nowhere = "file:///nowhere.png"
        const requests = [
            [app.profile, "requestUpdateDisplayPictureFile", nowhere], [app.box, "requestRegisterIconFile", 1, nowhere],
            [app.profile, "requestUpdatePersonalMessage", "too early"], [app.box, "requestRemoveAllItems"],
            [app.box, "requestRegisterIcon", 1, ImageType.Png, new ArrayBuffer(1)], [app.utils, "requestEcoId", "pp"]]
        for (const [object, request, ...values] of requests) {
            ignoreWarning(new RegExp(request + "\\(\\) is refused: the context is not ready"))
            verify(!object[request](...values), request)
        }
        tryCompare(app.context, "ready", true)
        for (const [object, request, ...values] of requests.slice(0, 2)) {
            ignoreWarning(new RegExp(request + ".*cannot read " + nowhere))
            verify(!object[request](...values))
        }
    }

    function test_listsContactsAndFindsThem() {
        world.run("contact add zoe displayName=Zoe showBusy=true personalMessage=\"at the sea\"")
        world.run("contact add anna displayName=Anna")
        const app = start()
        tryVerify(() => names(app.shown) === "Anna,Zoe")
        verify(app.contacts.complete)
        app.filter.searchText = "sea"
        compare(names(app.shown), "Zoe")
        verify(app.filter.count === 1 && app.filter.contact(0).displayName === "Zoe" && app.filter.contact(1).null)
        app.filter.searchText = ""
        app.filter.presence = ContactFilterModel.Available
        compare(names(app.shown), "Anna")
        verify(app.anna.present && app.anna.contact.displayName === "Anna")
        world.run("contact change anna displayName=Berta")
        tryVerify(() => names(app.shown) === "Berta" && app.anna.contact.displayName === "Berta")
        world.run("contact uninstall anna")
        tryVerify(() => names(app.shown) === "" && !app.anna.present)
    }

    Component {
        id: listComponent
        ListView {
            anchors.fill: parent
            delegate: Item { required property string displayName; height: 10 }
        }
    }

    function test_keepsAViewAtWhomItIs() {
        for (const name of ["Anna", "Bert", "Cleo"])
            world.run(`contact add ${name} displayName=${name}`)
        const app = start()
        const list = createTemporaryObject(listComponent, test, {model: app.filter})
        tryCompare(list, "count", 3)
        list.currentIndex = 1
        const bert = list.currentItem
        world.run("contact change Cleo displayName=Aaron")
        tryVerify(() => app.filter.rowOf("Cleo") === 0 &&
                  list.currentIndex === 2 && list.currentItem === bert && bert.displayName === "Bert")
        world.run("contact change Bert displayName=Adam")
        tryVerify(() => bert.displayName === "Adam" && list.currentIndex === 1 && list.currentItem === bert)
        app.filter.searchText = "ad"
        tryVerify(() => list.count === 1 && list.currentIndex === 0 && list.currentItem === bert)
    }

    function test_changesTheProfile() {
        world.run("profile displayName=Robin")
        world.run("picture 4000")
        const app = start()
        const picture = app.profile.picture
        tryVerify(() => app.profile.displayName === "Robin" && color(app.ownImage) === colors[4000])
        verify(app.profile.requestUpdateStatus(UserStatus.Busy, "meeting"))
        tryCompare(app.profile, "status", UserStatus.Busy)
        verify(app.profile.requestUpdatePersonalMessage("back at five"))
        tryCompare(app, "message", "back at five")
        compare(app.profile.picture, picture) // is another one only when the picture is
        // One that is too big for the service arrives as one that is not.
        for (const [size, color] of [[32768, "#fe0000"], [32769, "#0000fe"]]) {
            verify(app.profile.requestUpdateDisplayPictureFile(world.uprightPicture(size)))
            tryVerify(() => test.color(app.ownImage) === color)
        }
        compare(world.refusals(), [])
    }

    function test_asksForAPictureOnceAndShowsANewOne() {
        world.run("contact add anna displayName=Anna")
        world.run("contact add bert displayName=Bert")
        world.run("contact picture anna 4000")
        const app = start()
        tryVerify(() => app.shown.count === 2 && color(app.shown.itemAt(0).image) === colors[4000])
        const asked = 2 // and the user's own
        const nobody = createTemporaryObject(followedComponent, test, {context: app.context, handle: "nobody"})
        tryCompare(createTemporaryObject(imageComponent, test, {source: nobody.picture}), "status", Image.Ready)
        compare(world.asked("requestUserAvatar"), asked)
        compare(app.shown.itemAt(1).image.status, Image.Ready)
        const before = app.anna.picture
        world.run("contact picture anna 3000")
        tryVerify(() => color(app.shown.itemAt(0).image) === colors[3000])
        compare(world.asked("requestUserAvatar"), asked + 1)
        verify(before !== app.anna.picture)
        compare(app.anna.picture, app.shown.itemAt(0).picture)
        world.run("away")
        world.run("contact picture anna 4000")
        world.run("back")
        tryVerify(() => color(app.shown.itemAt(0).image) === colors[4000])
    }

    function test_showsPicturesAsBigAsTheyAreWanted() {
        const app = start()
        for (const [picture, wanted, shown] of [
            [Qt.size(16, 8), Qt.size(0, 0), "16x8"], [Qt.size(16, 8), Qt.size(4, 0), "4x2"],
            [Qt.size(16, 8), Qt.size(0, 1), "2x1"], [Qt.size(16, 8), Qt.size(1, 4), "8x4"],
            [Qt.size(16, 8), Qt.size(4, 1), "4x2"], [Qt.size(10, 1000), Qt.size(0, 1001), "10x1000"],
            [Qt.size(4096, 4096), Qt.size(4, 4), "4x4"], [Qt.size(4096, 4097), Qt.size(4, 4), "1x1"]]) { // too big
            world.run("picture " + world.plainPicture(picture))
            app.ownImage.sourceSize = wanted
            tryVerify(() => app.ownImage.implicitWidth + "x" + app.ownImage.implicitHeight === shown, 5000, shown)
        }
    }

    function test_whatWaitsForAPictureEndsWithTheContext() {
        world.run("drop stream")
        const app = start()
        const url = app.ownImage.source
        const image = createTemporaryObject(imageComponent, test, {source: url})
        tryVerify(() => world.asked("requestUserAvatar") === 1)
        compare(image.status, Image.Loading)
        app.destroy()
        tryVerify(() => image.status !== Image.Loading)
        ignoreWarning(/Invalid image provider/)
        image.source = ""
        image.source = url
        tryCompare(image, "status", Image.Error)
    }

    function test_losesAccessAndWinsItBack() {
        world.run("contact add anna displayName=Anna")
        world.run("profile displayName=Robin")
        world.run("contact picture anna 4000")
        world.run("box add first")
        world.run("picture none")
        const app = start()
        tryCompare(app.ownImage, "status", Image.Ready) // empty
        for (let i = 0; i < 2; ++i) {
            tryVerify(() => names(app.shown) === "Anna" && app.items.count === 1)
            compare(app.icons.itemAt(0).icon, "") // of none
            tryVerify(() => color(app.shown.itemAt(0).image) === colors[4000])
            compare(app.profile.displayName, "Robin")
            world.run("state NoDataConnection")
            tryVerify(() => app.shown.count + app.items.count === 0 && app.profile.displayName === "")
            verify(!app.context.ready && !app.anna.present && !app.contacts.complete)
            const nobody = createTemporaryObject(followedComponent, test, {context: app.context, handle: "nobody" + i})
            const images = [1, 2].map(() => createTemporaryObject(imageComponent, test, {source: nobody.picture}))
            world.run("state Expired")
            tryCompare(app.context, "registrationState", RegistrationState.Expired)
            compare(images[0].status, Image.Loading)
            images[1].source = "" // the other waits on
            world.run("state Success")
            tryCompare(images[0], "status", Image.Ready)
        }
        // Another context, or none, is another beginning.
        tryCompare(app.contacts, "count", 1)
        app.contacts.context = app.profile.context = app.anna.context = null
        verify(app.contacts.count === 0 && app.profile.displayName === "" && app.anna.contact.null)
        app.contacts.context = app.profile.context = app.context
        tryVerify(() => app.contacts.count === 1 && app.profile.displayName === "Robin")
    }

    function test_fillsTheBox() {
        world.run("box icon 7 4000")
        const app = start()
        tryCompare(app.context, "ready", true)
        compare(app.box.registeredIcons, [7])
        verify(app.box.requestAddItem("Level 7", 7, "cookie") && app.box.requestAddItem("Level 8", 7, ""))
        tryCompare(app.items, "count", 2)
        tryVerify(() => color(app.icons.itemAt(0)) === colors[4000])
        const unknown = createTemporaryObject(imageComponent, test, {source: String(app.icons.itemAt(0).icon).replace("/Nw/", "/NQ/")}) // of 5
        tryCompare(unknown, "status", Image.Ready)
        world.run("box icon 7 none")
        world.run("box icon 7 3000")
        tryVerify(() => color(app.icons.itemAt(0)) === colors[3000] && color(app.icons.itemAt(1)) === colors[3000])
        const item = app.items.item(0)
        compare([item.text, item.cookie, item.iconId], ["Level 7", "cookie", 7])
        verify(app.box.requestRegisterIconFile(9, world.uprightPicture(40000)))
        tryCompare(app.box, "registeredIcons", [7, 9])
        verify(app.box.requestRemoveItem(item.id))
        tryCompare(app.items, "count", 1)
        verify(app.box.requestRemoveAllItems())
        tryCompare(app.items, "count", 0)
        compare(world.refusals(), [])
    }

    Component { id: followedComponent; FollowedContact {} }
    Component { id: boxComponent; ProfileBox {} }

    function test_announcesWhatChangesAndNothingElse() {
        for (const command of ["contact add anna", "contact add bert", "box add one"])
            world.run(command)
        const app = start()
        tryVerify(() => app.contacts.complete && app.items.count === 1)
        const box = createTemporaryObject(boxComponent, test, {context: app.context})
        for (const followed of [app.anna, box, app.contacts, app.items])
            world.follow(followed)
        for (const [commands, announced] of [
            [["contact change anna displayName=Ann"], "contactChanged"],
            [["contact change bert displayName=Bob"], ""],
            [["contact uninstall anna"], "contactChanged"],
            [["contact install anna"], "contactChanged"],
            [["contact uninstall bert"], ""],
            [["contact picture anna 4000"], "contactChanged pictureChanged"],
            [["box add two", "box change item-1 cookie=c", "box remove item-2"],
                "itemAdded item-2 itemUpdated item-1 itemRemoved item-2"],
            [["box icon 3 100", "box icon 3 none"], "iconRegistered 3 registeredIconsChanged registeredIconsChanged"],
            [["away", "contact remove anna", "back"], "contactChanged"],
            [["state NoDataConnection", "state Success"], // there is nothing to be read, and there is again
                "contactChanged registeredIconsChanged contactChanged registeredIconsChanged"]]) {
            commands.forEach(command => world.run(command))
            world.run(`profile personalMessage="after ${commands}"`)
            tryCompare(app, "message", "after " + commands)
            tryVerify(() => world.heard() === announced && nothingLoads(app), 5000, String(commands))
            world.forget()
        }
        app.contacts.context = app.context
        app.anna.handle = "bert"
        app.anna.handle = "bert"
        app.anna.handle = ""
        compare(app.anna.picture, "")
        app.anna.context = app.contacts.context = app.items.context = null
        app.anna.context = null
        app.destroy()
        tryVerify(() => world.heard() === "handleChanged contactChanged pictureChanged handleChanged contactChanged " +
                  "pictureChanged contextChanged contextChanged contactChanged pictureChanged registeredIconsChanged")
    }

    Component { id: ecoComponent; EcoContact {} }

    function test_invitesAndChats() {
        world.run("eco pp-eve eco-eve")
        const app = start()
        const permission = () => app.permissions.permissionValue(Permission.ContactInvitationsAllowed)
        const eco = createTemporaryObject(ecoComponent, test, {context: app.context, ppId: "pp-eve"})
        world.follow(app.utils)
        verify(!eco.chat() && !eco.invitable && permission() === PermissionValue.Denied)
        tryVerify(() => eco.invitable && permission() === PermissionValue.Allowed)
        verify(eco.chat())
        compare(world.asked("requestEcoId"), 1)
        verify(eco.invite(app.profile.displayName, "Join me") && !eco.invitable)
        tryVerify(() => world.asked("sys.socialplatform") === 1)
        eco.lookUp()
        tryVerify(() => eco.status === EcoIdStatus.PendingContactInviteExists && !eco.invitable)
        compare(world.heard(), "ecoIdUpdated pp-eve eco-eve ecoIdStatusUpdated eco-eve Unknown " +
                "ecoIdUpdated pp-eve eco-eve ecoIdStatusUpdated eco-eve PendingContactInviteExists")
        world.run("state NoDataConnection")
        tryVerify(() => eco.ecoId === "" && eco.status === EcoIdStatus.Unknown && !eco.invitable)
        world.run("state Success")
        tryCompare(eco, "status", EcoIdStatus.PendingContactInviteExists)
        eco.context = null
        verify(eco.ecoId === "" && eco.status === EcoIdStatus.Unknown)
        verify(app.utils.sendContactInvitation("eco-new", app.profile.displayName, "Join me"))
        verify(app.utils.invokeChat("eco-new"))
        tryVerify(() => world.asked("sys.socialplatform") === 2 && world.asked("sys.zel.chathandler") === 2)
        world.forget()
        verify(app.utils.requestEcoIdStatus("eco-new"))
        tryVerify(() => world.heard() === "ecoIdStatusUpdated eco-new PendingContactInviteExists")
        eco.ppId = "pp-nobody"
        eco.context = app.context
        verify(app.utils.requestEcoId("pp-none"))
        tryVerify(() => world.heard().endsWith("ecoIdUpdated pp-nobody ecoIdUpdated pp-none"))
        verify(eco.ecoId === "" && !eco.invite("Robin", "Nobody hears") && !eco.chat())
    }
}
