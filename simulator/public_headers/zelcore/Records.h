// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace zelcore {

/// A user of the messaging service: a contact, or the device's own user. A plain value; who changes a copy changes
/// nothing until it is given back to the Simulator.
struct Person
{
    QString userId;            ///< The service's key of this person; never shown to applications.
    QString handle;            ///< What applications call the person by; a person without one counts as not loaded yet.
    QString ppId;              ///< The person's identifier across applications; Simulator::ecoId() takes it.
    QString appVersion;        ///< The version of the application that the person runs.
    QString displayName;       ///< The name that the person goes by.
    QString personalMessage;   ///< The line that the person has written about themselves.
    QString statusMessage;     ///< What the person says about being available or busy.
    QString avatarId;          ///< SHA-1 of the picture as lower-case hexadecimal text; empty without a picture.
    QString avatarMimeType;    ///< That of the picture, as "image/png"; empty without a picture.
    QString timeZone;          ///< By name, as "Europe/Berlin"; told as it stands.
    QString countryCode;       ///< As "DE"; told as it stands.
    int platformVersion = 200; ///< The version of the client library on the person's device.
    bool showBusy = false;     ///< Whether the person is busy; available if not.
    int clientVersion = 0;     ///< The version of the messaging service on the person's device.

    /// Whether every member is the same.
    bool operator==(const Person&) const = default;
};

/// What the user allows an application, and whether the service is set up on the device.
struct Permissions
{
    bool showAppBox = true; ///< Applications may use the profile box; what they add to it is refused if not.
    bool zelInvites = true; ///< Applications may invite people to become contacts. They are told, and see to it.
    bool zelSetup = true;   ///< The service is set up on the device. Applications are told; it changes nothing here.

    /// Whether every member is the same.
    bool operator==(const Permissions&) const = default;
};

/// One line of text in the user's profile box.
struct BoxItem
{
    QString id;     ///< Made by the service when the item is added; unique within its box.
    QString text;   ///< 1 to 100 characters with at most two line breaks.
    QString cookie; ///< At most 128 characters for the application's own use.
    QString iconId; ///< Decimal text; empty without an icon.

    /// Whether every member is the same.
    bool operator==(const BoxItem&) const = default;
};

/// A registered icon of the profile box; Simulator::picture() answers its bytes by the hash.
struct BoxIcon
{
    QString id;   ///< Decimal text.
    QString hash; ///< SHA-1 of its bytes as lower-case hexadecimal text.

    /// Whether every member is the same.
    bool operator==(const BoxIcon&) const = default;
};

/// An application that is connected.
struct Client
{
    int number = 0;     ///< They count up from 1.
    QString uuid;       ///< As it called itself; empty before its registration request.
    QString state;      ///< Its registration.
    qint64 process = 0; ///< The number of its process; 0 when that is not known.

    /// Whether every member is the same.
    bool operator==(const Client&) const = default;
};

/// One record as it passed between an application and the service.
struct WireRecord
{
    /// Which way it went.
    enum class Direction {
        FromApplication, ///< To the service, or to an invocation target.
        ToApplication    ///< From the service.
    };

    qint64 time = 0; ///< Milliseconds since the beginning of 1970; never less than that of the record before.
    int client = 0;  ///< The application's number; 0 for an invocation of a process that is not connected.
    QString uuid;    ///< As the application called itself; empty before its registration request has been read.
    QString target;  ///< The invocation target that took it; empty for the object.
    Direction direction = Direction::FromApplication; ///< Of an invocation always FromApplication.
    QByteArray bytes;                                 ///< All of it, framing included.

    /// Whether every member is the same.
    bool operator==(const WireRecord&) const = default;
};

} // namespace zelcore
