// SPDX-License-Identifier: Apache-2.0
#include <simulator/recordings/Recording.h>

#include <simulator/recordings/Recorder.h>
#include <simulator/scenarios/MemberReader.h>
#include <simulator/wire/InvocationTargets.h>

#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

#include <algorithm>
#include <array>
#include <limits>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

const QString formatName = u"zelcore-recording"_s;
constexpr qint64 formatVersion = 1;
constexpr qint64 latest = qint64(1) << 53; // what JSON takes for a whole number everywhere

using Entry = Recording::Entry;
using Kind = Entry::Kind;

struct KindName
{
    Kind kind;
    QLatin1String name;
};

constexpr std::array<KindName, 7> kinds{{{Kind::Connected, "connected"_L1},
                                         {Kind::Disconnected, "disconnected"_L1},
                                         {Kind::Received, "received"_L1},
                                         {Kind::Sent, "sent"_L1},
                                         {Kind::Invoked, "invoked"_L1},
                                         {Kind::Away, "away"_L1},
                                         {Kind::Back, "back"_L1}}};

QByteArray textLine(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

Kind readKind(MemberReader& reader)
{
    const QString name = reader.text(u"kind"_s);
    const auto found =
        std::find_if(kinds.cbegin(), kinds.cend(), [&](const KindName& row) { return row.name == name; });
    if (found == kinds.cend())
        reader.complain(u"kind"_s, u"is no kind that there is"_s);
    return found == kinds.cend() ? Kind::Away : found->kind;
}

QByteArray readBytes(MemberReader& reader)
{
    if (!reader.has(u"base64"_s))
        return reader.text(u"text"_s).toUtf8();
    const QByteArray decoded =
        QByteArray::fromBase64(reader.text(u"base64"_s).toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (decoded.isEmpty())
        reader.complain(u"base64"_s, u"is no base64 text"_s);
    return decoded;
}

void readHeader(MemberReader reader, Recording* recording)
{
    if (reader.word(u"format"_s) != formatName)
        reader.complain(u"format"_s, u"is not \"%1\": this is no recording"_s.arg(formatName));
    const qint64 version = reader.number(u"version"_s, 1, std::numeric_limits<int>::max());
    if (version != formatVersion)
        reader.complain(u"version"_s, u"is %1; this simulator reads %2"_s.arg(version).arg(formatVersion));
    recording->started = reader.text(u"started"_s);
    if (!QDateTime::fromString(recording->started, Qt::ISODateWithMs).isValid())
        reader.complain(u"started"_s, u"is no time"_s);
    const QString anonymous = reader.word(u"anonymous"_s);
    recording->anonymous = anonymous == "on"_L1;
    if (!recording->anonymous && anonymous != "off"_L1)
        reader.complain(u"anonymous"_s, u"is neither true nor false"_s);
    reader.end();
}

/// What the lines so far have come to.
struct Situation
{
    QList<int> present; ///< The applications that are connected.
    bool isAway = false;
};

void readEntry(MemberReader reader, Situation* now, Recording* recording)
{
    Entry entry;
    entry.kind = readKind(reader);
    entry.time = reader.number(u"time"_s, 0, latest);
    if (!recording->entries.isEmpty() && entry.time < recording->entries.last().time)
        reader.complain(u"time"_s, u"is before that of the line above"_s);
    const bool isOfService = entry.kind == Kind::Away || entry.kind == Kind::Back;
    if (!isOfService)
        entry.application =
            int(reader.number(u"application"_s, entry.kind == Kind::Invoked ? 0 : 1, std::numeric_limits<int>::max()));
    if (reader.has(u"uuid"_s))
        entry.uuid = reader.text(u"uuid"_s);
    if (entry.kind == Kind::Invoked)
        entry.target = reader.text(u"target"_s);
    if (entry.kind == Kind::Invoked && !InvocationTargets::names().contains(entry.target))
        reader.complain(u"target"_s, u"is none of %1"_s.arg(InvocationTargets::names().join(", "_L1)));
    if (entry.isRecord())
        entry.bytes = readBytes(reader);
    if (isOfService && (entry.kind == Kind::Away) == now->isAway)
        reader.complain(u"kind"_s, now->isAway ? u"cannot be: the service is away"_s : u"cannot be: it is not away"_s);
    now->isAway = isOfService ? entry.kind == Kind::Away : now->isAway;
    const bool isPresent = now->present.contains(entry.application);
    if (entry.kind == Kind::Connected && isPresent)
        reader.complain(u"application"_s, u"names one that is connected already"_s);
    else if (entry.kind != Kind::Connected && entry.kind != Kind::Invoked && !isOfService && !isPresent)
        reader.complain(u"application"_s, u"names one that is not connected"_s);
    if (entry.kind == Kind::Connected)
        now->present.append(entry.application);
    else if (entry.kind == Kind::Disconnected)
        now->present.removeOne(entry.application);
    reader.end();
    recording->entries.append(entry);
}

/// What is wrong with a line by itself; its members otherwise.
QJsonObject readLine(const QByteArray& line, MemberProblem* problem)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(line, &error);
    if (!line.endsWith('\n'))
        problem->what = u"is cut; without it the rest can be read"_s;
    else if (error.error != QJsonParseError::NoError)
        problem->what = u"is no JSON object (%1)"_s.arg(error.errorString());
    else if (!document.isObject())
        problem->what = u"is no JSON object"_s;
    return document.object();
}

} // namespace

QByteArray Recording::Entry::line() const
{
    const auto named =
        std::find_if(kinds.cbegin(), kinds.cend(), [this](const KindName& row) { return row.kind == kind; });
    QJsonObject object{{u"time"_s, time}, {u"kind"_s, named->name}};
    if (application > 0 || kind == Kind::Invoked)
        object.insert(u"application"_s, application);
    if (!uuid.isEmpty())
        object.insert(u"uuid"_s, uuid);
    if (kind == Kind::Invoked)
        object.insert(u"target"_s, target);
    if (isRecord()) {
        const QString text = QString::fromUtf8(bytes);
        const bool isText = text.toUtf8() == bytes;
        object.insert(isText ? u"text"_s : u"base64"_s, isText ? text : QString::fromLatin1(bytes.toBase64()));
    }
    return textLine(object);
}

QByteArray Recording::header() const
{
    return textLine({{u"format"_s, formatName},
                     {u"version"_s, formatVersion},
                     {u"started"_s, started},
                     {u"anonymous"_s, anonymous}});
}

std::optional<Recording> Recording::load(const QString& path, QString* problem)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *problem = u"%1: %2"_s.arg(path, file.errorString());
        return std::nullopt;
    }
    Recording recording;
    Situation now;
    MemberProblem wrong;
    if (file.atEnd())
        wrong.what = u"is missing: the file is empty"_s;
    qsizetype line = 1;
    for (; wrong.what.isEmpty() && !file.atEnd(); ++line) {
        const QJsonObject members = readLine(file.readLine(), &wrong);
        const MemberReader reader(members, QString(), &wrong);
        if (line == 1)
            readHeader(reader, &recording);
        else
            readEntry(reader, &now, &recording);
    }
    if (wrong.what.isEmpty())
        return recording;
    *problem = u"%1: line %2: %3"_s.arg(path, QString::number(qMax<qsizetype>(1, line - 1)), wrong.sentence());
    return std::nullopt;
}

QString Recording::save(const QString& path) const
{
    Recorder recorder;
    QString problem = recorder.open(path, *this);
    for (qsizetype i = 0; i < entries.size() && problem.isEmpty(); ++i)
        problem = recorder.write(entries.at(i));
    return problem;
}

} // namespace zelcore
