// SPDX-License-Identifier: Apache-2.0
#include <simulator/ProfileService.h>

#include <simulator/PersonJson.h>
#include <simulator/Wire.h>

#include <QtCore/QJsonArray>
#include <QtCore/QRegularExpression>

namespace zelcore {

namespace {

bool isHash(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("\\A[0-9a-f]{40}\\z"));
    return form.match(text).hasMatch();
}

/// An application that announces pictures and never sends them must not fill the memory.
constexpr qsizetype mostExpected = 32;
const QString tooManyExpected = QStringLiteral("too many announced pictures have not been sent yet");

const QString boxIsOff = QStringLiteral("the user does not let applications use the profile box");

} // namespace

QString ProfileService::requestChange(Session& session, const QJsonObject& body)
{
    QString problem;
    QString list;
    if (!readString(body, QLatin1String("type"), &list, &problem))
        return problem;
    const QJsonValue elements = body.value(QLatin1String("elements"));
    if (list != Lists::global)
        return QStringLiteral("applications may not change \"%1\"").arg(list.left(40));
    if (!elements.isArray())
        return QStringLiteral("\"elements\" is missing or no array");

    const QJsonArray array = elements.toArray();
    for (const QJsonValue element : array) {
        const QJsonObject object = element.toObject();
        const QString name = object.value(QLatin1String("name")).toString();
        if (name != Lists::platformProfile)
            problem = QStringLiteral("applications may not change \"%1\"").arg(name.left(40));
        else if (!object.value(QLatin1String("value")).isObject())
            problem = answerChange(session, QStringLiteral("\"value\" is missing or no object"));
        else
            problem = changeProfile(session, object.value(QLatin1String("value")).toObject());
        if (!problem.isEmpty())
            break;
    }
    return problem;
}

QString ProfileService::mergedProfile(const QJsonObject& change, Person* merged) const
{
    const Person& current = m_desk.world.profile();
    *merged = current;
    const QString problem = mergePerson(change, *merged);
    if (!problem.isEmpty())
        return problem;
    // What the messaging service itself gave the user is not the applications' to change.
    if (merged->userId != current.userId || merged->handle != current.handle || merged->ppId != current.ppId)
        return QStringLiteral("\"userId\", \"handle\" and \"ppid\" cannot be changed");
    if (merged->avatarId.isEmpty())
        merged->avatarMimeType.clear();
    else if (merged->avatarId != current.avatarId && !isHash(merged->avatarId))
        return QStringLiteral("\"avatarId\" is no SHA-1");
    return World::recordProblem(*merged);
}

QString ProfileService::changeProfile(Session& session, const QJsonObject& change)
{
    Person merged;
    const QString problem = mergedProfile(change, &merged);
    if (!problem.isEmpty())
        return answerChange(session, problem);
    const QString& hash = merged.avatarId;
    if (hash.isEmpty() || hash == m_desk.world.profile().avatarId || m_desk.world.hasPicture(hash))
        return applyProfile(session, change);
    if (session.expected.size() >= mostExpected)
        return answerChange(session, tooManyExpected);

    session.expected.insert(hash, ExpectedPicture{hash, QString(), change, QByteArray()});
    m_desk.outbox.send(session.client, QLatin1String("requestNewAvatarImage"),
                       wire::text(QJsonObject{{QStringLiteral("streamId"), hash}}));
    return {};
}

QString ProfileService::applyProfile(const Session& session, const QJsonObject& change)
{
    Person merged;
    const QString problem = answerChange(session, mergedProfile(change, &merged));
    return problem.isEmpty() ? m_desk.world.setProfile(merged) : problem;
}

/// The answer goes out before the change is announced, as whoever asked expects it.
QString ProfileService::answerChange(const Session& session, const QString& problem)
{
    QJsonObject answer{
        {QStringLiteral("status"), problem.isEmpty() ? QStringLiteral("Success") : QStringLiteral("Failure")}};
    if (!problem.isEmpty())
        answer.insert(QStringLiteral("error"), problem);
    m_desk.outbox.send(session.client, QLatin1String("profileChangeResponse"), wire::text(answer));
    return problem;
}

QString ProfileService::createBoxItem(Session&, const QJsonObject& body)
{
    BoxItem item;
    QString problem;
    readString(body, QLatin1String("text"), &item.text, &problem);
    readString(body, QLatin1String("cookie"), &item.cookie, &problem);
    if (body.contains(QLatin1String("imageId")))
        readString(body, QLatin1String("imageId"), &item.iconId, &problem);
    if (!problem.isEmpty())
        return problem;
    return m_desk.world.permissions().showAppBox ? m_desk.world.addBoxItem(item) : boxIsOff;
}

