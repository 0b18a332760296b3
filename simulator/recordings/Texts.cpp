// SPDX-License-Identifier: Apache-2.0
#include <simulator/recordings/Texts.h>

#include <simulator/wire/Wire.h>

#include <QtCore/QHash>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QStringList>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

const QString invocation = u"invocation"_s;
const QString dataMember = u"data"_s;

QJsonValue mapValue(const QJsonValue& value, const TextPlace& place, const TextMap& map)
{
    if (value.isString())
        return map(place, value.toString());
    if (value.isArray()) {
        QJsonArray array;
        for (const QJsonValue element : value.toArray())
            array.append(mapValue(element, {place.type, place.member, place.depth + 1}, map));
        return array;
    }
    if (!value.isObject())
        return value;
    QJsonObject object = value.toObject();
    for (auto member = object.begin(); member != object.end(); ++member)
        member.value() = mapValue(member.value(), {place.type, member.key(), place.depth + 1}, map);
    return object;
}

} // namespace

Meaning meaningOf(const TextPlace& place, const QString& text)
{
    // What is in none of these rows may say anything, and counts as words.
    static const QHash<QString, Meaning> members{
        {u"type"_s, Meaning::Protocol},
        {u"apiType"_s, Meaning::Protocol},
        {u"registrationState"_s, Meaning::Protocol},
        {u"avatarMimeType"_s, Meaning::Protocol},
        {u"appVersion"_s, Meaning::Protocol},
        {u"imageId"_s, Meaning::Protocol}, // a small number that the application made up
        {u"target"_s, Meaning::Protocol},
        {u"action"_s, Meaning::Protocol},
        {u"mimeType"_s, Meaning::Protocol},
        {u"uuid"_s, Meaning::Uuid},
        {u"streamId"_s, Meaning::Stream},
        {u"displayName"_s, Meaning::Name},
        {u"name"_s, Meaning::Name},
        {u"userId"_s, Meaning::Id},
        {u"handle"_s, Meaning::Id},
        {u"ppid"_s, Meaning::Id},
        {u"ecoId"_s, Meaning::Id},
        {u"ecoid"_s, Meaning::Id},
        {u"itemId"_s, Meaning::Id},
        {u"avatarId"_s, Meaning::Id},
        {u"imageHash"_s, Meaning::Id},
        {u"TimeZone"_s, Meaning::Place},
        {u"CountryCode"_s, Meaning::Place}};
    static const QStringList elements{u"permission"_s, u"platformProfile"_s};
    if (place.type == "stream"_L1 && place.depth == 1)
        return place.member == "id"_L1 ? Meaning::Stream : Meaning::Bytes;
    // Another one is an item's, and says what the application likes.
    if (place.member == "cookie"_L1 && place.depth == 1 && place.type != "createProfileBoxItem"_L1)
        return Meaning::Cookie;
    const bool isAnswer = place.type == "profileChangeResponse"_L1 || place.type == "requestEcoIdStatusResponse"_L1;
    if ((place.member == "status"_L1 && isAnswer) || (place.member == "name"_L1 && elements.contains(text)))
        return Meaning::Protocol;
    return members.value(place.member, Meaning::Words);
}

bool isSteady(Meaning meaning)
{
    return meaning != Meaning::Cookie && meaning != Meaning::Stream && meaning != Meaning::Uuid;
}

std::optional<Content> contentOf(const QByteArray& record, bool isInvocation)
{
    QString problem;
    if (!isInvocation) {
        const std::optional<wire::Message> message = wire::read(record, &problem);
        return message ? std::optional(Content{message->type, message->body}) : std::nullopt;
    }
    Content content{invocation, QJsonDocument::fromJson(record).object()};
    const QJsonDocument data = QJsonDocument::fromJson(content.body.value(dataMember).toString().toUtf8());
    if (data.isObject())
        content.body.insert(dataMember, data.object());
    return content.body.isEmpty() ? std::nullopt : std::optional(content);
}

QByteArray withContent(const QByteArray& record, bool isInvocation, const Content& content)
{
    QJsonObject body = content.body;
    if (isInvocation) {
        if (body.value(dataMember).isObject())
            body.insert(dataMember, QString::fromUtf8(wire::text(body.value(dataMember).toObject())));
        return wire::text(body);
    }
    QString problem;
    const std::optional<wire::Message> before = wire::read(record, &problem);
    if (!before)
        return record;
    QByteArray changed = record;
    return changed.replace(record.indexOf(before->json), before->json.size(),
                           wire::text(QJsonObject{{content.type, body}}));
}

Content mapped(const Content& content, const TextMap& map)
{
    return {content.type, mapValue(content.body, {content.type, QString(), 0}, map).toObject()};
}

QString shortened(const QString& text, qsizetype longest)
{
    return text.size() > longest ? text.left(longest) + u'…' : text;
}

QString describe(const QByteArray& record, bool isInvocation)
{
    const std::optional<Content> content = contentOf(record, isInvocation);
    if (!content)
        return u"a record of %1 bytes that is not in the form"_s.arg(record.size());
    return content->type + u' ' + shortened(QString::fromUtf8(wire::text(content->body)), 80);
}

} // namespace zelcore
