// SPDX-License-Identifier: Apache-2.0
// What the messages cost: reading records out of one, building one, and keeping a live list, each beside the least that
// the same work could cost.
#include <common/FakePipe.h>
#include <jsonapi/Note.h>

#include <iface/ObservableList.h>
#include <splib/contacts/PlatformContactJsonAdapter.h>
#include <zel/LiveList.h>
#include <zel/LiveMap.h>
#include <zel/PpsJsonSource.h>

#include <device/Decoder.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QRandomGenerator>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// ---- Reading: one list message of 64 KiB, 171 records of 14 members

constexpr int Records = 171;

struct TextMember
{
    const char* key;
    const char* sample;
    bool repeats; ///< from record to record
};

constexpr std::array<TextMember, 11> textMembers = {{{"CountryCode", "NL", true},
                                                     {"TimeZone", "Europe/Paris", true},
                                                     {"appVersion", "2.1.0", true},
                                                     {"avatarId", "0123456789abcdef0123456789abcdef0123", false},
                                                     {"avatarMimeType", "image/png", true},
                                                     {"currentStatus", "in a meeting until ", false},
                                                     {"displayName", "Zo\xc3\xab \xe4\xbd\xa0\xe5\xa5\xbd ", false},
                                                     {"handle", "handle.of.", false},
                                                     {"personalMessage", "on my way home, back at ", false},
                                                     {"ppid", "PP", false},
                                                     {"userId", "user-00", false}}};

QByteArray textOf(int record, const TextMember& member)
{
    return member.repeats ? QByteArray(member.sample) : member.sample + QByteArray::number(record);
}

const QByteArray& contactsText()
{
    static const QByteArray text = [] {
        QByteArray json = "@platform\ndat:json:{\"listChunk\":{\"type\":\"platformUser\",\"id\":\"\",\"elements\":[";
        for (int i = 0; i < Records; ++i) {
            json += i ? ",{" : "{";
            for (const TextMember& member : textMembers)
                json += '"' + QByteArray(member.key) + "\":\"" + textOf(i, member) + "\",";
            json += "\"showBusy\":true,\"platformVersion\":200,\"clientVersion\":" + QByteArray::number(i) + '}';
        }
        return json + "],\"last\":true}}\n";
    }();
    return text;
}

void makeTheStringsAlone(benchmark::State& state)
{
    std::vector<QByteArray> texts;
    for (int i = 0; i < Records; ++i) {
        for (const TextMember& member : textMembers)
            texts.push_back(textOf(i, member));
    }
    for (auto _ : state) {
        std::vector<std::array<QString, textMembers.size()>> records(Records);
        auto text = texts.cbegin();
        for (auto& record : records) {
            for (QString& field : record) {
                field = QString::fromUtf8(text->constData(), text->size());
                ++text;
            }
        }
        benchmark::DoNotOptimize(records.data());
    }
}
BENCHMARK(makeTheStringsAlone);

void decodeContacts(benchmark::State& state)
{
    const QByteArray& text = contactsText();
    zelsplib::PlatformContactJsonAdapter adapter;
    for (auto _ : state) {
        device::Decoder decoder(text);
        if (!decoder.isValid()) {
            state.SkipWithError("the text was refused");
            break;
        }
        pps_decoder_push(decoder.get(), "@platform");
        pps_decoder_push(decoder.get(), "dat");
        zel::PpsJsonSource source(decoder.get());
        const iface::JsonNodeReader root = source.startParsing();
        const iface::JsonArrayReader elements = root["listChunk"].object()["elements"].array();
        std::vector<zelsplib::PlatformContact> records;
        records.reserve(Records);
        for (int i = 0, n = elements.numChildren(); i < n; ++i)
            records.push_back(adapter.jsonToElement(elements[i].object(), zelsplib::PlatformContact()));
        if (records.size() != Records || records.back().getZelVersion() != Records - 1)
            state.SkipWithError("records are missing");
        benchmark::DoNotOptimize(records.data());
    }
    state.counters["bytes"] = double(text.size());
}
BENCHMARK(decodeContacts);

// ---- Writing: an element request of 20 keys

QStringList twentyKeys()
{
    QStringList keys;
    for (int i = 0; i < 20; ++i)
        keys.append(u"contact-key-%1"_s.arg(i, 8, 10, QLatin1Char('0')));
    return keys;
}

void appendTheRequestByHand(benchmark::State& state)
{
    const QStringList keys = twentyKeys();
    for (auto _ : state) {
        std::string text = "dat:json:{\"requestListElements\":{\"cookie\":\"-12345678\",\"elements\":[";
        for (const QString& key : keys) {
            text += "{\"id\":\"";
            const QByteArray utf8 = key.toUtf8();
            for (const char c : utf8) {
                if (c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20)
                    text += '\\';
                text += c;
            }
            text += "\"},";
        }
        text.back() = ']';
        text += ",\"type\":\"contacts\"}}\n";
        benchmark::DoNotOptimize(text.data());
    }
}
BENCHMARK(appendTheRequestByHand);