QString ProfileService::createBoxIcon(Session& session, const QJsonObject& body)
{
    ExpectedPicture picture;
    QString problem;
    readString(body, QLatin1String("imageHash"), &picture.hash, &problem);
    if (!readString(body, QLatin1String("imageId"), &picture.iconId, &problem))
        return problem;
    if (!m_desk.world.permissions().showAppBox)
        return boxIsOff;
    if (!isHash(picture.hash))
        return QStringLiteral("\"imageHash\" is no SHA-1");
    problem = session.expected.size() < mostExpected ? m_desk.world.boxIconProblem(picture.iconId) : tooManyExpected;
    if (!problem.isEmpty())
        return problem;

    const QString streamId = QStringLiteral("newProfileBoxImage-") + picture.iconId;
    session.expected.insert(streamId, picture);
    m_desk.outbox.send(
        session.client, QLatin1String("requestNewProfileBoxImage"),
        wire::text(QJsonObject{{QStringLiteral("imageId"), picture.iconId}, {QStringLiteral("streamId"), streamId}}));
    return {};
}

QString ProfileService::stream(Session& session, const QJsonObject& body)
{
    QString id;
    QString value;
    QString problem;
    readString(body, QLatin1String("id"), &id, &problem);
    if (!readString(body, QLatin1String("value"), &value, &problem))
        return problem;
    const auto expected = session.expected.find(id);
    if (expected == session.expected.end())
        return QStringLiteral("nobody asked for the stream \"%1\"").arg(id.left(60));

    const auto decoded = QByteArray::fromBase64Encoding(value.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        problem = QStringLiteral("\"value\" is not base64 text");
    else if (value.size() > wire::streamChunk)
        problem = QStringLiteral("a piece of %1 characters; at most %2").arg(value.size()).arg(wire::streamChunk);
    else if (expected->bytes.size() + decoded.decoded.size() > World::largestPicture)
        problem = QStringLiteral("a picture of more than %1 bytes").arg(World::largestPicture);
    if (!problem.isEmpty()) {
        const ExpectedPicture spoiled = session.expected.take(id);
        return spoiled.iconId.isEmpty() ? answerChange(session, problem) : problem;
    }
    expected->bytes += decoded.decoded;
    if (!body.value(QLatin1String("last")).toBool())
        return {};
    return finish(session, session.expected.take(id));
}

QString ProfileService::finish(const Session& session, const ExpectedPicture& picture)
{
    const bool isOwnPicture = picture.iconId.isEmpty();
    QString problem = World::pictureProblem(picture.bytes);
    if (problem.isEmpty() && World::hashOf(picture.bytes) != picture.hash)
        problem = QStringLiteral("the picture's bytes do not match the announced SHA-1");
    if (!problem.isEmpty())
        return isOwnPicture ? answerChange(session, problem) : problem;
    if (!isOwnPicture)
        return m_desk.world.addBoxIcon(picture.iconId, picture.bytes);
    m_desk.world.keepPicture(picture.bytes);
    return applyProfile(session, picture.profile);
}

QString ProfileService::requestUserPicture(Session& session, const QJsonObject& body)
{
    QString userId;
    QString streamId;
    QString problem;
    readString(body, QLatin1String("userId"), &userId, &problem);
    if (!readString(body, QLatin1String("streamId"), &streamId, &problem))
        return problem;
    const World& world = m_desk.world;
    const Person* person = userId == world.profile().userId ? &world.profile() : world.contact(userId);
    if (!person)
        return QStringLiteral("nobody has the user id \"%1\"").arg(userId.left(80));
    // The stream is named after the picture that was seen last, which need not be the one of now.
    const QByteArray data = world.picture(world.hasPicture(streamId) ? streamId : person->avatarId);
    if (data.isEmpty())
        return QStringLiteral("\"%1\" has no picture").arg(userId.left(80));
    sendPicture(session, streamId, data);
    return {};
}

QString ProfileService::requestBoxIcon(Session& session, const QJsonObject& body)
{
    QString streamId;
    QString iconId;
    QString problem;
    readString(body, QLatin1String("streamId"), &streamId, &problem);
    if (!readString(body, QLatin1String("imageId"), &iconId, &problem))
        return problem;
    const BoxIcon* icon = m_desk.world.boxIcon(iconId);
    if (!icon)
        return QStringLiteral("no icon has the id \"%1\"").arg(iconId.left(40));
    sendPicture(session, streamId, m_desk.world.picture(icon->hash));
    return {};
}

void ProfileService::sendPicture(const Session& session, const QString& streamId, const QByteArray& data)
{
    for (const QByteArray& body : wire::packStream(streamId, data))
        m_desk.outbox.send(session.client, QLatin1String("stream"), body);
}

} // namespace zelcore
