// SPDX-License-Identifier: Apache-2.0
#include "ByHand.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QSocketNotifier>

#include <simdjson.h>

#include <cstring>
#include <memory>
#include <utility>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype recordSize = 65536;
constexpr qsizetype keysPerRequest = 20;
constexpr char head[] = "@platform\ndat:json:";

namespace ondemand = simdjson::ondemand;

HandRecord recordOf(const QJsonObject& json)
{
    const auto text = [&json](const char* key) { return json.value(QLatin1String(key)).toString(); };
    HandRecord record;
    record.userId = text("userId");
    record.handle = text("handle");
    record.ppid = text("ppid");
    record.appVersion = text("appVersion");
    record.displayName = text("displayName");
    record.personalMessage = text("personalMessage");
    record.currentStatus = text("currentStatus");
    record.avatarId = text("avatarId");
    record.avatarMimeType = text("avatarMimeType");
    record.timeZone = text("TimeZone");
    record.countryCode = text("CountryCode");
    record.platformVersion = json.value("platformVersion"_L1).toInt();
    record.clientVersion = json.value("clientVersion"_L1).toInt();
    record.showBusy = json.value("showBusy"_L1).toBool();
    return record;
}

QString textOf(ondemand::object& json, std::string_view key)
{
    std::string_view text;
    return json[key].get_string().get(text) ? QString() : QString::fromUtf8(text.data(), qsizetype(text.size()));
}

int numberOf(ondemand::object& json, std::string_view key)
{
    std::int64_t number = 0;
    return json[key].get_int64().get(number) ? 0 : int(number);
}

/// In the order in which the members stand on the wire, so that none is looked for twice.
HandRecord recordOf(ondemand::object& json)
{
    HandRecord record;
    record.countryCode = textOf(json, "CountryCode");
    record.timeZone = textOf(json, "TimeZone");
    record.appVersion = textOf(json, "appVersion");
    record.avatarId = textOf(json, "avatarId");
    record.avatarMimeType = textOf(json, "avatarMimeType");
    record.clientVersion = numberOf(json, "clientVersion");
    record.currentStatus = textOf(json, "currentStatus");
    record.displayName = textOf(json, "displayName");
    record.handle = textOf(json, "handle");
    record.personalMessage = textOf(json, "personalMessage");
    record.platformVersion = numberOf(json, "platformVersion");
    record.ppid = textOf(json, "ppid");
    bool busy = false;
    record.showBusy = !json["showBusy"].get_bool().get(busy) && busy;
    record.userId = textOf(json, "userId");
    return record;
}

void keep(HandTarget& target, HandRecord&& record)
{
    const QString id = record.userId;
    target.records.insert(id, std::move(record));
}

} // namespace

HandDecoder decodeWithQt()
{
    return [](char* text, size_t size, size_t, HandTarget& target) {
        const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromRawData(text, qsizetype(size)));
        const QJsonObject root = document.object();
        const auto chunk = root.constFind("listChunk"_L1);
        if (chunk == root.constEnd())
            return Answer::Other;
        const QJsonObject body = chunk->toObject();
        const QJsonArray elements = body.value("elements"_L1).toArray();
        for (const QJsonValue element : elements) {
            if (target.wantsIds)
                target.ids.append(element.toObject().value("userId"_L1).toString());
            else
                keep(target, recordOf(element.toObject()));
        }
        return body.value("last"_L1).toBool() ? Answer::Last : Answer::Part;
    };
}

HandDecoder decodeWithSimdjson()
{
    return
        [parser = std::make_shared<ondemand::parser>()](char* text, size_t size, size_t capacity, HandTarget& target) {
            ondemand::document document;
            ondemand::object body;
            ondemand::array elements;
            if (parser->iterate(simdjson::padded_string_view(text, size, capacity)).get(document) ||
                document["listChunk"].get_object().get(body) || body["elements"].get_array().get(elements))
                return Answer::Other;
            for (auto element : elements) {
                ondemand::object json;
                if (element.get_object().get(json))
                    continue;
                if (target.wantsIds)
                    target.ids.append(textOf(json, "userId"));
                else
                    keep(target, recordOf(json));
            }
            bool last = false;
            return !body["last"].get_bool().get(last) && last ? Answer::Last : Answer::Part;
        };
}

HandClient::HandClient(int descriptor, HandDecoder decode)
    : m_descriptor(descriptor)
    , m_notifier(std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read))
    , m_decode(std::move(decode))
    , m_buffer(recordSize + qsizetype(simdjson::SIMDJSON_PADDING), '\0')
{
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { read(); });
    send("{\"tpaApi\":{\"apiType\":\"Qt\"}}");
}

HandClient::~HandClient()
{
    m_notifier.reset();
    ::close(m_descriptor);
}

void HandClient::load(std::function<void()> done)
{
    m_done = std::move(done);
    send("{\"requestListAll\":{\"type\":\"platformContact\"}}");
}

void HandClient::send(const QByteArray& json)
{
    const QByteArray record = "msg::zel\ndat:json:" + json + '\n';
    [[maybe_unused]] const ssize_t written = ::write(m_descriptor, record.constData(), size_t(record.size()));
}

void HandClient::read()
{
    const ssize_t size = ::read(m_descriptor, m_buffer.data(), size_t(recordSize));
    constexpr size_t headSize = sizeof head - 1;
    if (size < ssize_t(headSize) || std::memcmp(m_buffer.constData(), head, headSize) != 0)
        return;
    const Answer answer =
        m_decode(m_buffer.data() + headSize, size_t(size) - headSize, size_t(m_buffer.size()) - headSize, m_target);
    if (answer != Answer::Last)
        return;
    m_target.wantsIds = false;
    if (m_requested < m_target.ids.size())
        requestNext();
    else
        m_done();
}

void HandClient::requestNext()
{
    QByteArray request = "{\"requestListElements\":{\"type\":\"platformUser\",\"elements\":[";
    const qsizetype end = qMin(m_requested + keysPerRequest, m_target.ids.size());
    for (; m_requested < end; ++m_requested)
        request += "{\"userId\":\"" + m_target.ids.at(m_requested).toUtf8() + "\"},";
    request.back() = ']';
    send(request + "}}");
}
