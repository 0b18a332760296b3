// SPDX-License-Identifier: Apache-2.0
#include <common/SeededRandom.h>
#include <common/TestMain.h>

#include <device/Decoder.h>
#include <device/Encoder.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QTest>

#include <limits>
#include <optional>

using namespace Qt::StringLiterals;

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

    // Everything below where it stands, by index and back again; `agrees` tells whether all ways to it do.
    QJsonValue contents(bool* agrees)
    {
        const uintptr_t here = position();
        const int length = pps_decoder_length(get());
        QList<device::Member> shown;
        const bool isShown = device::visitMembers(
            get(),
            [](void* members, const device::Member& member) {
                static_cast<QList<device::Member>*>(members)->append(member);
            },
            &shown);
        *agrees = *agrees && here != 0 && length >= 0 && !moveTo(length) && (!isShown || shown.size() == length);
        bool isObject = isShown;
        QJsonArray array;
        QJsonObject object;
        for (int i = 0; i < length; ++i) {
            *agrees = *agrees && restore(here) && moveTo(i);
            const std::string_view name = device::currentName(get());
            const bool isNamed = name.data() != nullptr;
            isObject = isObject || isNamed;
            const bool isWhole = integer(nullptr).has_value();
            const QJsonValue value = current(agrees);
            *agrees = *agrees && (!isShown || !isWhole || shown.at(i).type == device::Member::Integer);
            *agrees = *agrees && (!isShown || (bytes(shown.at(i).name) == bytes(name) && isSame(shown.at(i), value)));
            array.append(value);
            if (isNamed)
                object.insert(QString::fromUtf8(bytes(name)), value);
        }
        restore(here);
        return isObject ? QJsonValue(object) : QJsonValue(array);
    }

private:
    static bool isSame(const device::Member& member, const QJsonValue& value)
    {
        switch (member.type) {
        case device::Member::Text:
            return value == QJsonValue(QString::fromUtf8(bytes(member.text)));
        case device::Member::Integer:
            return value == QJsonValue(double(member.number));
        case device::Member::Bool:
            return value == QJsonValue(member.number == 1);
        case device::Member::Another:
            break;
        }
        return !value.isString() && !value.isBool();
    }
    QJsonValue current(bool* agrees)
    {
        double number = 0;
        bool truth = false;
        const bool isNumber = pps_decoder_get_double(get(), nullptr, &number) == PPS_DECODER_OK;
        const bool isBool = pps_decoder_get_bool(get(), nullptr, &truth) == PPS_DECODER_OK;
        const QByteArray text = string(nullptr);
        const bool isContainer = enter(nullptr);
        *agrees = *agrees && isNumber + isBool + !text.isNull() + isContainer <= 1;
        if (isContainer)
            return contents(agrees);
        return isNumber        ? QJsonValue(number)
               : isBool        ? QJsonValue(truth)
               : text.isNull() ? QJsonValue()
                               : QJsonValue(QString::fromUtf8(text));
    }
};

// Writes random values of every kind with the encoder's calls, and answers what they are. Names within an object
// differ, so that no parser has to choose.
class RandomWriter
{
public:
    QJsonValue write(device::Encoder& encoder, device::Text name, int depth)
    {
        const int kind = m_random.bounded(depth > 0 ? 6 : 4);
        const int number = int(m_random.generate());
        const QString text = string(std::size(m_edges));
        switch (kind) {
        case 0:
            encoder.addNull(name);
            return QJsonValue();
        case 1:
            encoder.addBool(name, number > 0);
            return number > 0;
        case 2:
            encoder.addInt(name, number);
            return number;
        case 3:
            encoder.addString(name, text.toUtf8());
            return text;
        case 4:
            return writeArray(encoder, name, depth);
        default:
            return writeObject(encoder, name, depth);
        }
    }
    QJsonArray writeArray(device::Encoder& encoder, device::Text name, int depth)
    {
        QJsonArray values;
        encoder.startArray(name);
        for (int i = m_random.bounded(6); i > 0; --i)
            values.append(write(encoder, {}, depth - 1));
        encoder.endArray();
        return values;
    }

private:
    QJsonObject writeObject(device::Encoder& encoder, device::Text name, int depth)
    {
        QJsonObject members;
        encoder.startObject(name);
        for (int i = m_random.bounded(6); i > 0; --i) {
            // Qt's objects sort names by their 16-bit units or by their bytes: only of those below the surrogates
            // alike.
            const QString key = string(11);
            if (!members.contains(key))
                members.insert(key, write(encoder, key.toUtf8() + "", depth - 1));
        }
        encoder.endObject();
        return members;
    }
    QString string(std::size_t edgeCount)
    {
        QString text = u""_s; // not null: with such a name beside others, Qt 6.8's object crashes
        for (int i = m_random.bounded(24); i > 0; --i) {
            const char32_t plain = U' ' + char32_t(m_random.bounded(95));
            const char32_t edge = m_edges[m_random.bounded(int(edgeCount))];
            text += QString::fromUcs4(m_random.bounded(3) > 0 ? &plain : &edge, 1);
        }
        return text;
    }

