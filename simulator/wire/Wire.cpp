// SPDX-License-Identifier: Apache-2.0
#include <simulator/wire/Wire.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QStringBuilder>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace zelcore::wire {

namespace {

const QByteArray recordHead = QByteArrayLiteral("@platform\ndat:json:");

/// The value of the line "NAME:ENCODING:VALUE"; null when there is no such line.
QByteArray attribute(const QByteArray& record, const QByteArray& nameAndEncoding)
{
    qsizetype start = 0;
    while (start < record.size()) {
        qsizetype end = record.indexOf('\n', start);
        if (end < 0)
            end = record.size();
        const QByteArray line = QByteArray::fromRawData(record.constData() + start, end - start);
        if (line.startsWith(nameAndEncoding)) {
            // Never null, whatever follows the colon.
            const QByteArray value = line.mid(nameAndEncoding.size());
            return value.isEmpty() ? QByteArray("") : QByteArray(value.constData(), value.size());
        }
        start = end + 1;
    }
    return {};
}

} // namespace

QByteArray record(const QByteArray& json)
{
    return recordHead % json % '\n';
}

QByteArray envelope(QLatin1String type, const QByteArray& body)
{
    return "{\"" % QByteArrayView(type.data(), type.size()) % "\":" % body % '}';
}

std::optional<Message> parse(const QByteArray& record, QString* problem)
{
    const QByteArray target = attribute(record, "msg::");
    if (target == "zel")
        return read(record, problem);
    *problem = target.isNull() ? u"a record without \"msg\""_s
                               : u"a record for \"%1\""_s.arg(QString::fromUtf8(target.left(40)));
    return std::nullopt;
}

std::optional<Message> read(const QByteArray& record, QString* problem)
{
    const QByteArray json = attribute(record, "dat:json:");
    if (json.isNull()) {
        *problem = u"a record without \"dat\""_s;
        return std::nullopt;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (!document.isObject()) {
        *problem = u"\"dat\" is no JSON object (%1)"_s.arg(error.errorString());
        return std::nullopt;
    }
    const QJsonObject root = document.object();
    if (root.size() != 1 || !root.begin()->isObject()) {
        *problem = u"a message must be one member that is an object, named by its type"_s;
        return std::nullopt;
    }
    return Message{root.begin().key(), root.begin()->toObject(), json};
}

QByteArray text(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QByteArray text(const QString& string)
{
    // Ids are nearly always plain; tens of thousands of them go through here when a list is asked for.
    const bool plain = std::all_of(string.cbegin(), string.cend(), [](QChar c) {
        return c.unicode() >= 0x20 && c.unicode() < 0x7f && c != u'"' && c != u'\\';
    });
    if (plain)
        return '"' + string.toLatin1() + '"';
    const QByteArray array = QJsonDocument(QJsonArray{string}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2);
}

QList<QByteArray> packElements(const QList<QByteArray>& elements, const QString& listType, bool markLast)
{
    const QByteArray head = QByteArrayLiteral("{\"elements\":[");
    const QByteArray tail = "],\"id\":\"\",\"type\":" + text(listType) + '}';
    const QByteArray lastTail = "],\"id\":\"\",\"last\":true,\"type\":" + text(listType) + '}';
    // What the record's own framing, the message's name and a comma take is far below this.
    const qsizetype room = largestRecord - 256 - lastTail.size();

    QList<QByteArray> bodies;
    QByteArray body = head;
    for (const QByteArray& element : elements) {
        const bool first = body.size() == head.size();
        if (!first && body.size() + element.size() > room) {
            bodies.append(body + tail);
            body.truncate(head.size());
        } else if (!first) {
            body += ',';
        }
        body += element;
    }
    bodies.append(body + (markLast ? lastTail : tail));
    return bodies;
}

QList<QByteArray> packStream(const QString& streamId, const QByteArray& data)
{
    const QByteArray encoded = data.toBase64();
    const QByteArray head = "{\"id\":" + text(streamId) + ",\"value\":\"";
    QList<QByteArray> bodies;
    for (qsizetype start = 0; start < encoded.size(); start += streamChunk) {
        const bool last = start + streamChunk >= encoded.size();
        bodies.append(head + encoded.mid(start, streamChunk) + (last ? "\",\"last\":true}" : "\"}"));
    }
    return bodies;
}

} // namespace zelcore::wire
