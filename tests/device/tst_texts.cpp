// SPDX-License-Identifier: Apache-2.0
#include <common/FailingAllocations.h>
#include <common/Random.h>
#include <common/SlogCapture.h>
#include <common/TestMain.h>

#include <device/Decoder.h>
#include <device/Encoder.h>
#include <slog/slog.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>
#include <limits>
#include <optional>
#include <thread>
#include <vector>

namespace {

QByteArray bytes(std::string_view text)
{
    return QByteArray(text.data(), qsizetype(text.size()));
}

class Decoder : public device::Decoder
{
public:
    using device::Decoder::Decoder;
    operator pps_decoder_t*() { return get(); }

    bool enter(const char* name) { return pps_decoder_push(get(), name) == PPS_DECODER_OK; }
    bool moveTo(int index) { return pps_decoder_goto_index(get(), index) == PPS_DECODER_OK; }
    std::optional<int> integer(const char* name)
    {
        int value = 0;
        return pps_decoder_get_int(get(), name, &value) == PPS_DECODER_OK ? std::optional(value) : std::nullopt;
    }
    // Null when there is no such string.
    QByteArray string(const char* name)
    {
        std::string_view text;
        if (!device::readString(get(), name, &text))
            return {};
        return text.data()[text.size()] == '\0' ? bytes(text) : "not ended";
    }
    uintptr_t position()
    {
        pps_decoder_state_t state = {0};
        pps_decoder_get_state(get(), &state);
        return state.position;
    }
    bool restore(uintptr_t position)
    {
        const pps_decoder_state_t state = {position};
        return pps_decoder_set_state(get(), &state) == PPS_DECODER_OK;
    }

    // Everything below where it stands, by index and back again.
    QJsonValue contents()
    {
        const uintptr_t here = position();
        const int length = pps_decoder_length(get());
        QList<device::Member> shown;
        const auto show = [](void* members, const device::Member& member) {
            static_cast<QList<device::Member>*>(members)->append(member);
        };
        const bool isShown = device::visitMembers(get(), show, &shown);
        agrees = agrees && here != 0 && length >= 0 && !moveTo(length) && (!isShown || shown.size() == length);
        bool isObject = isShown;
        QJsonArray array;
        QJsonObject object;
        for (int i = 0; i < length; ++i) {
            agrees = agrees && restore(here) && moveTo(i);
            const std::string_view name = device::currentName(get());
            isObject = isObject || name.data();
            const bool isInteger = integer(nullptr).has_value();
            const QJsonValue value = current();
            const bool isToBeShown = value.isString() || value.isBool() || isInteger;
            agrees = agrees && (!isShown || (bytes(shown.at(i).name) == bytes(name) &&
                                             valueOf(shown.at(i)) == (isToBeShown ? value : QJsonValue::Undefined)));
            array.append(value);
            object.insert(QString::fromUtf8(bytes(name)), value);
        }
        restore(here);
        agrees = agrees && (length > 0 || pps_decoder_push(get(), nullptr) == PPS_DECODER_NOT_FOUND) &&
                 ((isObject && length > 0) || pps_decoder_push(get(), "0") == PPS_DECODER_NOT_FOUND);
        return isObject ? QJsonValue(object) : QJsonValue(array);
    }

