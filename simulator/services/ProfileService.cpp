// SPDX-License-Identifier: Apache-2.0
#include <simulator/services/ProfileService.h>

#include <simulator/world/PersonJson.h>
#include <simulator/wire/Wire.h>

#include <QtCore/QJsonArray>
#include <QtCore/QRegularExpression>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

bool isHash(const QString& text)
{
    static const QRegularExpression form(u"\\A[0-9a-f]{40}\\z"_s);
    return form.match(text).hasMatch();
}

/// An application that announces pictures and never sends them must not fill the memory.
constexpr qsizetype mostExpected = 32;
const QString tooManyItems = u"too many items wait for this icon"_s;
const QString iconStream = u"newProfileBoxImage-"_s;
const QString tooManyExpected = u"too many announced pictures have not been sent yet"_s;

const QString boxIsOff = u"the user does not let applications use the profile box"_s;

} // namespace

QString ProfileService::requestChange(Session& session, const QJsonObject& body)
{
    const QString list = textOf(body, "type"_L1);
    const QJsonValue elements = body.value("elements"_L1);
    if (list != Lists::global)
        return u"applications may not change \"%1\""_s.arg(list.left(40));
    if (!elements.isArray())
        return u"\"elements\" is missing or no array"_s;

    QString problem;
    const QJsonArray array = elements.toArray();
    for (const QJsonValue element : array) {
        const QJsonObject object = element.toObject();
        const QString name = object.value("name"_L1).toString();
        if (name != Lists::platformProfile)
            problem = u"applications may not change \"%1\""_s.arg(name.left(40));
        else if (!object.value("value"_L1).isObject())
            problem = answerChange(session, u"\"value\" is missing or no object"_s);
        else
            problem = changeProfile(session, object.value("value"_L1).toObject());
        if (!problem.isEmpty())
            break;
    }
    return problem;
}

QString ProfileService::mergedProfile(const QJsonObject& change, Person* merged) const
{
    const Person& current = m_context.world.profile();
    *merged = current;
    const QString problem = mergePerson(change, *merged);
    if (!problem.isEmpty())
        return problem;
    // What the messaging service itself gave the user is not the applications' to change.
    if (merged->userId != current.userId || merged->handle != current.handle || merged->ppId != current.ppId)
        return u"\"userId\", \"handle\" and \"ppid\" cannot be changed"_s;
    if (merged->avatarId.isEmpty())
        merged->avatarMimeType.clear();
    else if (merged->avatarId != current.avatarId && !isHash(merged->avatarId))
        return u"\"avatarId\" is no SHA-1"_s;
    return World::recordProblem(*merged);
}

QString ProfileService::changeProfile(Session& session, const QJsonObject& change)
{
    Person merged;
    const QString problem = mergedProfile(change, &merged);
    if (!problem.isEmpty())
        return answerChange(session, problem);
    const QString& hash = merged.avatarId;
    if (hash.isEmpty() || hash == m_context.world.profile().avatarId || m_context.world.hasPicture(hash))
        return applyProfile(session, change);
    if (session.expected.size() >= mostExpected)
        return answerChange(session, tooManyExpected);

    session.expected.insert(hash, ExpectedPicture{hash, QString(), change});
    m_context.outbox.send(session.client, "requestNewAvatarImage"_L1, wire::text(QJsonObject{{u"streamId"_s, hash}}));
    return {};
}

QString ProfileService::applyProfile(const Session& session, const QJsonObject& change)
{
    Person merged;
    const QString problem = answerChange(session, mergedProfile(change, &merged));
    return problem.isEmpty() ? m_context.world.setProfile(merged) : problem;
}

/// The answer goes out before the change is announced, as whoever asked expects it.
QString ProfileService::answerChange(const Session& session, const QString& problem)
{
    QJsonObject answer{{u"status"_s, problem.isEmpty() ? u"Success"_s : u"Failure"_s}};
    if (!problem.isEmpty())
        answer.insert(u"error"_s, problem);
    m_context.outbox.send(session.client, "profileChangeResponse"_L1, wire::text(answer));
    return problem;
}

QString ProfileService::createBoxItem(Session& session, const QJsonObject& body)
{
    const QJsonValue iconId = body.value("imageId"_L1);
    if (!iconId.isUndefined() && !iconId.isString())
        return u"\"imageId\" is no string"_s;
    BoxItem item{QString(), textOf(body, "text"_L1), textOf(body, "cookie"_L1), iconId.toString()};
    World& world = m_context.world;
    if (!world.permissions().showAppBox)
        return boxIsOff;
    // An application may register an icon and use it in one go; the item is there as soon as the icon is.
    const Box& box = m_context.lists.box(session);
    ExpectedPicture* coming = box.icon(item.iconId) ? nullptr : expectedIcon(session, item.iconId);
    if (!coming)
        return world.addBoxItem(item, m_context.lists.boxOwner(session));
    const QString problem = coming->items.size() < mostExpected ? box.itemProblem(item, true) : tooManyItems;
    if (problem.isEmpty())
        coming->items.append(item);
    return problem;
}