    static constexpr char32_t m_edges[] = {0,     1,     0x1F,   '"',    '\\',   '/',    0x7F,    0x80,
                                           0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFD, 0xFFFF, 0x10000, 0x10FFFF};
    QRandomGenerator m_random = seededRandom();
};

// Plays calls, each a name, if any, and one of [ ] { } and 1; answers the first error.
pps_encoder_error_t play(pps_encoder_t* encoder, const QByteArrayList& calls)
{
    pps_encoder_error_t first = PPS_ENCODER_OK;
    for (const QByteArray& call : calls) {
        const QByteArray whole = call.chopped(1);
        const char* const name = whole.isEmpty() ? nullptr : whole.constData();
        const pps_encoder_error_t error = call.endsWith('[')   ? pps_encoder_start_array(encoder, name)
                                          : call.endsWith(']') ? pps_encoder_end_array(encoder)
                                          : call.endsWith('{') ? pps_encoder_start_object(encoder, name)
                                          : call.endsWith('}') ? pps_encoder_end_object(encoder)
                                                               : pps_encoder_add_int(encoder, name, 1);
        first = first ? first : error;
    }
    return first;
}

const char* const sample = "before::the first object\n"
                           "@first\n"
                           "s::a\\\\b\\nc\\0d\\x\n"
                           "\n"
                           "n:n:-12\r\n"
                           "yes:b:true\r\n"
                           "raw:b64:AP8KDQ==\n"
                           "odd:xyz:?\n"
                           "with:colon::in the value\n"
                           "@platform\n"
                           "msg::zel\n"
                           "dat:json:{\"m\":{\"list\":[1,{\"k\":\"v\"},[true,null]],\"last\":2.5},\"more\":{}}";

} // namespace

