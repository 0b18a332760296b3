// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

namespace zelcore::wire {

/// What applications read at once; whatever a record holds beyond is lost to them.
constexpr qsizetype largestRecord = 65536;
/// A list element of at most this many bytes fits a message together with everything around it.
constexpr qsizetype largestElement = largestRecord - 4096;
/// Characters of base64 text in one stream message; whole quadruples, so that each can be decoded on its own.
constexpr qsizetype streamChunk = 20480;

/// One message of an application.
struct Message
{
    QString type;
    QJsonObject body;
    QByteArray json; ///< The whole text, for whoever shows it.
};

/// The record that carries a message's JSON text to an application.
QByteArray record(const QByteArray& json);

/// {"TYPE":BODY}
QByteArray envelope(QLatin1String type, const QByteArray& body);

/// Reads the message in a record of either direction. On failure empty, with a sentence in \a problem.
std::optional<Message> read(const QByteArray& record, QString* problem);

/// Reads an application's record. On failure empty, with a sentence in \a problem.
std::optional<Message> parse(const QByteArray& record, QString* problem);

/// The JSON text of an object, without blanks.
QByteArray text(const QJsonObject& object);
/// A string as JSON text, quotes included.
QByteArray text(const QString& string);

/// Bodies {"elements":[...],"type":...,"id":""} that hold \a elements in order, each small enough for one record.
/// There is always at least one. With \a markLast the last of them says "last": true.
QList<QByteArray> packElements(const QList<QByteArray>& elements, const QString& listType, bool markLast);

/// The bodies of the "stream" messages that carry \a data; none for no data.
QList<QByteArray> packStream(const QString& streamId, const QByteArray& data);

} // namespace zelcore::wire
