// SPDX-License-Identifier: Apache-2.0
import ZelCoreDesk

// The device's own user.
PersonForm {
    required property PersonModel user

    person: user
}