// The object's texts, written by the encoder and read by the decoder.
class TstTexts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatIsWrittenIsReadHereAndElsewhere()
    {
        RandomWriter random;
        for (int i = 0; i < 400; ++i) {
            device::Encoder json(device::Encoder::Json);
            const QJsonArray values = random.writeArray(json, {}, 4);
            const QByteArray text = bytes(json.text());
            QCOMPARE(QJsonDocument::fromJson(text).array(), values);

            device::Encoder attributes(device::Encoder::Attributes);
            QJsonObject expected{{u"all"_s, values}};
            for (const char name : {'0', '1', '2'})
                expected.insert(QString(QLatin1Char(name)), random.write(attributes, QByteArray(1, name), 1));
            Decoder d("@o\n" + bytes(attributes.text()) + "all:json:" + text);
            QVERIFY(d.enter("@o"));
            bool agrees = true;
            QCOMPARE(d.contents(&agrees).toObject(), expected);
            QVERIFY2(agrees, text.constData());
        }
    }

    void writesAttributesAsLinesAndWhatIsBelowAsJson()
    {
        device::Encoder e(device::Encoder::Attributes);
        e.addString("msg", "zel");
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
        e.addString("twice", "a");
        e.addString("twice", "b");
        e.endObject();
        e.addJson("lines", "{\n\"a\" :\r\n1}");
        e.addJson("empty", "");
        QCOMPARE(bytes(e.text()),
                 QByteArray("msg::zel\non:b:true\nlow:n:-2147483648\nnone:json:null\n"
                            "dat:json:{\"list\":[-1,{},{\"ready\":1}],\"twice\":\"a\",\"twice\":\"b\"}\n"
                            "lines:json:{ \"a\" :  1}\nempty:json:\n"));
    }

    void writesStringsWithTheEscapesOfTheirForm()
    {
        struct Case
        {
            QByteArray string, json, attribute;
        };
        QList<Case> cases{{"plain / text", "plain / text", "plain / text"},
                          {"a\"b\\c", "a\\\"b\\\\c", "a\"b\\\\c"},
                          {"a\nb\r\tc", "a\\nb\\r\\tc", "a\\nb\\r\tc"},
                          {QByteArray("a\0b", 3), "a\\u0000b", "a\\0b"},
                          {"\b\f\x1f\x7f", "\\b\\f\\u001f\x7f", "\b\f\x1f\x7f"},
                          {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"}};
        for (int i = 0; i < 9; ++i) { // at every place of an eight-byte step
            const QByteArray before(i, 'x');
            cases.append({before + "\"tail-tail", before + "\\\"tail-tail", before + "\"tail-tail"});
        }
        // A continuation alone, overlong forms, a surrogate, past the last, cut short, never used: byte for byte.
        for (const char* const broken : {"\x80", "\xC0\xAF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
                                         "\xF4\x90\x80\x80", "\xF0\x9F\x98", "\xFE\xFF"}) {
            const QByteArray replaced = 'a' + QByteArray("\xEF\xBF\xBD").repeated(qstrlen(broken)) + 'z';
            cases.append({'a' + QByteArray(broken) + 'z', replaced, replaced});
        }
        for (const auto& [string, json, attribute] : std::as_const(cases)) {
            device::Encoder asJson(device::Encoder::Json);
            asJson.addString({}, string);
            QCOMPARE(bytes(asJson.text()), '"' + json + '"');
            device::Encoder asAttribute(device::Encoder::Attributes);
            asAttribute.addString("s", string);
            QCOMPARE(bytes(asAttribute.text()), "s::" + attribute + '\n');
        }
    }

    void answersMisuseAndKeepsTheForm()
    {
        const struct
        {
            const char* what;
            bool encodeJson;
            QByteArrayList calls;
            pps_encoder_error_t error;
            QByteArray text;
        } cases[] = {
            {"end without start", false, {"}"}, PPS_ENCODER_UNBALANCED, ""},
            {"end of the other kind", true, {"[", "}", "]"}, PPS_ENCODER_UNBALANCED, "[]"},
            {"name in an array", true, {"[", "name{", "}", "name1", "]"}, PPS_ENCODER_NAME_NOT_ALLOWED, "[{},1]"},
            {"member without a name", true, {"{", "[", "]", "}"}, PPS_ENCODER_NAME_MISSING, "{\"\":[]}"},
            {"attribute without a name", false, {"1"}, PPS_ENCODER_NAME_MISSING, ":n:1\n"},
            {"name that breaks the line", false, {"@a:b\nc@1"}, PPS_ENCODER_BAD_NAME, "_a_b_c@:n:1\n"},
            {"second value, with all that is in it",
             true,
             {"[", "]", "{", "in[", "1", "]", "}"},
             PPS_ENCODER_COMPLETE,
             "[]"},
        };
        for (const auto& one : cases) {
            pps_encoder_t e;
            pps_encoder_initialize(&e, one.encodeJson);
            QVERIFY2(play(&e, one.calls) == one.error, one.what);
            QCOMPARE(QByteArray(pps_encoder_buffer(&e), pps_encoder_length(&e)), one.text);
            pps_encoder_cleanup(&e);
        }
        pps_encoder_t e;
        pps_encoder_initialize(&e, false);
        QCOMPARE(pps_encoder_add_string(&e, "s", nullptr), PPS_ENCODER_BAD_VALUE);
        QCOMPARE(pps_encoder_buffer(&e), "s:json:null\n");
        pps_encoder_cleanup(&e);
    }

    void failsHarmlesslyWhenNotInitialized()
    {
        pps_encoder_t e = {};
        for (const char* const call : {"[", "{", "1", "]", "}"})
            QCOMPARE(play(&e, {call}), PPS_ENCODER_NOT_INITIALIZED);
        QCOMPARE(pps_encoder_buffer(&e), "");
        QCOMPARE(pps_encoder_length(&e), 0);
        pps_encoder_cleanup(&e);

        pps_decoder_t zero = {};
        int value = 7;
        pps_decoder_state_t state = {1};
        QCOMPARE(pps_decoder_get_int(&zero, "n", &value), PPS_DECODER_NOT_INITIALIZED);
        QCOMPARE(pps_decoder_push(&zero, nullptr), PPS_DECODER_NOT_INITIALIZED);
        QCOMPARE(pps_decoder_set_state(&zero, &state), PPS_DECODER_NOT_INITIALIZED);
        QCOMPARE(pps_decoder_length(&zero), 0);
        QCOMPARE(pps_decoder_name(&zero), nullptr);
        QCOMPARE(pps_decoder_initialize(&zero, nullptr), PPS_DECODER_OK);
        QCOMPARE(pps_decoder_length(&zero), 0);
        pps_decoder_cleanup(&zero);
        pps_decoder_cleanup(&zero);
    }

    void readsObjectsAndEveryEncoding()
    {
        Decoder d(sample + QByteArray(3, '\0'));
        QCOMPARE(pps_decoder_length(d), 3);
        QCOMPARE(pps_decoder_name(d), "before");
        QCOMPARE(d.string("before"), QByteArray("the first object"));
        QVERIFY(d.moveTo(2));
        QCOMPARE(pps_decoder_name(d), "@platform");
        const uintptr_t root = d.position();
        QVERIFY(!device::visitMembers(d, nullptr, nullptr)); // it is no JSON
        QVERIFY(d.enter("@first"));
        QCOMPARE(pps_decoder_length(d), 6);
        QCOMPARE(d.string("s"), QByteArray("a\\b\nc\0d\\x", 9));
        QCOMPARE(d.integer("n"), -12);
        bool yes = false;
        QCOMPARE(pps_decoder_get_bool(d, "yes", &yes), PPS_DECODER_OK);
        QVERIFY(yes);
        QCOMPARE(d.string("raw"), QByteArray("\x00\xFF\n\r", 4));
        const char* text = nullptr;
        QCOMPARE(pps_decoder_get_string(d, "odd", &text), PPS_DECODER_BAD_TYPE);
        // "colon" is the encoding here, and it is not known.
        QCOMPARE(pps_decoder_get_string(d, "with", &text), PPS_DECODER_BAD_TYPE);
        QCOMPARE(pps_decoder_get_string(d, "s", &text), PPS_DECODER_OK);
        QCOMPARE(text, "a\\b\nc");

        QVERIFY(d.restore(root) && d.enter("@platform"));
        QCOMPARE(d.string("msg"), QByteArray("zel"));
        QVERIFY(d.enter("dat"));
        QCOMPARE(pps_decoder_name(d), "m");
        Decoder twice("@a\nn:n:1\nn:n:2\n@a\nn:n:3\n");
        QVERIFY(twice.enter("@a"));
        QCOMPARE(twice.integer("n"), 1);
        // The first one is still where it was.
        QCOMPARE(pps_decoder_name(d), "m");
        const uintptr_t dat = d.position();
        QVERIFY(!d.restore(0) && !d.restore(~uintptr_t(0)) && !d.restore(dat + 1));
        QCOMPARE(d.position(), dat);
    }

    void readsValuesByTypeAndRange()
    {
        constexpr pps_decoder_error_t ok = PPS_DECODER_OK;
        constexpr pps_decoder_error_t bad = PPS_DECODER_BAD_TYPE;
        constexpr pps_decoder_error_t range = PPS_DECODER_OUT_OF_RANGE;
        const struct
        {
            QByteArray json;
            pps_decoder_error_t asInt, asDouble, asBool, asString, asContainer;
        } values[] = {
            {"2147483647", ok, ok, bad, bad, bad},
            {"2147483648", range, ok, bad, bad, bad},
            {"-2147483648", ok, ok, bad, bad, bad},
            {"-2147483649", range, ok, bad, bad, bad},
            {"9223372036854775808", range, ok, bad, bad, bad},
            {"99999999999999999999", bad, ok, bad, bad, bad},
            {"-9223372036854775809", bad, ok, bad, bad, bad},
            {"1e-400", bad, ok, bad, bad, bad},
            {"0.0001e-99999999999999999999", bad, ok, bad, bad, bad},
            {"1e309", bad, bad, bad, bad, bad},
            {"0." + QByteArray(400, '0') + "1", bad, ok, bad, bad, bad},
            {QByteArray("1").append(QByteArray(400, '0')) + ".5e-9", bad, bad, bad, bad, bad},
            {"1E+99999999999999999999", bad, bad, bad, bad, bad},
            {"-9.5E+308", bad, bad, bad, bad, bad},
            {QByteArray(400, '7'), bad, bad, bad, bad, bad},
            {"1.0", bad, ok, bad, bad, bad},
            {"1e3", bad, ok, bad, bad, bad},
            {"\"1\"", bad, bad, bad, ok, bad},
            {"true", bad, bad, ok, bad, bad},
            {"null", bad, bad, bad, bad, bad},
            {"[1]", bad, bad, bad, bad, ok},
            {"{}", bad, bad, bad, bad, ok},
        };
        for (const auto& [json, asInt, asDouble, asBool, asString, asContainer] : values) {
            // What stands beside it costs nothing, and strings that look alike stay.
            Decoder d("dat:json:{\"s\":\"\\\"\\\\1e309 99999999999999999999\",\"v\":" + json +
                      ",\"after\":[1e999,7]}\n");
            QVERIFY2(d.enter("dat"), json.constData());
            QCOMPARE(d.string("s"), QByteArray("\"\\1e309 99999999999999999999"));
            constexpr int preset = 77;
            int small = preset;
            double real = preset;
            bool truth = true;
            const char* text = nullptr;
            QCOMPARE(pps_decoder_get_int(d, "v", &small), asInt);
            QCOMPARE(small, asInt == ok ? json.toInt() : preset);
            QCOMPARE(pps_decoder_get_double(d, "v", &real), asDouble);
            QCOMPARE(real, asDouble == ok ? json.toDouble() : preset);
            QCOMPARE(pps_decoder_get_bool(d, "v", &truth), asBool);
            QCOMPARE(pps_decoder_get_string(d, "v", &text), asString);
            QCOMPARE(pps_decoder_get_int(d, "missing", &small), PPS_DECODER_NOT_FOUND);
            QCOMPARE(pps_decoder_push(d, "missing"), PPS_DECODER_NOT_FOUND);
            const uintptr_t dat = d.position();
            QCOMPARE(pps_decoder_push(d, "v"), asContainer);
            QVERIFY(d.restore(dat) && d.enter("after"));
            QCOMPARE(pps_decoder_length(d), 2);
            QVERIFY(d.moveTo(1));
            QVERIFY(!d.moveTo(-1) && !d.moveTo(2));
            QCOMPARE(d.integer(nullptr), 7);
        }
    }

    void passesOverWhatCannotBeRead()
    {
        QByteArrayList broken{"no form",    "a:b",      ":",    "a\xFF::1", "s::\xC0\xAF",
                              "s:b64:A*==", "n:n:true", "n:n:", "b:b:1"};
        for (const char* json : {"", "{\"a\":[1}", "{} {}", "[1,]", "{\"a\"}", "[01]", "[-]", "[1.]", "[1e]", "[1e+]",
                                 "[1e999", "[\"\\x\"]", "[\"\\u12\"]", "[\"a\tb\"]", "[\"\xC0\xAF\"]",
                                 "[\"\xED\xA0\x80\"]", "{\"a\":1e999,\"b\":01}"})
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
        QVERIFY(d.enter("@platform"));
        QCOMPARE(pps_decoder_length(d), 1);
    }

    void readsUnpairedSurrogatesAsReplacement()
    {
        // Written with R for a half that has no other, and P for a whole pair.
        const std::pair<const char*, const char*> cases[] = {
            {"\\ud83d\\ude00", "P"}, {"a\\uD83Db", "aRb"},     {"\\ud83d", "R"},
            {"\\uDE00", "R"},        {"\\ude00\\ud83d", "RR"}, {"\\ud83d\\ud83d\\ude00", "RP"},
            {"\\ud83d\\n", "R\n"},   {"\\\\ud83d", "\\ud83d"}, {"\\\\\\ud83d", "\\R"}};
        for (const auto& [escaped, text] : cases) {
            const QByteArray expected = QByteArray(text).replace('R', "\xEF\xBF\xBD").replace('P', "\xF0\x9F\x98\x80");
            Decoder d("dat:json:[\"" + QByteArray(escaped) + "\"]");
            QVERIFY2(d.enter("dat"), escaped);
            QCOMPARE(d.string(nullptr), expected);
        }
    }

    void findsMembersInAnyOrderLikeANaiveSearch()
    {
        QRandomGenerator random = seededRandom();
        for (int round = 0; round < 200; ++round) {
            // Few names, so that many are doubled and some are missing; lengths and ends alike, so that they are
            // mistaken for each other by anything less than a comparison.
            const auto anyName = [&] { return 'n' + QByteArray::number(random.bounded(100, 120)) + 'n'; };
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

    void survivesRandomChanges()
    {
        QRandomGenerator random = seededRandom();
        const QByteArray pieces("{}[]\":,\\\n\r@0123456789truefalsn.-e\xC3\x80");
        for (int i = 0; i < 20000; ++i) {
            QByteArray text(sample);
            for (int change = random.bounded(1, 4); change > 0; --change) {
                const int place = random.bounded(int(text.size()));
                text.replace(place, random.bounded(8), random.bounded(2) ? pieces.mid(random.bounded(40), 1) : "");
            }
            bool agrees = true;
            Decoder(text).contents(&agrees);
            QVERIFY2(agrees, text.toPercentEncoding().constData());
        }
    }
};

ZEL_TEST_WITHOUT_APPLICATION(TstTexts)
#include "tst_texts.moc"
