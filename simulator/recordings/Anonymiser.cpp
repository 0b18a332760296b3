// SPDX-License-Identifier: Apache-2.0
#include <simulator/recordings/Anonymiser.h>

#include <simulator/world/People.h>
#include <simulator/world/World.h>

#include <QtCore/QMap>
#include <QtCore/QRegularExpression>
#include <QtCore/QUuid>

#include <tuple>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

using Kind = Recording::Entry::Kind;

bool isHash(const QString& text)
{
    static const QRegularExpression form(u"\\A[0-9a-f]{40}\\z"_s);
    return form.match(text).hasMatch();
}

const QByteArray toApplications = "@platform\ndat:json:";
const QByteArray toTheService = "msg::zel\ndat:json:";

/// Nobody can read it, so nobody can say what is personal in it. Its length stays, and whether it was a message.
QByteArray blackened(const QByteArray& record)
{
    const qsizetype kept = record.startsWith(toApplications) ? toApplications.size() : 0;
    return record.left(kept) + QByteArray(record.size() - kept, '#');
}

/// Whether all that a record has around its JSON is what every record has.
bool isPlain(const QByteArray& record)
{
    return record.count('\n') == 2 && record.endsWith("}\n") &&
           (record.startsWith(toApplications + '{') || record.startsWith(toTheService + '{'));
}

} // namespace

Recording Anonymiser::anonymised(Recording recording)
{
    findPictures(recording);
    recording.anonymous = true;
    for (qsizetype i = 0; i < recording.entries.size(); ++i) {
        Recording::Entry& entry = recording.entries[i];
        entry.uuid = replaced(Meaning::Uuid, {}, entry.uuid);
        if (entry.isRecord())
            entry.bytes = anonymised(i, entry);
    }
    return recording;
}

void Anonymiser::findPictures(const Recording& recording)
{
    QMap<std::tuple<int, Kind, QString>, Stream> streams;
    for (qsizetype i = 0; i < recording.entries.size(); ++i) {
        const Recording::Entry& entry = recording.entries.at(i);
        const std::optional<Content> content = contentOf(entry.bytes, false);
        if (!content || content->type != "stream"_L1)
            continue;
        const std::tuple key(entry.application, entry.kind, content->body.value("id"_L1).toString());
        const QByteArray value = content->body.value("value"_L1).toString().toUtf8();
        Stream& stream = streams[key];
        stream.entries.append(i);
        stream.lengths.append(value.size());
        stream.encoded += value;
        if (content->body.value("last"_L1).toBool())
            replacePicture(streams.take(key));
    }
    for (const Stream& unfinished : std::as_const(streams))
        replacePicture(unfinished);
}

void Anonymiser::replacePicture(const Stream& stream)
{
    const QByteArray before = QByteArray::fromBase64(stream.encoded);
    // The same picture always becomes the same other one.
    const QString hash = World::hashOf(before);
    const quint32 seed = m_seeds.value(hash, quint32(m_seeds.size()) + 1);
    m_seeds.insert(hash, seed);
    const QByteArray after = PeopleMaker::picture(int(before.size()), seed);
    m_texts.insert(hash, World::hashOf(after));
    const QString encoded = QString::fromLatin1(after.toBase64()).leftJustified(stream.encoded.size(), u'#');
    qsizetype from = 0;
    for (qsizetype i = 0; i < stream.entries.size(); ++i) {
        m_pieces.insert(stream.entries.at(i), encoded.mid(from, stream.lengths.at(i)));
        from += stream.lengths.at(i);
    }
}

QByteArray Anonymiser::anonymised(qsizetype index, const Recording::Entry& entry)
{
    const bool isInvocation = entry.kind == Kind::Invoked;
    const std::optional<Content> content = contentOf(entry.bytes, isInvocation);
    if (!content || !(isInvocation || isPlain(entry.bytes)))
        return blackened(entry.bytes);
    const auto replace = [&](const TextPlace& place, const QString& text) {
        const Meaning meaning = meaningOf(place, text);
        return meaning == Meaning::Bytes ? m_pieces.value(index) : replaced(meaning, place, text);
    };
    return withContent(entry.bytes, isInvocation, mapped(*content, replace));
}

QString Anonymiser::replaced(Meaning meaning, const TextPlace& place, const QString& text)
{
    if (text.isEmpty() || meaning == Meaning::Protocol || meaning == Meaning::Cookie)
        return text;
    if (meaning == Meaning::Place)
        return place.member == "TimeZone"_L1 ? u"Etc/UTC"_s : u"ZZ"_s;
    QString& instead = m_texts[text];
    if (!instead.isEmpty())
        return instead;
    const QString number = QString::number(m_texts.size());
    if (isHash(text))
        instead = World::hashOf(number.toUtf8());
    else if (!QUuid::fromString(text).isNull())
        instead = QUuid::createUuidV5(QUuid(), number).toString(QUuid::WithoutBraces);
    else if (meaning == Meaning::Name)
        instead = u"Person "_s + number;
    else if (meaning == Meaning::Words)
        instead = (u"words "_s + number).leftJustified(text.size(), u'x'); // how long it is may be what matters
    else
        instead = u"id-"_s + number;
    return instead;
}

} // namespace zelcore
