// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>
#include <common/SeededRandom.h>

#include <device/Decoder.h>

#include <QTest>

#include <optional>
#include <vector>

namespace {

class Decoder : public device::Decoder
{
public:
    using device::Decoder::Decoder;
    operator pps_decoder_t*() { return get(); }

    bool enter(const char* name) { return pps_decoder_push(get(), name) == PPS_DECODER_OK; }
    bool enter(const QList<const char*>& names)
    {
        return std::all_of(names.begin(), names.end(), [this](const char* name) { return enter(name); });
    }
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
        return text.data()[text.size()] == '\0' ? QByteArray(text.data(), qsizetype(text.size())) : "not ended";
    }
    uintptr_t position() const
    {
        pps_decoder_state_t state = {0};
        pps_decoder_get_state(const_cast<Decoder*>(this)->get(), &state);
        return state.position;
    }
    bool restore(uintptr_t position)
    {
        const pps_decoder_state_t state = {position};
        return pps_decoder_set_state(get(), &state) == PPS_DECODER_OK;
    }
};

// Visits everything below where the decoder stands; answers how many nodes there are, or -1 when two ways to one of
// them disagree.
int visit(Decoder& d)
{
    const uintptr_t here = d.position();
    const int length = pps_decoder_length(d);
    if (here == 0 || length < 0 || pps_decoder_goto_index(d, length) == PPS_DECODER_OK)
        return -1;
    int nodes = 1;
    for (int i = 0; i < length; ++i) {
        if (!d.restore(here) || pps_decoder_goto_index(d, i) != PPS_DECODER_OK)
            return -1;
        const char* const name = pps_decoder_name(d);
        bool truth = false;
        double number = 0;
        const bool isScalar = !d.string(nullptr).isNull() ||
                              pps_decoder_get_double(d, nullptr, &number) == PPS_DECODER_OK ||
                              pps_decoder_get_bool(d, nullptr, &truth) == PPS_DECODER_OK;
        if (name && pps_decoder_get_bool(d, name, &truth) == PPS_DECODER_NOT_FOUND && qstrlen(name) > 0)
            return -1;
        const bool isContainer = d.enter(nullptr);
        const int below = isContainer ? visit(d) : 1;
        if (below < 0 || (isScalar && isContainer))
            return -1;
        nodes += below;
    }
    d.restore(here);
    return nodes;
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

class TstDecoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsObjectsAndEveryEncoding()
    {
        Decoder d(sample);
        QCOMPARE(pps_decoder_length(d), 3);
        QCOMPARE(pps_decoder_name(d), "before");
        QCOMPARE(d.string("before"), QByteArray("the first object"));
        QCOMPARE(pps_decoder_goto_index(d, 2), PPS_DECODER_OK);
        QCOMPARE(pps_decoder_name(d), "@platform");
        QCOMPARE(visit(d), 22);
        const uintptr_t root = d.position();

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

        QVERIFY(d.restore(root));
        QVERIFY(d.enter("@platform"));
        QCOMPARE(d.string("msg"), QByteArray("zel"));
        QVERIFY(d.enter("dat"));
        QCOMPARE(pps_decoder_name(d), "m");

        Decoder empty("");
        QVERIFY(empty.isValid());
        QCOMPARE(pps_decoder_length(empty), 0);
        QCOMPARE(pps_decoder_name(empty), nullptr);
        Decoder twice("@a\nn:n:1\nn:n:2\n@a\nn:n:3\n");
        QVERIFY(twice.enter("@a"));
        QCOMPARE(twice.integer("n"), 1);
        // The first one is still where it was.
        QCOMPARE(pps_decoder_name(d), "m");
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
            QCOMPARE(pps_decoder_goto_index(d, 1), ok);
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

    void carriesNulCharacters()
    {
        Decoder d("dat:json:{\"a\":1,\"a\\u0000b\":\"c\\u0000d\"}" + QByteArray(3, '\0'));
        QVERIFY(d.enter("dat"));
        QCOMPARE(d.integer("a"), 1);
        QCOMPARE(pps_decoder_goto_index(d, 1), PPS_DECODER_OK);
        QVERIFY(device::currentName(d) == std::string_view("a\0b", 3));
        QCOMPARE(d.string(nullptr), QByteArray("c\0d", 3));
    }

    void entersContainersAndMovesInThem()
    {
        Decoder d(sample);
        QVERIFY(d.enter({"@platform", "dat", "m", "list"}));
        QCOMPARE(pps_decoder_length(d), 3);
        QCOMPARE(pps_decoder_name(d), nullptr);
        QCOMPARE(d.integer(nullptr), 1);
        QCOMPARE(d.integer("k"), std::nullopt);
        QCOMPARE(pps_decoder_goto_index(d, 3), PPS_DECODER_NOT_FOUND);
        QCOMPARE(pps_decoder_goto_index(d, -1), PPS_DECODER_NOT_FOUND);
        QCOMPARE(d.integer(nullptr), 1);
        QCOMPARE(pps_decoder_push(d, nullptr), PPS_DECODER_BAD_TYPE);
        QCOMPARE(pps_decoder_goto_index(d, 1), PPS_DECODER_OK);
        QVERIFY(d.enter(nullptr));
        QCOMPARE(d.string("k"), QByteArray("v"));
    }

    void showsAllMembersOfAnObject()
    {
        Decoder d(R"(dat:json:{"s":"t","n":-5,"big":18446744073709551615,"b":true,"s":null,"o":{"x":1}})");
        const auto shown = [&d](bool* isShown) {
            QByteArrayList members;
            *isShown = device::visitMembers(
                d,
                [](void* context, const device::Member& member) {
                    const QByteArray value = member.type == device::Member::Text
                                                 ? QByteArray(member.text.data(), qsizetype(member.text.size()))
                                                 : QByteArray::number(qint64(member.number));
                    static_cast<QByteArrayList*>(context)->append(
                        QByteArray(member.name.data(), qsizetype(member.name.size())) + '/' +
                        QByteArray::number(member.type) + '/' + value);
                },
                &members);
            return members.join(' ');
        };
        bool isShown = true;
        QCOMPARE(shown(&isShown), QByteArray());
        QVERIFY(!isShown); // the root is no JSON
        QVERIFY(d.enter("dat"));
        QCOMPARE(shown(&isShown), QByteArray("s/1/t n/2/-5 big/0/0 b/3/1 s/0/0 o/0/0"));
        QVERIFY(isShown);
    }

    void restoresPositionsInAnyOrder()
    {
        Decoder d("@platform\ndat:json:{\"a\":{\"x\":1,\"deep\":{\"x\":2}},\"b\":[{\"x\":4}],\"x\":5}\n");
        const uintptr_t root = d.position();
        const std::pair<QList<const char*>, std::optional<int>> paths[] = {{{}, {}},
                                                                           {{"@platform"}, {}},
                                                                           {{"@platform", "dat"}, 5},
                                                                           {{"@platform", "dat", "a"}, 1},
                                                                           {{"@platform", "dat", "a", "deep"}, 2},
                                                                           {{"@platform", "dat", "b"}, {}},
                                                                           {{"@platform", "dat", "b", nullptr}, 4}};
        std::vector<std::pair<uintptr_t, std::optional<int>>> expected;
        for (const auto& [names, value] : paths) {
            QVERIFY(d.restore(root));
            QVERIFY(d.enter(names));
            expected.push_back({d.position(), value});
        }
        for (const auto& one : expected) {
            QVERIFY(one.first != 0);
            for (const auto& other : expected) {
                QVERIFY(d.restore(one.first));
                QCOMPARE(d.integer("x"), one.second);
                QVERIFY(d.restore(other.first));
                QCOMPARE(d.integer("x"), other.second);
                QCOMPARE(one.first == other.first, &one == &other);
            }
        }
        QVERIFY(!d.restore(0));
        QVERIFY(!d.restore(~uintptr_t(0)));
        QVERIFY(!d.restore(expected.back().first + 1));
        QCOMPARE(d.position(), expected.back().first);
    }

    void findsMembersInAnyOrderLikeANaiveSearch()
    {
        QRandomGenerator random = seededRandom();
        for (int round = 0; round < 200; ++round) {
            // Few names, so that many are doubled and some are missing; lengths and ends alike, so that they are
            // mistaken for each other by anything less than a comparison.
            QList<QByteArray> names;
            QByteArray json;
            const int members = random.bounded(1, 300);
            for (int i = 0; i < members; ++i) {
                names.append('n' + QByteArray::number(random.bounded(100, 120)) + 'n');
                json += (i ? ",\"" : "\"") + names.last() + "\":" + (i % 3 == 0 ? "[" : "") + QByteArray::number(i) +
                        (i % 3 == 0 ? "]" : "");
            }
            Decoder d("dat:json:{" + json + "}");
            QVERIFY(d.enter("dat"));
            const uintptr_t dat = d.position();
            for (int i = 0; i < 60; ++i) {
                const int index = random.bounded(members);
                QCOMPARE(pps_decoder_goto_index(d, index), PPS_DECODER_OK);
                QCOMPARE(pps_decoder_name(d), names.at(index).constData());
                QCOMPARE(d.integer(nullptr), index % 3 == 0 ? std::nullopt : std::optional(index));
                const QByteArray name = 'n' + QByteArray::number(random.bounded(100, 120)) + 'n';
                const int expected = int(names.indexOf(name));
                if (expected >= 0 && expected % 3 == 0) {
                    QVERIFY(d.enter(name.constData()));
                    QCOMPARE(d.integer(nullptr), expected);
                    QVERIFY(d.restore(dat));
                } else {
                    QCOMPARE(d.integer(name.constData()), expected < 0 ? std::nullopt : std::optional(expected));
                }
            }
        }
    }

    void failsHarmlesslyWhenNotInitialized()
    {
        pps_decoder_t zero = {};
        int value = 7;
        pps_decoder_state_t state = {1};
        QCOMPARE(pps_decoder_get_int(&zero, "n", &value), PPS_DECODER_NOT_INITIALIZED);
        QCOMPARE(pps_decoder_push(&zero, nullptr), PPS_DECODER_NOT_INITIALIZED);
        QCOMPARE(pps_decoder_set_state(&zero, &state), PPS_DECODER_NOT_INITIALIZED);
        QCOMPARE(pps_decoder_length(&zero), 0);
        QCOMPARE(pps_decoder_name(&zero), nullptr);
        pps_decoder_cleanup(&zero);
        QCOMPARE(pps_decoder_initialize(&zero, nullptr), PPS_DECODER_OK);
        QCOMPARE(pps_decoder_length(&zero), 0);
        pps_decoder_cleanup(&zero);
        pps_decoder_cleanup(&zero);
    }

    void survivesRandomChanges()
    {
        QRandomGenerator random = seededRandom();
        const QByteArray pieces("{}[]\":,\\\n\r@0123456789truefalsn.-e\xC3\x80");
        int whole = 0;
        for (int i = 0; i < 20000; ++i) {
            QByteArray text(sample);
            for (int change = random.bounded(1, 4); change > 0; --change) {
                const int place = random.bounded(int(text.size()));
                const char piece = pieces[random.bounded(int(pieces.size()))];
                switch (random.bounded(3)) {
                case 0:
                    text[place] = piece;
                    break;
                case 1:
                    text.insert(place, piece);
                    break;
                default:
                    text.remove(place, random.bounded(1, 8));
                    break;
                }
            }
            Decoder d(text);
            const int nodes = visit(d);
            if (nodes < 0)
                QFAIL(qPrintable(QString::fromLatin1(text.toPercentEncoding())));
            whole += nodes == 22;
        }
        QVERIFY(whole > 1000);
    }
};

ZEL_TEST_WITHOUT_APPLICATION(TstDecoder)
#include "tst_decoder.moc"
