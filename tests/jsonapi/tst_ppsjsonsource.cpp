// SPDX-License-Identifier: Apache-2.0
#include <iface/JsonMember.h>
#include <iface/JsonReaderAttribute.h>
#include <zel/PpsJsonSource.h>

#include <common/TestMain.h>
#include <device/Decoder.h>

#include <QtCore/QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

/// The value of "dat", and a source that reads it.
struct Message
{
    explicit Message(const QByteArray& json)
        : text("@platform\ndat:json:" + json + '\n')
    {
    }

    const QByteArray text;
    device::Decoder taken{text};
    const bool isEntered = pps_decoder_push(taken.get(), "@platform") == PPS_DECODER_OK &&
                           pps_decoder_push(taken.get(), "dat") == PPS_DECODER_OK;
    zel::PpsJsonSource source{taken.get()};
    const iface::JsonNodeReader root = source.startParsing();
};

} // namespace

class TstPpsJsonSource : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsValuesOfTheRightTypeAndLeavesOthersAlone()
    {
        const Message message(R"({"i":7,"d":1.5,"b":true,"s":"text","n":null,"o":{},"a":[]})");
        const iface::JsonNodeReader& root = message.root;
        // What each may be read as: int, double, bool, string or container. Objects and arrays are both entered by
        // push.
        const std::pair<const char*, QByteArray> members[] = {{"i", "id"}, {"d", "d"}, {"b", "b"}, {"s", "s"},
                                                              {"n", ""},   {"o", "c"}, {"a", "c"}, {"missing", ""}};
        for (const auto& [name, kinds] : members) {
            int i = -1;
            double d = -1;
            bool b = false;
            QString s = u"preset"_s;
            QCOMPARE(root.readInt(name, i), kinds.contains('i'));
            QCOMPARE(root.readDouble(name, d), kinds.contains('d'));
            QCOMPARE(root.readBool(name, b), kinds.contains('b'));
            QCOMPARE(root.readString(name, s), kinds.contains('s'));
            QCOMPARE(i, kinds.contains('i') ? 7 : -1);
            QCOMPARE(d, kinds == "id" ? 7.0 : kinds == "d" ? 1.5 : -1.0);
            QCOMPARE(b, kinds.contains('b'));
            QCOMPARE(s, kinds.contains('s') ? u"text"_s : u"preset"_s);
            QCOMPARE(root[name].object().isValid(), kinds.contains('c'));
            QCOMPARE(root[name].array().isValid(), kinds.contains('c'));
        }
        QCOMPARE(root.numChildren(), 7);
    }

    void readersDoNotDisturbEachOther()
    {
        const Message message(R"({"outer":{"inner":{"id":"in"},"list":[{"id":"l0"},["l1"],"l2"],"id":"out"}})");
        const iface::JsonNodeReader& root = message.root;
        const iface::JsonObjectReader outer = root["outer"].object();
        const iface::JsonObjectReader inner = outer["inner"].object();
        const iface::JsonArrayReader list = outer["list"].array();
        const auto textOf = [](const iface::JsonNodeReader& reader, iface::JsonChildIdentifier child) {
            QString text;
            reader.readString(child, text);
            return text;
        };
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(textOf(outer, "id"), u"out"_s);
            QCOMPARE(textOf(list, 2), u"l2"_s);
            QCOMPARE(textOf(inner, "id"), u"in"_s);
            QCOMPARE(textOf(list[1].array(), 0), u"l1"_s);
            QCOMPARE(textOf(list[0].object(), "id"), u"l0"_s);
            QCOMPARE(list.numChildren(), 3);
        }
        QString text;
        for (const int outside : {-1, 3, 1000}) {
            QVERIFY(!list.readString(outside, text));
            QVERIFY(!list[outside].object().isValid());
        }
    }

    void invalidReadersFailQuietly()
    {
        Message message(R"({"m":5})");
        zel::PpsJsonSource& source = message.source;
        const iface::JsonNodeReader& root = message.root;
        const iface::JsonObjectReader invalid = root["m"].object();
        QVERIFY(!invalid.isValid());
        QString text = u"preset"_s;
        QVERIFY(!invalid.readString("m", text));
        QVERIFY(!invalid.readString(0, text));
        QCOMPARE(text, u"preset"_s);
        QCOMPARE(invalid.numChildren(), 0);
        QVERIFY(!invalid["m"].object()["x"].array()[0].object().isValid());
        // Straight at the source, as a handler with a stale handle would.
        bool ok = true;
        QCOMPARE(source.push(nullptr, "m", ok), nullptr);
        QVERIFY(!ok);
        QVERIFY(!source.readString(nullptr, "m", text));
        QCOMPARE(source.numChildren(nullptr), 0);
    }

    void readsSeveralFieldsAtOnce()
    {
        const Message message(R"({"m":{"text":"t\u0000","number":3,"flag":true,"real":0.5,"empty":""}})");
        const iface::JsonObjectReader body = message.root["m"].object();
        QString text, empty, missing;
        int number = 0;
        bool flag = false;
        double real = 0;
        QCOMPARE(body.readFields("text", text, "missing", missing, "flag", flag, "number", number, "real", real,
                                 "empty", empty),
                 5);
        QCOMPARE(text, QString::fromUtf16(u"t\0", 2));
        QCOMPARE(number, 3);
        QVERIFY(flag);
        QCOMPARE(real, 0.5);
        QVERIFY(missing.isNull());
        QVERIFY(!empty.isNull());
        QVERIFY(body["text"].read(empty));
        QCOMPARE(empty, text);
    }

    void readsEveryTextWhole()
    {
        for (const QString& piece : {u"a"_s, u"\uFEFF"_s, u"\u00E9"_s, u"\u65E5"_s, u"\U0001F600"_s}) {
            for (const int count : {1, 2, 60, 256, 257, 1000}) {
                const QString text = piece.repeated(count) + u"z\uFEFF"_s;
                const Message message("[\"" + text.toUtf8() + "\"]");
                QString read;
                QVERIFY(message.root.readString(0, read));
                QCOMPARE(read, text);
            }
        }
        // An attribute may hold any bytes; more of them become characters than in any text.
        const QByteArray bytes(300, '\x80');
        const QByteArray attribute = "raw:b64:" + bytes.toBase64();
        device::Decoder taken(attribute);
        zel::PpsJsonSource source(taken.get());
        QString read;
        QVERIFY(source.startParsing().readString("raw", read));
        QCOMPARE(read, QString(300, QChar::ReplacementCharacter));
    }

    void showsAllMembersInOrder()
    {
        class Words final : public iface::JsonMemberVisitor
        {
        public:
            void member(const iface::JsonMember& member) override
            {
                int i = 0;
                bool b = false;
                QString s;
                const QString value = member.read(i)   ? QString::number(i)
                                      : member.read(b) ? u"bool %1"_s.arg(b)
                                      : member.read(s) ? s
                                                       : u"-"_s;
                words.append(QString::fromStdString(std::string(member.name())) + u'=' + value);
            }
            QStringList words;
        };
        Message message(
            R"({"s":"t\u00e9\ud83d\ude00xt","i":-7,"big":2147483648,"d":1.5,"b":true,"o":{"x":1},"a":[1],"i":8})");
        const iface::JsonNodeReader& root = message.root;
        Words seen;
        QVERIFY(root.visitMembers(seen));
        QCOMPARE(seen.words.join(u' '), u"s=t\u00e9\U0001F600xt i=-7 big=- d=- b=bool 1 o=- a=- i=8"_s);
        QVERIFY(!root["a"].array().visitMembers(seen));
        QVERIFY(!iface::JsonNodeReader().visitMembers(seen));
        QCOMPARE(seen.words.size(), 8);
    }

    void anAttributeWithoutASourceIsLoggedAndInvalid()
    {
        const iface::JsonObjectReader nothing(nullptr, nullptr, true);
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression(u"JsonSource.*\\[ ?57 ?\\]: .*NULL source!!"_s));
        QVERIFY(!nothing["a"].object().isValid());
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression(u"JsonSource.*\\[ ?35 ?\\]: .*NULL source!!"_s));
        QVERIFY(!nothing["a"].array().isValid());
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression(u"JsonSource.*\\[ ?57 ?\\]: .*NULL source!!"_s));
        QVERIFY(!iface::JsonReaderAttribute("a", nullptr).object().isValid());
    }
};

ZEL_TEST(TstPpsJsonSource)
#include "tst_ppsjsonsource.moc"

#include <common/TestMain.h>