    bool agrees = true; // whether all ways to the contents do

private:
    // Undefined for what is shown by its name alone.
    static QJsonValue valueOf(const device::Member& member)
    {
        return member.type == device::Member::Text      ? QJsonValue(QString::fromUtf8(bytes(member.text)))
               : member.type == device::Member::Integer ? QJsonValue(double(member.number))
               : member.type == device::Member::Bool    ? QJsonValue(member.number == 1)
                                                        : QJsonValue(QJsonValue::Undefined);
    }
    QJsonValue current()
    {
        double number = 0;
        bool truth = false;
        const bool isNumber = pps_decoder_get_double(get(), nullptr, &number) == PPS_DECODER_OK;
        const bool isBool = pps_decoder_get_bool(get(), nullptr, &truth) == PPS_DECODER_OK;
        const QByteArray text = string(nullptr);
        const bool isContainer = enter(nullptr);
        agrees = agrees && isNumber + isBool + !text.isNull() + isContainer <= 1;
        if (isContainer)
            return contents();
        return isNumber        ? QJsonValue(number)
               : isBool        ? QJsonValue(truth)
               : text.isNull() ? QJsonValue()
                               : QJsonValue(QString::fromUtf8(text));
    }
};

QString randomString(QRandomGenerator& random, bool isName)
{
    constexpr char32_t edges[] = {0,     1,     0x1F,   '"',    '\\',   '/',    0x7F,    0x80,
                                  0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFD, 0xFFFF, 0x10000, 0x10FFFF};
    // Qt's objects sort names by their 16-bit units or by their bytes: only of those below the surrogates alike.
    const int count = isName ? 11 : int(std::size(edges));
    QString text = u""_s; // not null: with such a name beside others, Qt 6.8's object crashes
    for (int i = random.bounded(24); i > 0; --i) {
        const char32_t plain = U' ' + char32_t(random.bounded(95));
        text += QString::fromUcs4(random.bounded(3) > 0 ? &plain : &edges[random.bounded(count)], 1);
    }
    return text;
}

QJsonValue randomValue(QRandomGenerator& random, int depth)
{
    const int kind = random.bounded(depth > 0 ? 6 : 4);
    QJsonArray values;
    QJsonObject members;
    for (int i = kind < 4 ? 0 : random.bounded(6); i > 0; --i) {
        values.append(randomValue(random, depth - 1));
        members.insert(randomString(random, true), values.last());
    }
    switch (kind) {
    case 0:
        return QJsonValue();
    case 1:
        return random.bounded(2) == 0;
    case 2:
        return int(random.generate());
    case 3:
        return randomString(random, false);
    case 4:
        return values;
    default:
        return members;
    }
}

void write(device::Encoder& encoder, device::Text name, const QJsonValue& value)
{
    const QJsonObject members = value.toObject();
    switch (value.type()) {
    case QJsonValue::Bool:
        return encoder.addBool(name, value.toBool());
    case QJsonValue::Double:
        return encoder.addInt(name, value.toInt());
    case QJsonValue::String:
        return encoder.addString(name, value.toString().toUtf8());
    case QJsonValue::Array:
        encoder.startArray(name);
        for (const QJsonValue& each : value.toArray())
            write(encoder, {}, each);
        return encoder.endArray();
    case QJsonValue::Object:
        encoder.startObject(name);
        for (auto it = members.begin(); it != members.end(); ++it)
            write(encoder, it.key().toUtf8() + "", it.value());
        return encoder.endObject();
    default:
        return encoder.addNull(name);
    }
}

// Plays calls, each a name, if any, one of [ ] { } and, for a number, =, and its error: a misuse of this number or, for
// 0, none. Answers them with the errors that there were.
QByteArray play(pps_encoder_t* encoder, const QByteArray& calls)
{
    QByteArrayList played = calls.split(',');
    for (QByteArray& call : played) {
        call.chop(1);
        const QByteArray whole = call.chopped(1);
        const char* const name = whole.isEmpty() ? nullptr : whole.constData();
        call += QByteArray::number(call.endsWith('[')   ? pps_encoder_start_array(encoder, name)
                                   : call.endsWith(']') ? pps_encoder_end_array(encoder)
                                   : call.endsWith('{') ? pps_encoder_start_object(encoder, name)
                                   : call.endsWith('}') ? pps_encoder_end_object(encoder)
                                                        : pps_encoder_add_int(encoder, name, 1));
    }
    return played.join(',');
}

} // namespace