/// @param withText whether the text is taken out as a QString too, as sending does
void buildTheRequest(benchmark::State& state, bool withText)
{
    const QStringList keys = twentyKeys();
    NoteAdapter adapter;
    for (auto _ : state) {
        const auto request = QSharedPointer<zel::JsonWriter>::create(u"requestListElements"_s, u"zel"_s);
        request->addAttribute(u"cookie"_s, u"-12345678"_s);
        {
            const auto elements = request->addChild(u"elements"_s, zel::JsonWriter::Array);
            for (const QString& key : keys)
                adapter.idToIdJson(key, elements->addChild(QString(), zel::JsonWriter::Object));
        }
        request->addAttribute(u"type"_s, u"contacts"_s);
        if (withText) {
            const QString text = request->toString();
            benchmark::DoNotOptimize(text.size());
        } else {
            benchmark::DoNotOptimize(request->length());
        }
    }
}
BENCHMARK_CAPTURE(buildTheRequest, encoded, false);
BENCHMARK_CAPTURE(buildTheRequest, sent, true);

// ---- A live list of n items: the cost of a message

struct LoadedList
{
    using List = zel::LiveList<Note>;

    explicit LoadedList(int count)
        : pipe(QSharedPointer<FakePipe>::create())
        , list(List::create(QSharedPointer<zel::ListApiMultiplexer>::create(pipe),
                            QSharedPointer<NoteAdapter>::create(), u"notes"_s, QString()))
        , random(1)
        , items(count)
    {
        say("listAll", {});
        for (int i = 0; i < items; i += 200) {
            QByteArray elements;
            for (int j = i; j < qMin(i + 200, items); ++j)
                elements += (j > i ? "," : "") + element(j, 0);
            say("listChunk", elements, i + 200 >= items);
        }
        list->locateItem(QString());
    }

    static QByteArray element(int id, int text)
    {
        return "{\"id\":\"" + QByteArray::number(id) + "\",\"text\":\"" + QByteArray::number(text) + "\"}";
    }
    void say(const char* name, const QByteArray& elements, bool last = false)
    {
        pipe->inject(QByteArray("{\"") + name + "\":{\"type\":\"notes\",\"id\":\"\",\"elements\":[" + elements +
                     (last ? "],\"last\":true}}" : "]}}"));
    }

    QSharedPointer<FakePipe> pipe;
    List::Pointer list;
    QRandomGenerator random;
    const int items;
};

void changeAtRandomPlaces(benchmark::State& state)
{
    LoadedList loaded(int(state.range(0)));
    int text = 0;
    for (auto _ : state)
        loaded.say("listChange", LoadedList::element(loaded.random.bounded(loaded.items), ++text));
}
BENCHMARK(changeAtRandomPlaces)->Arg(1000)->Arg(10000)->Arg(50000);

void removeAtRandomPlacesAndAdd(benchmark::State& state)
{
    LoadedList loaded(int(state.range(0)));
    for (auto _ : state) {
        const QByteArray element = LoadedList::element(loaded.random.bounded(loaded.items), 0);
        loaded.say("listRemove", element);
        loaded.say("listAdd", element);
    }
}
BENCHMARK(removeAtRandomPlacesAndAdd)->Arg(1000)->Arg(10000)->Arg(50000);

/// The move of memory alone that taking an item out of the middle of a list is.
void moveTheItemsAlone(benchmark::State& state)
{
    const int items = int(state.range(0));
    QList<Note> list(items);
    QRandomGenerator random(1);
    for (auto _ : state) {
        list.removeAt(random.bounded(items - 1));
        list.append(Note());
    }
}
BENCHMARK(moveTheItemsAlone)->Arg(1000)->Arg(10000)->Arg(50000);

void loadAndEmpty(benchmark::State& state)
{
    const int items = int(state.range(0));
    for (auto _ : state) {
        LoadedList loaded(items);
        std::vector<int> ids(static_cast<size_t>(items));
        for (int i = 0; i < items; ++i)
            ids[size_t(i)] = i;
        std::shuffle(ids.begin(), ids.end(), loaded.random);
        for (size_t i = 0; i < ids.size(); i += 200) {
            QByteArray elements;
            for (size_t j = i; j < qMin(i + 200, ids.size()); ++j)
                elements += (j > i ? "," : "") + LoadedList::element(ids[j], 0);
            loaded.say("listRemove", elements);
        }
    }
    state.SetItemsProcessed(state.iterations() * items);
}
BENCHMARK(loadAndEmpty)->Arg(1000)->Arg(10000)->Arg(50000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
