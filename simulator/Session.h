// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QJsonObject>
#include <QtCore/QSet>
#include <QtCore/QString>

namespace zelcore {

/// A picture on its way from an application, asked for because its hash was announced.
struct ExpectedPicture
{
    QString hash;
    QString iconId;      ///< Empty for the own user's picture.
    QJsonObject profile; ///< The change of the profile that waits for the picture.
    QByteArray bytes;    ///< What has arrived.
};

/// One connected application.
struct Session
{
    int client = 0;
    QString uuid;  ///< As it called itself; empty before its registration request.
    QString state; ///< Its registration.
    /// Whether it is known if this is an application that starts or one that comes back: the first record tells.
    bool settled = false;
    /// The lists of which an application that comes back has not been told yet.
    QSet<QString> unannounced;
    QHash<QString, ExpectedPicture> expected; ///< By stream id.
};

} // namespace zelcore
