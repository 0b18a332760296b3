// SPDX-License-Identifier: Apache-2.0
#include <common/SeededRandom.h>

#include <pps/decoder.h>

#include <QTest>

#include <optional>
#include <vector>

namespace {

class Decoder
{
public:
    explicit Decoder(const QByteArray& text)
        : result(pps_decoder_initialize_n(&decoder, text.constData(), static_cast<size_t>(text.size())))
    {
    }
    ~Decoder() { pps_decoder_cleanup(&decoder); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
    operator pps_decoder_t*() { return &decoder; }

    std::optional<int> integer(const char* name)
    {
        int value = 0;
        return pps_decoder_get_int(&decoder, name, &value) == PPS_DECODER_OK ? std::optional(value) : std::nullopt;
    }
    // Null when there is no such string.
    QByteArray string(const char* name)
    {
        const char* text = nullptr;
        size_t length = 0;
        if (pps_decoder_get_string_n(&decoder, name, &text, &length) != PPS_DECODER_OK)
            return {};
        return text[length] == '\0' ? QByteArray(text, qsizetype(length)) : QByteArray("not ended");
    }
    uintptr_t position() const
    {
        pps_decoder_state_t state = {0};
        pps_decoder_get_state(&decoder, &state);
        return state.position;
    }
    bool restore(uintptr_t position)
    {
        const pps_decoder_state_t state = {position};
        return pps_decoder_set_state(&decoder, &state) == PPS_DECODER_OK;
    }

    pps_decoder_t decoder;
    const pps_decoder_error_t result;
};

QByteArray inDat(const QByteArray& json)
{
    return "@platform\ndat:json:" + json + '\n';
}

// Visits everything below where the decoder stands by every way that leads to it; answers how many nodes there are, or
// -1 when two ways disagree.
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
        const pps_node_type_t type = pps_decoder_type(d, nullptr);
        if (type == PPS_TYPE_NONE || (name && pps_decoder_type(d, name) == PPS_TYPE_NONE && qstrlen(name) > 0))
            return -1;
        if (type == PPS_TYPE_STRING && d.string(nullptr).isNull())
            return -1;
        double number = 0;
        if (type == PPS_TYPE_NUMBER && pps_decoder_get_double(d, nullptr, &number) != PPS_DECODER_OK)
            return -1;
        if (type != PPS_TYPE_ARRAY && type != PPS_TYPE_OBJECT) {
            ++nodes;
            continue;
        }
        const int below = pps_decoder_push(d, nullptr) == PPS_DECODER_OK ? visit(d) : -1;
        if (below < 0 || pps_decoder_pop(d) != PPS_DECODER_OK || d.position() != here)
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
    void readsObjectsAndEveryEncoding();
    void readsValuesByTypeAndRange();
    void readsUnpairedSurrogatesAsReplacement();
    void carriesNulCharacters();
    void entersAndLeavesContainers();
    void restoresPositionsInAnyOrder();
    void findsMembersInAnyOrderLikeANaiveSearch();
    void failsHarmlesslyWhenNotInitialized();
    void refusesWhatIsNoText();
    void refusesATextCutAnywhereInItsJson();
    void survivesRandomChanges();
};

void TstDecoder::readsObjectsAndEveryEncoding()
{
    Decoder d(sample);
    QCOMPARE(d.result, PPS_DECODER_OK);
    QCOMPARE(pps_decoder_length(d), 3);
    QCOMPARE(pps_decoder_name(d), "before");
    QCOMPARE(d.string("before"), QByteArray("the first object"));
    QCOMPARE(pps_decoder_goto_index(d, 2), PPS_DECODER_OK);
    QCOMPARE(pps_decoder_name(d), "@platform");
    QCOMPARE(pps_decoder_type(d, nullptr), PPS_TYPE_OBJECT);

    QCOMPARE(pps_decoder_push(d, "@first"), PPS_DECODER_OK);
    QCOMPARE(pps_decoder_length(d), 6);
    QCOMPARE(d.string("s"), QByteArray("a\\b\nc\0d\\x", 9));
    QCOMPARE(d.integer("n"), -12);
    bool yes = false;
    QCOMPARE(pps_decoder_get_bool(d, "yes", &yes), PPS_DECODER_OK);
    QVERIFY(yes);
    QCOMPARE(d.string("raw"), QByteArray("\x00\xFF\n\r", 4));
    QCOMPARE(pps_decoder_type(d, "odd"), PPS_TYPE_UNKNOWN);
    const char* text = nullptr;
    QCOMPARE(pps_decoder_get_string(d, "odd", &text), PPS_DECODER_BAD_TYPE);
    // "colon" is the encoding here, and it is not known.
    QCOMPARE(pps_decoder_type(d, "with"), PPS_TYPE_UNKNOWN);

    QCOMPARE(pps_decoder_pop(d), PPS_DECODER_OK);
    QCOMPARE(pps_decoder_name(d), "@first");
    QCOMPARE(pps_decoder_push(d, "@platform"), PPS_DECODER_OK);
    QCOMPARE(d.string("msg"), QByteArray("zel"));
    QCOMPARE(pps_decoder_push(d, "dat"), PPS_DECODER_OK);
    QCOMPARE(pps_decoder_name(d), "m");

    Decoder empty("");
    QCOMPARE(empty.result, PPS_DECODER_OK);
    QCOMPARE(pps_decoder_length(empty), 0);
    QCOMPARE(pps_decoder_name(empty), nullptr);

    Decoder twice("@a\nn:n:1\nn:n:2\n@a\nn:n:3\n");
    QCOMPARE(pps_decoder_push(twice, "@a"), PPS_DECODER_OK);
    QCOMPARE(twice.integer("n"), 1);
    // The first one is still where it was.
    QCOMPARE(pps_decoder_name(d), "m");
}

void TstDecoder::readsValuesByTypeAndRange()
{
    constexpr pps_decoder_error_t ok = PPS_DECODER_OK;
    constexpr pps_decoder_error_t bad = PPS_DECODER_BAD_TYPE;
    constexpr pps_decoder_error_t range = PPS_DECODER_OUT_OF_RANGE;
    const struct
    {
        QByteArray json;
        pps_node_type_t type;
        pps_decoder_error_t asInt, asInt64, asDouble;
    } values[] = {
        {"2147483647", PPS_TYPE_NUMBER, ok, ok, ok},
        {"2147483648", PPS_TYPE_NUMBER, range, ok, ok},
        {"-2147483648", PPS_TYPE_NUMBER, ok, ok, ok},
        {"-2147483649", PPS_TYPE_NUMBER, range, ok, ok},
        {"9223372036854775807", PPS_TYPE_NUMBER, range, ok, ok},
        {"9223372036854775808", PPS_TYPE_NUMBER, range, range, ok},
        {"1.0", PPS_TYPE_NUMBER, bad, bad, ok},
        {"1e3", PPS_TYPE_NUMBER, bad, bad, ok},
        {"\"1\"", PPS_TYPE_STRING, bad, bad, bad},
        {"true", PPS_TYPE_BOOL, bad, bad, bad},
        {"null", PPS_TYPE_NULL, bad, bad, bad},
        {"[1]", PPS_TYPE_ARRAY, bad, bad, bad},
        {"{}", PPS_TYPE_OBJECT, bad, bad, bad},
    };
    for (const auto& [json, type, asInt, asInt64, asDouble] : values) {
        Decoder d(inDat("{\"v\":" + json + '}'));
        QCOMPARE(pps_decoder_push(d, "@platform"), PPS_DECODER_OK);
        QCOMPARE(pps_decoder_push(d, "dat"), PPS_DECODER_OK);
        QCOMPARE(pps_decoder_type(d, "v"), type);

        constexpr int preset = 77;
        int small = preset;
        int64_t large = preset;
        double real = preset;
        bool truth = true;
        const char* text = nullptr;
        QCOMPARE(pps_decoder_get_int(d, "v", &small), asInt);
        QCOMPARE(small, asInt == PPS_DECODER_OK ? json.toInt() : preset);
        QCOMPARE(pps_decoder_get_int64(d, "v", &large), asInt64);
        QCOMPARE(qint64(large), asInt64 == PPS_DECODER_OK ? json.toLongLong() : preset);
        QCOMPARE(pps_decoder_get_double(d, nullptr, &real), asDouble);
        QCOMPARE(real, asDouble == PPS_DECODER_OK ? json.toDouble() : preset);
        QCOMPARE(pps_decoder_get_bool(d, "v", &truth) == PPS_DECODER_OK, type == PPS_TYPE_BOOL);
        QCOMPARE(pps_decoder_get_string(d, "v", &text) == PPS_DECODER_OK, type == PPS_TYPE_STRING);
        QCOMPARE(pps_decoder_push(d, "v") == PPS_DECODER_OK, type == PPS_TYPE_ARRAY || type == PPS_TYPE_OBJECT);

        QCOMPARE(pps_decoder_get_int(d, "missing", &small), PPS_DECODER_NOT_FOUND);
        QCOMPARE(pps_decoder_push(d, "missing"), PPS_DECODER_NOT_FOUND);
    }
}

void TstDecoder::readsUnpairedSurrogatesAsReplacement()
{
    // Written with R for a half that has no other, and P for a whole pair.
    const std::pair<const char*, const char*> cases[] = {
        {"\\ud83d\\ude00", "P"}, {"a\\uD83Db", "aRb"},     {"\\ud83d", "R"},
        {"\\uDE00", "R"},        {"\\ude00\\ud83d", "RR"}, {"\\ud83d\\ud83d\\ude00", "RP"},
        {"\\ud83d\\n", "R\n"},   {"\\\\ud83d", "\\ud83d"}, {"\\\\\\ud83d", "\\R"}};
    for (const auto& [escaped, text] : cases) {
        const QByteArray expected = QByteArray(text).replace('R', "\xEF\xBF\xBD").replace('P', "\xF0\x9F\x98\x80");
        Decoder d("dat:json:[\"" + QByteArray(escaped) + "\"]");
        QVERIFY2(pps_decoder_push(d, "dat") == PPS_DECODER_OK, escaped);
        QCOMPARE(d.string(nullptr), expected);
    }
}

void TstDecoder::carriesNulCharacters()
{
    Decoder d(inDat("{\"a\":1,\"a\\u0000b\":\"c\\u0000d\"}") + QByteArray(3, '\0'));
    QCOMPARE(d.result, PPS_DECODER_OK);
    QCOMPARE(pps_decoder_push(d, "@platform"), PPS_DECODER_OK);
    QCOMPARE(pps_decoder_push(d, "dat"), PPS_DECODER_OK);
    QCOMPARE(d.integer("a"), 1);
    QCOMPARE(pps_decoder_goto_index(d, 1), PPS_DECODER_OK);
    size_t length = 0;
    const char* const name = pps_decoder_name_n(d, &length);
    QCOMPARE(QByteArray(name, qsizetype(length)), QByteArray("a\0b", 3));
    QCOMPARE(d.string(nullptr), QByteArray("c\0d", 3));

    // A raw one is no JSON, and does not end the text either.
    QCOMPARE(Decoder(inDat(QByteArray("{\"a\0\":1}", 8))).result, PPS_DECODER_PARSE_ERROR);
}

void TstDecoder::entersAndLeavesContainers()
{
    Decoder d(sample);
    pps_decoder_push(d, "@platform");
    pps_decoder_push(d, "dat");
    pps_decoder_push(d, "m");
    QCOMPARE(pps_decoder_push(d, "list"), PPS_DECODER_OK);
    QCOMPARE(pps_decoder_length(d), 3);
    QCOMPARE(pps_decoder_name(d), nullptr);
    QCOMPARE(d.integer(nullptr), 1);
    QCOMPARE(d.integer("k"), std::nullopt);
    QCOMPARE(pps_decoder_goto_index(d, 3), PPS_DECODER_NOT_FOUND);
    QCOMPARE(pps_decoder_goto_index(d, -1), PPS_DECODER_NOT_FOUND);
    QCOMPARE(d.integer(nullptr), 1);
    QCOMPARE(pps_decoder_push(d, nullptr), PPS_DECODER_BAD_TYPE);
    QCOMPARE(pps_decoder_goto_index(d, 1), PPS_DECODER_OK);
    QCOMPARE(pps_decoder_push(d, nullptr), PPS_DECODER_OK);
    QCOMPARE(d.string("k"), QByteArray("v"));

    QCOMPARE(pps_decoder_pop(d), PPS_DECODER_OK);
    QCOMPARE(pps_decoder_type(d, nullptr), PPS_TYPE_OBJECT);
    for (const char* const name : {"list", "m", "dat", "@platform"}) {
        QCOMPARE(pps_decoder_pop(d), PPS_DECODER_OK);
        QCOMPARE(pps_decoder_name(d), name);
    }
    QCOMPARE(pps_decoder_pop(d), PPS_DECODER_NOT_FOUND);
    QCOMPARE(visit(d), 22);
}

void TstDecoder::restoresPositionsInAnyOrder()
{
    Decoder d(inDat("{\"a\":{\"x\":1,\"deep\":{\"x\":2}},\"b\":[{\"x\":4}],\"x\":5}"));
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
        for (const char* const name : names)
            QCOMPARE(pps_decoder_push(d, name), PPS_DECODER_OK);
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

void TstDecoder::findsMembersInAnyOrderLikeANaiveSearch()
{
    QRandomGenerator random = seededRandom();
    for (int round = 0; round < 200; ++round) {
        // Few names, so that many are doubled and some are missing; lengths and ends alike, so that they are mistaken
        // for each other by anything less than a comparison.
        QList<QByteArray> names;
        QByteArray json;
        const int members = random.bounded(1, 300);
        for (int i = 0; i < members; ++i) {
            names.append('n' + QByteArray::number(random.bounded(100, 120)) + 'n');
            json += (i ? ",\"" : "\"") + names.last() + "\":" + (i % 3 == 0 ? "[" : "") + QByteArray::number(i) +
                    (i % 3 == 0 ? "]" : "");
        }
        Decoder d("dat:json:{" + json + "}");
        QCOMPARE(pps_decoder_push(d, "dat"), PPS_DECODER_OK);
        const uintptr_t dat = d.position();
        for (int i = 0; i < 60; ++i) {
            const int index = random.bounded(members);
            QCOMPARE(pps_decoder_goto_index(d, index), PPS_DECODER_OK);
            QCOMPARE(pps_decoder_name(d), names.at(index).constData());
            QCOMPARE(pps_decoder_type(d, nullptr), index % 3 == 0 ? PPS_TYPE_ARRAY : PPS_TYPE_NUMBER);
            if (index % 3 != 0)
                QCOMPARE(d.integer(nullptr), index);
            const QByteArray name = 'n' + QByteArray::number(random.bounded(100, 120)) + 'n';
            const int expected = int(names.indexOf(name));
            if (expected >= 0 && expected % 3 == 0) {
                QCOMPARE(pps_decoder_push(d, name.constData()), PPS_DECODER_OK);
                QCOMPARE(d.integer(nullptr), expected);
                QVERIFY(d.restore(dat));
            } else {
                QCOMPARE(d.integer(name.constData()), expected < 0 ? std::nullopt : std::optional(expected));
            }
        }
    }
}

void TstDecoder::failsHarmlesslyWhenNotInitialized()
{
    pps_decoder_t zero = {};
    int value = 7;
    QCOMPARE(pps_decoder_get_int(&zero, "n", &value), PPS_DECODER_NOT_INITIALIZED);
    QCOMPARE(pps_decoder_push(&zero, nullptr), PPS_DECODER_NOT_INITIALIZED);
    QCOMPARE(pps_decoder_length(&zero), 0);
    QCOMPARE(pps_decoder_name(&zero), nullptr);
    QCOMPARE(pps_decoder_type(&zero, nullptr), PPS_TYPE_NONE);
    pps_decoder_cleanup(&zero);

    Decoder refused("no text");
    QCOMPARE(refused.result, PPS_DECODER_PARSE_ERROR);
    QCOMPARE(pps_decoder_push(refused, "no text"), PPS_DECODER_NOT_INITIALIZED);
    QCOMPARE(value, 7);
}

void TstDecoder::refusesWhatIsNoText()
{
    QList<QByteArray> texts{"@platform\nnonsense\n", "a:b\n",   "a::\xFF\n",   "\xFF::a\n", "@\xFF\n",
                            "a:n:\"1\"\n",           "a:b:1\n", "a:b64:A*==\n"};
    for (const char* json : {"", "{\"a\":[1}", "{} {}", "[1,]", "{\"a\"}", "[1e999]", "[99999999999999999999999]",
                             "[01]", "[\"\\x\"]", "[\"\\u12\"]", "[\"a\tb\"]", "[\"\xC0\xAF\"]", "[\"\xED\xA0\x80\"]"})
        texts.append(inDat(json));
    texts.append(inDat(QByteArray(60000, '[')));
    texts.append(inDat(QByteArray(20000, '[') + QByteArray(20000, ']')));
    texts.append(inDat(QByteArray("{\"a\":").repeated(10000)));
    for (const QByteArray& text : std::as_const(texts)) {
        QVERIFY2(Decoder(text).result == PPS_DECODER_PARSE_ERROR, text.left(60).constData());
        // What was refused leaves nothing behind for the next one.
        Decoder next("dat:json:{\"n\":1}");
        QCOMPARE(next.result, PPS_DECODER_OK);
        QCOMPARE(visit(next), 3);
    }
}

void TstDecoder::refusesATextCutAnywhereInItsJson()
{
    const QByteArray text(sample);
    const qsizetype json = text.indexOf("{\"m\"");
    for (qsizetype length = 0; length < text.size(); ++length) {
        Decoder d(text.left(length));
        if (length >= json)
            QCOMPARE(d.result, PPS_DECODER_PARSE_ERROR);
        if (d.result == PPS_DECODER_OK)
            QVERIFY(visit(d) > 0);
    }
    QCOMPARE(Decoder(text).result, PPS_DECODER_OK);
}

void TstDecoder::survivesRandomChanges()
{
    QRandomGenerator random = seededRandom();
    const QByteArray pieces("{}[]\":,\\\n\r@0123456789truefalsn.-e\xC3\x80");
    int taken = 0;
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
        if (d.result != PPS_DECODER_OK)
            continue;
        ++taken;
        if (visit(d) < 0)
            QFAIL(qPrintable(QString::fromLatin1(text.toPercentEncoding())));
    }
    QVERIFY(taken > 1000);
}

QTEST_APPLESS_MAIN(TstDecoder)
#include "tst_decoder.moc"