// The object's texts, written by the encoder and read by the decoder.
class TstTexts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatIsWrittenIsReadHereAndElsewhere()
    {
        QRandomGenerator random = seededRandom();
        for (int i = 0; i < 400; ++i) {
            const QJsonArray values{randomValue(random, 4), randomValue(random, 4)};
            device::Encoder json(device::Encoder::Json);
            write(json, {}, values);
            const QByteArray text = bytes(json.text());
            QCOMPARE(QJsonDocument::fromJson(text).array(), values);

            device::Encoder attributes(device::Encoder::Attributes);
            QJsonObject expected{{u"all"_s, values}};
            for (const char name : {'0', '1', '2'}) {
                const QJsonValue value = randomValue(random, 1);
                expected.insert(QString(QLatin1Char(name)), value);
                write(attributes, QByteArray(1, name), value);
            }
            Decoder d("@o\n" + bytes(attributes.text()) + "all:json:" + text);
            QVERIFY(d.enter("@o"));
            QCOMPARE(d.contents().toObject(), expected);
            QVERIFY2(d.agrees, text.constData());
        }
    }

    // Broken UTF-8 becomes a replacement for each byte: a continuation alone, overlong forms, a surrogate, past the
    // last, cut short, never used.
    void writesAttributesAsLinesAndWhatIsBelowAsJson()
    {
        QByteArray special("\"\\\n\r\t\0\b\f\x1F\x7F\xF0\x9F\x98\x80", 14);
        QByteArray replaced;
        for (const QByteArray broken : {"\x80", "\xC0\xAF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
                                        "\xF4\x90\x80\x80", "\xF0\x9F\x98", "\xFE\xFF"}) {
            special += 'a' + broken;
            replaced += 'a' + QByteArray("\xEF\xBF\xBD").repeated(broken.size());
        }
        device::Encoder e(device::Encoder::Attributes);
        e.addString("msg", special);
        e.addBool("on", true);
        e.addInt("low", std::numeric_limits<int>::min());
        e.addNull("none");
        e.startObject("dat");
        e.startArray("list");
        e.addInt({}, -1);
        e.startObject({});
        e.endObject();
        e.addJson({}, "{\"ready\":1}");
        e.endArray();
        e.addString("twice", special);
        e.addString("twice", "b");
        e.endObject();
        e.addJson("lines", "{\n\"a\" :\r\n1}");
        e.addJson("empty", "");
        QCOMPARE(bytes(e.text()), "msg::\"\\\\\\n\\r\t\\0\b\f\x1F\x7F\xF0\x9F\x98\x80" + replaced +
                                      "\non:b:true\nlow:n:-2147483648\nnone:json:null\n"
                                      "dat:json:{\"list\":[-1,{},{\"ready\":1}],"
                                      "\"twice\":\"\\\"\\\\\\n\\r\\t\\u0000\\b\\f\\u001f\x7F\xF0\x9F\x98\x80" +
                                      replaced + "\",\"twice\":\"b\"}\nlines:json:{ \"a\" :  1}\nempty:json:\n");
    }

    void answersMisuseAndKeepsTheForm()
    {
        const std::tuple<bool, QByteArray, const char*> cases[] = {
            {false, "}5,=2,@a:b\nc@ \x7F=3,d=0", ":n:1\n_a_b_c@ _:n:1\nd:n:1\n"},
            {true, "[0,}5,name{1,}0,name=1,]0", "[{},1]"},
            {true, "{0,[2,]0,}0", "{\"\":[]}"},
            {true, "[0,]0,{6,in[6,=6,]6,}6,]5", "[]"},
        };
        pps_encoder_t e;
        for (const auto& [encodeJson, calls, text] : cases) {
            pps_encoder_initialize(&e, encodeJson);
            QCOMPARE(play(&e, calls), calls);
            QCOMPARE(pps_encoder_buffer(&e), text);
            pps_encoder_cleanup(&e);
        }
        QCOMPARE(play(&e, "[8,=8,]8"), "[8,=8,]8");
        QVERIFY(pps_encoder_length(&e) == 0 && *pps_encoder_buffer(&e) == '\0');
        pps_decoder_t d = {};
        int value = 7;
        QCOMPARE(pps_decoder_get_int(&d, "n", &value), PPS_DECODER_NOT_INITIALIZED);
        QCOMPARE(pps_decoder_length(&d), 0);
        QCOMPARE(pps_decoder_initialize(&d, nullptr), PPS_DECODER_OK);
        pps_decoder_cleanup(&d);
        pps_decoder_cleanup(&d);
        QVERIFY(!device::visitMembers(&d, nullptr, nullptr) && Decoder(QByteArray(1, '\0')).isValid());
    }

    void readsObjectsOneAfterTheOther()
    {
        Decoder d("before::the first object\n@first\r\ns::a\\\\b\\nc\\0d\\x\r\n\nn:n:-12\r\nyes:b:true\r\n"
                  "raw:b64:AP8KDQ==\nodd:xyz:?\nwith:colon::in the value\n@platform\nmsg::zel\n"
                  "dat:json:{\"m\":{\"list\":[1,{\"k\":\"v\"},[true,null]],\"last\":2.5},\"more\":{}}" +
                  QByteArray(3, '\0'));
        QCOMPARE(pps_decoder_length(d), 3);
        QCOMPARE(d.string("before"), QByteArray("the first object"));
        QVERIFY(d.moveTo(2));
        QCOMPARE(pps_decoder_name(d), "@platform");
        const uintptr_t root = d.position();
        QVERIFY(!device::visitMembers(d, nullptr, nullptr)); // it is no JSON
        QVERIFY(d.enter("@first"));
        QCOMPARE(pps_decoder_length(d), 6);
        QCOMPARE(d.integer("n"), -12);
        const char* text = nullptr;
        QCOMPARE(pps_decoder_get_string(d, "s", &text), PPS_DECODER_OK);
        QCOMPARE(text, "a\\b\nc");

        QVERIFY(d.restore(root) && d.enter("@platform") && d.enter("dat"));
        QCOMPARE(pps_decoder_name(d), "m");
        Decoder twice("@a\nn:n:1\nn:n:2\n@a\nn:n:3\n");
        QVERIFY(twice.enter("@a"));
        QCOMPARE(twice.integer("n"), 1);
        // The first one is still where it was.
        QCOMPARE(pps_decoder_name(d), "m");
        const uintptr_t dat = d.position();
        for (const uintptr_t nowhere : {uintptr_t(0), root + 3, dat - 1, dat + 1, ~uintptr_t(0)})
            QVERIFY(!d.restore(nowhere) && d.position() == dat);
        QVERIFY(d.enter("more") && device::visitMembers(d, nullptr, nullptr)); // none
    }

    // Half a surrogate pair, R below, reads as a replacement, and a whole one, P, as its character.
    void readsStringsOfEveryEncoding()
    {
        const std::pair<QByteArray, QByteArray> cases[] = {
            {":\\xa\\\\b\\nc\\0d\\r", QByteArray("\\xa\\b\nc\0d\r", 10)},
            {":a\\", "a\\"},
            {":in:the value", "in:the value"},
            {"b64:AP8KDQ==", QByteArray("\x00\xFF\n\r", 4)},
            {"json:\"\\ud83d\\ude00\"", "P"},
            {"json:\"\\uDC00\\udfff\\uDFFF\\ud9aA\\uD800\\udbff\"", "RRRRRR"},
            {"json:\"\\ud83dzude00\\ndc00\\ud7FF\"", "Rzude00\ndc00\xED\x9F\xBF"},
            {"json:\"\\ud83d\\ud83d\\ude00\"", "RP"},
            {"json:\"\\\\ud83d\"", "\\ud83d"},
            {"json:\"\\\\\\ud83d\\n\"", "\\R\n"},
            {"xyz:not known", QByteArray()}};
        for (auto [value, text] : cases) {
            Decoder d("v:" + value);
            QCOMPARE(d.string("v"), text.replace('R', "\xEF\xBF\xBD").replace('P', "\xF0\x9F\x98\x80"));
            QCOMPARE(pps_decoder_length(d), 1);
        }
    }

    // As what each may be read: i as an int, d a double, b a bool, s a string, c a container, and r is out of range.
    void readsValuesByTypeAndRange()
    {
        // With @ for a long row of digits.
        const QByteArray values = "2147483647 id, 2147483648 rd, -2147483648 id, -2147483649 rd, 1.0 d, 1e3 d, "
                                  "9223372036854775808 rd, 99999999999999999999 d, -9223372036854775809 d, 1e-400 d, "
                                  "0.@1 d, 0.0001e-99999999999999999999 d, 1E+99999999999999999999 , -9.5E+308 , "
                                  "0.5e309 , 7@ , 7@e5 , 1@.5e-9 , \"1\" s, true b, null , [1] c, {} c";
        for (const QByteArray& row : values.split(',')) {
            const QByteArray kinds = row.mid(row.lastIndexOf(' ') + 1);
            const QByteArray json = row.chopped(kinds.size()).trimmed().replace('@', QByteArray(400, '0'));
            // What stands beside it costs nothing, and strings that look alike stay.
            Decoder d("dat:json:{\"\":\"\",\"s\":\"1e309 \\\"\\\\99999999999999999999\",\"v\":" + json +
                      ",\"after\":[1e999,7]}\n");
            QVERIFY2(d.enter("dat"), json.constData());
            QCOMPARE(d.string("s"), QByteArray("1e309 \"\\99999999999999999999"));
            const auto expected = [&](char kind) {
                return kinds.contains(kind) ? PPS_DECODER_OK : PPS_DECODER_BAD_TYPE;
            };
            int small = 77;
            double real = 77;
            bool truth = true;
            const char* text = nullptr;
            QCOMPARE(pps_decoder_get_int(d, "v", &small),
                     kinds.contains('r') ? PPS_DECODER_OUT_OF_RANGE : expected('i'));
            QCOMPARE(small, kinds.contains('i') ? json.toInt() : 77);
            QCOMPARE(pps_decoder_get_double(d, "v", &real), expected('d'));
            QCOMPARE(real, kinds.contains('d') ? json.toDouble() : 77);
            QCOMPARE(pps_decoder_get_bool(d, "v", &truth), expected('b'));
            QCOMPARE(pps_decoder_get_string(d, "v", &text), expected('s'));
            QCOMPARE(pps_decoder_get_int(d, "missing", &small), PPS_DECODER_NOT_FOUND);
            QCOMPARE(pps_decoder_push(d, "missing"), PPS_DECODER_NOT_FOUND);
            const uintptr_t dat = d.position();
            QCOMPARE(pps_decoder_push(d, "v"), expected('c'));
            QVERIFY(d.restore(dat) && d.enter("after") && d.moveTo(1) && !d.moveTo(-1) && !d.moveTo(2));
            QCOMPARE(d.integer(nullptr), 7);
        }
    }

    void passesOverWhatCannotBeRead()
    {
        QByteArrayList broken{"no form",    "a:b",      ":",    "a\xFF::1", "s::\xC0\xAF",
                              "s:b64:A*==", "n:n:true", "n:n:", "b:b:1"};
        for (const char* json : {"", "{\"a\":[1}", "{} {}", "[1,]", "{\"a\"}", "[01]", "[-]", "[1.]", "[1e]", "[1e+]",
                                 "[1e999", "[\"\\x\"]", "[\"\\u12\"]", "[\"a\tb\"]", "[\"\xC0\xAF\"]",
                                 "[\"\xED\xA0\x80\"]", "{\"a\":1e999,\"b\":01}", "[\"\\"})
            broken.append("j:json:" + QByteArray(json));
        broken.append("j:json:" + QByteArray("{\"a\0\":1}", 8));
        broken.append("j:json:" + QByteArray(60000, '['));
        broken.append("j:json:" + QByteArray(20000, '[') + QByteArray(20000, ']'));
        broken.append("j:json:" + QByteArray("{\"a\":").repeated(10000));
        for (const QByteArray& line : std::as_const(broken)) {
            Decoder d("@other\n" + line + "\n@platform\n" + line + "\ndat:json:[1]\n" + line + "\nn:n:2\n" + line);
            QVERIFY2(d.enter("@platform"), line.left(60).constData());
            QVERIFY2(pps_decoder_length(d) == 2, line.left(60).constData());
            QCOMPARE(d.integer("n"), 2);
            QVERIFY(d.enter("dat"));
            QCOMPARE(d.integer(nullptr), 1);
        }
        // What follows an object's broken name is not the object's before it.
        Decoder d("@platform\na:n:1\n@plat\xFF\nb:n:2\n@last\n");
        QVERIFY(!d.enter("@plat\xFF") && d.enter("@platform"));
        QCOMPARE(pps_decoder_length(d), 1);
    }

    void findsMembersInAnyOrderLikeANaiveSearch()
    {
        QRandomGenerator random = seededRandom();
        for (int round = 0; round < 200; ++round) {
            // Few names, so that many are doubled and some are missing; lengths and ends alike, so that they are
            // mistaken for each other by anything less than a comparison.
            const QByteArray ends(round % 20, 'n');
            const auto anyName = [&] { return ends + QByteArray::number(random.bounded(5, 25)) + ends; };
            QList<QByteArray> names;
            QByteArrayList members;
            for (int i = random.bounded(1, 300); i > 0; --i) {
                const QByteArray value = QByteArray::number(names.size());
                names.append(anyName());
                members.append('"' + names.last() + "\":" + (names.size() % 3 == 1 ? '[' + value + ']' : value));
            }
            Decoder d("dat:json:{" + members.join(',') + "}");
            QVERIFY(d.enter("dat"));
            const uintptr_t dat = d.position();
            for (int i = 0; i < 60; ++i) {
                const int index = random.bounded(int(names.size()));
                QVERIFY(d.moveTo(index));
                QCOMPARE(pps_decoder_name(d), names.at(index).constData());
                QCOMPARE(d.integer(nullptr), index % 3 == 0 ? std::nullopt : std::optional(index));
                const QByteArray name = anyName();
                const int expected = int(names.indexOf(name));
                const bool isArray = expected >= 0 && expected % 3 == 0;
                QCOMPARE(d.enter(name.constData()), isArray);
                QCOMPARE(d.integer(isArray ? nullptr : name.constData()),
                         expected < 0 ? std::nullopt : std::optional(expected));
                QVERIFY(!isArray || d.restore(dat));
            }
        }
    }

    // Into each element and out again, in n steps: in n² it would not end before its time is up.
    void readsALongListInTurnWithoutBeginningAnew()
    {
        constexpr int count = 1000000;
        Decoder d("dat:json:[" + QByteArray("{\"a\":1,\"b\":2},").repeated(count) + "0]");
        QVERIFY(d.enter("dat"));
        const uintptr_t list = d.position();
        for (int i = 0; i < count; ++i)
            QVERIFY(d.moveTo(i) && d.enter(nullptr) && d.integer("b") == 2 && d.restore(list));
    }

    void areWrittenReadAndLoggedOnAnyThread()
    {
        constexpr int threads = 4;
        constexpr int texts = 500;
        const SlogCapture log;
        {
            std::vector<std::jthread> workers;
            for (int first = 0; first < threads * texts; first += texts)
                workers.emplace_back([first] {
                    for (int i = first; i < first + texts; ++i) {
                        device::Encoder encoder(device::Encoder::Attributes);
                        encoder.addInt("v", i);
                        slogf(1, 2, "%d", Decoder(encoder.text().data()).integer("v").value_or(-1));
                    }
                });
        }
        QStringList expected;
        for (int i = 0; i < threads * texts; ++i)
            expected.append(u"2: %1"_s.arg(i));
        QStringList lines = log.lines();
        std::sort(lines.begin(), lines.end());
        std::sort(expected.begin(), expected.end());
        QCOMPARE(lines, expected);
    }

    void isWrittenAndReadWholeOrNotAtAllWithoutMemory()
    {
        constexpr int depth = 100;
        const QByteArray value(300000, 'x'); // of such a text no decoder is kept for the next
        const QByteArray json = QByteArray("{\"v\":").repeated(depth) + '"' + value + '"' + QByteArray(depth, '}');
        using Texts = std::pair<QByteArray, std::unique_ptr<Decoder>>;
        const auto act = [&](Texts& texts) {
            device::Encoder encoder(device::Encoder::Attributes);
            encoder.addJson("v", json);
            texts.first = encoder.text().data();
            texts.second = std::make_unique<Decoder>(texts.first);
        };
        const auto check = [&](const Texts& texts) {
            const auto& [written, d] = texts;
            QVERIFY(written.isEmpty() || written == "v:json:" + json + '\n');
            if (written.isEmpty() || !d || !d->isValid())
                return;
            for (int level = 0; level < depth; ++level)
                QVERIFY(d->enter("v"));
            QCOMPARE(d->string("v"), value);
        };
        const long before = failing::alive;
        QVERIFY(failing::eachInTurn([] { return std::make_unique<Texts>(); }, act, check) > 10);
        QVERIFY(failing::alive <= before); // of what was kept some is gone
    }
};

ZEL_TEST_WITHOUT_APPLICATION(TstTexts)
#include "tst_texts.moc"