ExpectedPicture* ProfileService::expectedIcon(const Session& asking, const QString& iconId) const
{
    const QString owner = m_context.lists.boxOwner(asking);
    for (const auto& [client, session] : m_context.sessions) {
        const auto expected = session->expected.find(iconStream + iconId);
        if (expected != session->expected.end() && m_context.lists.boxOwner(*session) == owner)
            return &*expected;
    }
    return nullptr;
}

QString ProfileService::createBoxIcon(Session& session, const QJsonObject& body)
{
    ExpectedPicture picture{textOf(body, "imageHash"_L1), textOf(body, "imageId"_L1), {}};
    if (!m_context.world.permissions().showAppBox)
        return boxIsOff;
    if (!isHash(picture.hash))
        return u"\"imageHash\" is no SHA-1"_s;
    const QString problem = session.expected.size() < mostExpected
                                ? m_context.lists.box(session).iconProblem(picture.iconId)
                                : tooManyExpected;
    if (!problem.isEmpty())
        return problem;

    const QString streamId = iconStream + picture.iconId;
    picture.items = session.expected.value(streamId).items; // of the same request, when it is repeated
    session.expected.insert(streamId, picture);
    m_context.outbox.send(session.client, "requestNewProfileBoxImage"_L1,
                          wire::text(QJsonObject{{u"imageId"_s, picture.iconId}, {u"streamId"_s, streamId}}));
    return {};
}

QString ProfileService::stream(Session& session, const QJsonObject& body)
{
    const QString id = textOf(body, "id"_L1);
    const QString value = textOf(body, "value"_L1);
    const auto expected = session.expected.find(id);
    if (expected == session.expected.end())
        return u"nobody asked for the stream \"%1\""_s.arg(id.left(60));

    const bool isLast = body.value("last"_L1).toBool();
    const auto decoded = QByteArray::fromBase64Encoding(value.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    QString problem;
    if (!decoded)
        problem = u"\"value\" is not base64 text"_s;
    else if (value.size() > wire::streamChunk)
        problem = u"a piece of %1 characters; at most %2"_s.arg(value.size()).arg(wire::streamChunk);
    if (problem.isEmpty()) {
        expected->bytes += decoded.decoded;
        problem = World::pictureProblem(expected->bytes);
    }
    if (problem.isEmpty() && isLast && World::hashOf(expected->bytes) != expected->hash)
        problem = u"the picture's bytes do not match the announced SHA-1"_s;
    if (problem.isEmpty() && !isLast)
        return {};
    const ExpectedPicture picture = session.expected.take(id);
    if (problem.isEmpty())
        return finish(session, picture);
    return picture.iconId.isEmpty() ? answerChange(session, problem) : problem;
}

QString ProfileService::finish(const Session& session, const ExpectedPicture& picture)
{
    if (picture.iconId.isEmpty()) {
        m_context.world.keepPicture(picture.bytes);
        return applyProfile(session, picture.profile);
    }
    const QString owner = m_context.lists.boxOwner(session);
    QString problem = m_context.world.addBoxIcon(picture.iconId, picture.bytes, owner);
    for (BoxItem item : picture.items) {
        if (problem.isEmpty())
            problem = m_context.world.addBoxItem(item, owner);
    }
    return problem;
}

QString ProfileService::requestUserPicture(Session& session, const QJsonObject& body)
{
    const QString userId = textOf(body, "userId"_L1);
    const QString streamId = textOf(body, "streamId"_L1);
    const World& world = m_context.world;
    const Person* person = userId == world.profile().userId ? &world.profile() : world.contact(userId);
    if (!person)
        return u"nobody has the user id \"%1\""_s.arg(userId.left(80));
    // The stream is named after the picture that was seen last, which need not be the one of now.
    const QByteArray data = world.picture(world.hasPicture(streamId) ? streamId : person->avatarId);
    if (data.isEmpty())
        return u"\"%1\" has no picture"_s.arg(userId.left(80));
    sendPicture(session, streamId, data);
    return {};
}

QString ProfileService::requestBoxIcon(Session& session, const QJsonObject& body)
{
    const QString iconId = textOf(body, "imageId"_L1);
    const BoxIcon* icon = m_context.lists.box(session).icon(iconId);
    if (!icon)
        return u"no icon has the id \"%1\""_s.arg(iconId.left(40));
    sendPicture(session, textOf(body, "streamId"_L1), m_context.world.picture(icon->hash));
    return {};
}

void ProfileService::sendPicture(const Session& session, const QString& streamId, const QByteArray& data)
{
    for (const QByteArray& body : wire::packStream(streamId, data))
        m_context.outbox.send(session.client, "stream"_L1, body);
}

} // namespace zelcore
