// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

namespace zelcore {

/// What passed between applications and the service, as a file of JSON Lines holds it: a header, then a line for
/// whatever happened.
struct Recording
{
    struct Entry
    {
        enum class Kind {
            Connected,    ///< An application came.
            Disconnected, ///< It went.
            Received,     ///< A record of an application.
            Sent,         ///< A record to it.
            Invoked,      ///< A record of an application to an invocation target.
            Away,         ///< The service went away,
            Back          ///< and returned.
        };

        Kind kind = Kind::Connected;
        qint64 time = 0;     ///< Milliseconds since the recording began.
        int application = 0; ///< 0 where none is known.
        QString uuid = {};   ///< As far as it was known.
        QString target = {}; ///< Of an invocation.
        QByteArray bytes = {};

        bool isRecord() const { return kind == Kind::Received || kind == Kind::Sent || kind == Kind::Invoked; }
        /// Its line of a file, line break included.
        QByteArray line() const;
    };

    QString started;        ///< Date and time, in the form of ISO 8601.
    bool anonymous = false; ///< Whether everything personal has been replaced.
    QList<Entry> entries;

    /// The first line of a file, line break included.
    QByteArray header() const;
    /// All of a file or nothing: empty, with a sentence in \a problem that names file, line and member.
    static std::optional<Recording> load(const QString& path, QString* problem);
    /// A file that is there is left alone: what it holds cannot be had again. Empty, or why not.
    QString save(const QString& path) const;
    /// The line of its file in which the entry of this index stands.
    static qsizetype lineOf(qsizetype entry) { return entry + 2; }
};

} // namespace zelcore
