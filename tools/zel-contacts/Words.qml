// SPDX-License-Identifier: Apache-2.0
pragma Singleton
import QtQuick
import ZelPlatform

// What states are called.
QtObject {
    id: words

    readonly property var registration: ({
        [RegistrationState.Allowed]: {
            title: qsTr("One moment"),
            text: qsTr("You are registered. Your profile is on its way.")
        },
        [RegistrationState.Unknown]: {
            title: qsTr("Looking for the messaging service"),
            text: qsTr("It has not said anything yet.")
        },
        [RegistrationState.Unregistered]: {
            title: qsTr("Not registered"),
            text: qsTr("Register to see which of your contacts are here."),
            action: qsTr("Register")
        },
        [RegistrationState.Pending]: {
            title: qsTr("Registering"),
            text: qsTr("This takes a moment. The messaging service may ask you whether it may.")
        },
        [RegistrationState.BlockedByUser]: {
            title: qsTr("Blocked by you"),
            text: qsTr("You have refused this application, or there was no messaging service when it was started. Allow it in the messaging application, and start it again.")
        },
        [RegistrationState.BlockedByTOV]: {
            title: qsTr("Blocked by the service"),
            text: qsTr("The operator of the messaging service has refused this application.")
        },
        [RegistrationState.NoDataConnection]: {
            title: qsTr("No connection"),
            text: qsTr("The device has no network. Try again when it has one."),
            action: qsTr("Try again")
        },
        [RegistrationState.UnexpectedError]: {
            title: qsTr("That did not work"),
            text: qsTr("The messaging service reports an error."),
            action: qsTr("Try again")
        },
        [RegistrationState.InvalidUuid]: {
            title: qsTr("Not known to the service"),
            text: qsTr("The messaging service does not accept this application's identifier."),
            action: qsTr("Try again")
        },
        [RegistrationState.TemporaryError]: {
            title: qsTr("Not just now"),
            text: qsTr("The messaging service cannot register anything for the moment."),
            action: qsTr("Try again")
        },
        [RegistrationState.MaxDownloadsReached]: {
            title: qsTr("Too many users"),
            text: qsTr("As many people as may use this application already do.")
        },
        [RegistrationState.Expired]: {
            title: qsTr("Expired"),
            text: qsTr("This application's registration has run out. A newer version may have one.")
        },
        [RegistrationState.CancelledByUser]: {
            title: qsTr("Cancelled"),
            text: qsTr("You have cancelled the registration."),
            action: qsTr("Try again")
        },
        [RegistrationState.MaxAppsReached]: {
            title: qsTr("Too many applications"),
            text: qsTr("You have as many applications registered as you may. Remove one in the messaging application.")
        },
        [RegistrationState.ZelDisabled]: {
            title: qsTr("Messaging is switched off"),
            text: qsTr("Switch the messaging service on in the device's settings.")
        },
        [RegistrationState.BlockedEnterprisePerimeter]: {
            title: qsTr("Not available at work"),
            text: qsTr("This application cannot be used in the work perimeter of the device.")
        }
    })

    function ofRegistration(state: int) : var {
        return words.registration[state] ?? words.registration[RegistrationState.Unknown]
    }

    // Whether the service is about to say more.
    function isWaiting(state: int) : bool {
        return state === RegistrationState.Unknown || state === RegistrationState.Pending || state === RegistrationState.Allowed
    }

    function ofStatus(status: int) : string {
        return status === UserStatus.Busy ? qsTr("Busy") : qsTr("Available")
    }

    // "Busy: in a meeting"
    function ofPresence(status: int, message: string) : string {
        return message === "" || message === words.ofStatus(status) ? words.ofStatus(status) : qsTr("%1: %2").arg(words.ofStatus(status)).arg(message)
    }

    // Of words that begin with a letter, as far as one character says so: emoji take two.
    function initials(name: string) : string {
        return name.split(/\s+/).filter(word => /^[^\d\s\ud800-\udfff]/.test(word)).slice(0, 2)
            .map(word => word[0].toUpperCase()).join("")
    }
}
