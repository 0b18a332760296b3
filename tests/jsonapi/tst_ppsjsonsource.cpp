// SPDX-License-Identifier: Apache-2.0
#include <iface/JsonReaderAttribute.h>
#include <zel/PpsJsonSource.h>

#include <QRegularExpression>
#include <QTest>

namespace {

/// A decoder that stands in the value of "dat".
struct Message
{
    explicit Message(const QByteArray& json)
    {
        const QByteArray text = "@platform\ndat:json:" + json + '\n';
        pps_decoder_initialize_n(&decoder, text.constData(), size_t(text.size()));
        pps_decoder_push(&decoder, "@platform");
        entered = pps_decoder_push(&decoder, "dat") == PPS_DECODER_OK;
    }
    ~Message() { pps_decoder_cleanup(&decoder); }
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;

    pps_decoder_t decoder = {};
    bool entered = false;
};

} // namespace

class TstPpsJsonSource : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsValuesOfTheRightTypeAndLeavesOthersAlone();
    void readsLongsLikeInts();
    void readersDoNotDisturbEachOther();
    void invalidReadersFailQuietly();
    void readsSeveralFieldsAtOnce();
    void anAttributeWithoutASourceIsLoggedAndInvalid();
};

void TstPpsJsonSource::readsValuesOfTheRightTypeAndLeavesOthersAlone()
{
    Message message(R"({"i":7,"d":1.5,"b":true,"s":"text","n":null,"o":{},"a":[]})");
    QVERIFY(message.entered);
    zel::PpsJsonSource source(&message.decoder);
    const iface::JsonNodeReader root = source.startParsing();
    const struct
    {
        const char* name;
        bool isInt, isDouble, isBool, isString, isObject, isArray;
    } members[] = {
        {"i", true, true, false, false, false, false},   {"d", false, true, false, false, false, false},
        {"b", false, false, true, false, false, false},  {"s", false, false, false, true, false, false},
        {"n", false, false, false, false, false, false}, {"o", false, false, false, false, true, false},
        {"a", false, false, false, false, false, true},  {"missing", false, false, false, false, false, false},
    };
    for (const auto& member : members) {
        int i = -1;
        double d = -1;
        bool b = true;
        QString s = u"preset"_qs;
        QCOMPARE(root.readInt(member.name, i), member.isInt);
        QCOMPARE(root.readDouble(member.name, d), member.isDouble);
        QCOMPARE(root.readBool(member.name, b), member.isBool);
        QCOMPARE(root.readString(member.name, s), member.isString);
        QCOMPARE(i, member.isInt ? 7 : -1);
        QCOMPARE(d, member.isInt ? 7.0 : member.isDouble ? 1.5 : -1.0);
        QCOMPARE(b, true);
        QCOMPARE(s, member.isString ? u"text"_qs : u"preset"_qs);
        // Objects and arrays are both entered by push; a scalar never is.
        QCOMPARE(root[member.name].object().isValid(), member.isObject || member.isArray);
        QCOMPARE(root[member.name].array().isValid(), member.isObject || member.isArray);
    }
    QCOMPARE(root.numChildren(), 7);
}

void TstPpsJsonSource::readsLongsLikeInts()
{
    Message message(R"({"m":{"max":2147483647,"min":-2147483648,"above":2147483648,"real":1.0}})");
    zel::PpsJsonSource source(&message.decoder);
    const iface::JsonNodeReader root = source.startParsing();
    const iface::JsonObjectReader object = root["m"].object();
    long value = 5;
    QVERIFY(object.readLong("max", value));
    QCOMPARE(value, 2147483647L);
    QVERIFY(object.readLong("min", value));
    QCOMPARE(value, -2147483648L);
    QVERIFY(!object.readLong("above", value));
    QVERIFY(!object.readLong("real", value));
    QCOMPARE(value, -2147483648L);
}

