// SPDX-License-Identifier: Apache-2.0
import QtQuick
import ZelPlatform

// Everything of the messaging service that the pages show.
Item {
    id: session

    readonly property Context context: Context {
        uuid: "0b6e9a54-51f5-4a2c-9c0a-9a4f0d9f7c11"
        registration: Context.Automatic
    }
    readonly property UserProfile profile: UserProfile { context: session.context }
    readonly property ContactListModel contacts: ContactListModel { context: session.context }
    readonly property ContactFilterModel people: ContactFilterModel { sourceModel: session.contacts }
    readonly property ProfileBox box: ProfileBox { context: session.context }
    readonly property ProfileBoxModel items: ProfileBoxModel { context: session.context }
    readonly property ApplicationPermissions permissions: ApplicationPermissions { context: session.context }

    // Nothing more is to be expected unless something happens.
    readonly property bool settled: context.ready ? contacts.complete
        : !Words.isWaiting(context.registrationState) && context.registrationState !== RegistrationState.Unregistered
}
