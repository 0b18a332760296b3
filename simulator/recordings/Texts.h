// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

#include <functional>
#include <optional>

namespace zelcore {

/// Where a text stands in a message.
struct TextPlace
{
    QString type;   ///< Of the message; a target's name for an invocation.
    QString member; ///< Whose value it is, or an element of.
    int depth = 0;  ///< 1 for the members of the message's body.
};

/// What a text means for who compares recordings or takes out of them what is personal.
enum class Meaning {
    Protocol, ///< One of the words of the protocol, and what else says nothing of anybody.
    Cookie,   ///< By which an answer finds its request; another one each time.
    Stream,   ///< The name of a stream, chosen by who asks.
    Bytes,    ///< A piece of a picture, in base64.
    Uuid,     ///< The application's.
    Id,
    Name,
    Words,
    Place
};

Meaning meaningOf(const TextPlace& place, const QString& text);
/// Whether it is the same however often the same is done by the same people.
bool isSteady(Meaning meaning);

/// What a record says: a message, or a request to an invocation target.
struct Content
{
    QString type;     ///< Of the message; "invocation" for a request.
    QJsonObject body; ///< Where the data of a request is JSON itself, it is an object, not a text.
};

/// Empty when it is not in the form.
std::optional<Content> contentOf(const QByteArray& record, bool isInvocation);
/// \a record with other texts in it, and all else as it is.
QByteArray withContent(const QByteArray& record, bool isInvocation, const Content& content);

using TextMap = std::function<QString(const TextPlace&, const QString&)>;
/// Every text replaced by what \a map makes of it.
Content mapped(const Content& content, const TextMap& map);

/// The beginning of a text that is longer than this.
QString shortened(const QString& text, qsizetype longest);
/// Its name and the beginning of what it says, for people.
QString describe(const QByteArray& record, bool isInvocation);

} // namespace zelcore