void TstPpsJsonSource::readersDoNotDisturbEachOther()
{
    Message message(R"({"outer":{"inner":{"id":"in"},"list":[{"id":"l0"},["l1"],"l2"],"id":"out"}})");
    zel::PpsJsonSource source(&message.decoder);
    const iface::JsonNodeReader root = source.startParsing();
    const iface::JsonObjectReader outer = root["outer"].object();
    const iface::JsonObjectReader inner = outer["inner"].object();
    const iface::JsonArrayReader list = outer["list"].array();
    const auto textOf = [](const iface::JsonNodeReader& reader, iface::JsonChildIdentifier child) {
        QString text;
        reader.readString(child, text);
        return text;
    };
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(textOf(outer, "id"), u"out"_qs);
        QCOMPARE(textOf(list, 2), u"l2"_qs);
        QCOMPARE(textOf(inner, "id"), u"in"_qs);
        QCOMPARE(textOf(list[1].array(), 0), u"l1"_qs);
        QCOMPARE(textOf(list[0].object(), "id"), u"l0"_qs);
        QCOMPARE(list.numChildren(), 3);
    }
    QString text;
    for (const int outside : {-1, 3, 1000}) {
        QVERIFY(!list.readString(outside, text));
        QVERIFY(!list[outside].object().isValid());
    }
}

void TstPpsJsonSource::invalidReadersFailQuietly()
{
    Message message(R"({"m":5})");
    zel::PpsJsonSource source(&message.decoder);
    const iface::JsonNodeReader root = source.startParsing();
    const iface::JsonObjectReader invalid = root["m"].object();
    QVERIFY(!invalid.isValid());
    QString text = u"preset"_qs;
    QVERIFY(!invalid.readString("m", text));
    QVERIFY(!invalid.readString(0, text));
    QCOMPARE(text, u"preset"_qs);
    QCOMPARE(invalid.numChildren(), 0);
    QVERIFY(!invalid["m"].object()["x"].array()[0].object().isValid());
    // Straight at the source, as a handler with a stale handle would.
    bool ok = true;
    QCOMPARE(source.push(nullptr, "m", ok), nullptr);
    QVERIFY(!ok);
    QVERIFY(!source.readString(nullptr, "m", text));
    QCOMPARE(source.numChildren(nullptr), 0);
}

void TstPpsJsonSource::readsSeveralFieldsAtOnce()
{
    Message message(R"({"m":{"text":"t\u0000","number":3,"flag":true,"real":0.5,"empty":""}})");
    zel::PpsJsonSource source(&message.decoder);
    const iface::JsonNodeReader root = source.startParsing();
    QString text, empty, missing;
    int number = 0;
    bool flag = false;
    double real = 0;
    QCOMPARE(root["m"].object().readFields("text", text, "missing", missing, "flag", flag, "number", number, "real",
                                           real, "empty", empty),
             5);
    QCOMPARE(text, QString::fromUtf16(u"t\0", 2));
    QCOMPARE(number, 3);
    QVERIFY(flag);
    QCOMPARE(real, 0.5);
    QVERIFY(missing.isNull());
    QVERIFY(!empty.isNull());
    QVERIFY(root["m"].object()["text"].read(empty));
    QCOMPARE(empty, text);
}

void TstPpsJsonSource::anAttributeWithoutASourceIsLoggedAndInvalid()
{
    const iface::JsonObjectReader nothing(nullptr, nullptr, true);
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(u"JsonSource.*\\[ ?57 ?\\]: .*NULL source!!"_qs));
    QVERIFY(!nothing["a"].object().isValid());
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(u"JsonSource.*\\[ ?35 ?\\]: .*NULL source!!"_qs));
    QVERIFY(!nothing["a"].array().isValid());
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(u"JsonSource.*\\[ ?57 ?\\]: .*NULL source!!"_qs));
    QVERIFY(!iface::JsonReaderAttribute("a", nullptr).object().isValid());
}

QTEST_GUILESS_MAIN(TstPpsJsonSource)
#include "tst_ppsjsonsource.moc"
