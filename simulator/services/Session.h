// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Records.h>

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QSet>
#include <QtCore/QString>

namespace zelcore {

/// A picture on its way from an application, asked for because its hash was announced.
struct ExpectedPicture
{
    QString hash;
    QString iconId;            ///< Empty for the own user's picture.
    QJsonObject profile;       ///< The change of the profile that waits for the picture.
    QByteArray bytes = {};     ///< What has arrived.
    QList<BoxItem> items = {}; ///< Those that wait for the icon.
};

/// One connected application.
struct Session
{
    int client = 0;
    qint64 process = 0; ///< Whose connection it is, by number: what an application that comes back is known by.
    QString uuid;       ///< As it called itself; empty before its registration request.
    QString state;      ///< Its registration.
    /// Whether it is known if this is an application that starts or one that comes back: the first record tells.
    bool settled = false;
    /// The lists of which an application that comes back has not been told yet.
    QSet<QString> unannounced;
    QHash<QString, ExpectedPicture> expected; ///< By stream id.
};

} // namespace zelcore
