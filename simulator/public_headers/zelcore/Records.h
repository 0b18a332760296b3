// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace zelcore {

/// A user of the messaging service: a contact, or the device's own user. A plain value; who changes a copy changes
/// nothing until it is given back to the Simulator.
struct Person
{
    QString userId; ///< The service's key of this person; never shown to applications.
    QString handle; ///< What applications call the person by; a person without one counts as not loaded yet.
    QString ppId;
    QString appVersion;
    QString displayName;
    QString personalMessage;
    QString statusMessage;
    QString avatarId; ///< SHA-1 of the picture as lower-case hexadecimal text; empty without a picture.
    QString avatarMimeType;
    QString timeZone;
    QString countryCode;
    int platformVersion = 200;
    bool showBusy = false;
    int clientVersion = 0;

    bool operator==(const Person&) const = default;
};

/// What the user allows an application, and whether the service is set up on the device.
struct Permissions
{
    bool showAppBox = true;
    bool zelInvites = true;
    bool zelSetup = true;

    bool operator==(const Permissions&) const = default;
};

/// One line of text in the user's profile box.
struct BoxItem
{
    QString id;
    QString text;
    QString cookie;
    QString iconId; ///< Decimal text; empty without an icon.

    bool operator==(const BoxItem&) const = default;
};

/// A registered icon of the profile box; Simulator::picture() answers its bytes by the hash.
struct BoxIcon
{
    QString id; ///< Decimal text.
    QString hash;

    bool operator==(const BoxIcon&) const = default;
};

/// An application that is connected.
struct Client
{
    int number = 0;     ///< They count up from 1.
    QString uuid;       ///< As it called itself; empty before its registration request.
    QString state;      ///< Its registration.
    qint64 process = 0; ///< The number of its process; 0 when that is not known.

    bool operator==(const Client&) const = default;
};

/// One record as it passed between an application and the service.
struct WireRecord
{
    enum class Direction { FromApplication, ToApplication };

    qint64 time = 0; ///< Milliseconds since the beginning of 1970; never less than that of the record before.
    int client = 0;  ///< The application's number; 0 for an invocation of a process that is not connected.
    QString uuid;    ///< As the application called itself; empty before its registration request has been read.
    QString target;  ///< The invocation target that took it; empty for the object.
    Direction direction = Direction::FromApplication;
    QByteArray bytes; ///< All of it, framing included.

    bool operator==(const WireRecord&) const = default;
};

} // namespace zelcore
