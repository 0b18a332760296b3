// SPDX-License-Identifier: Apache-2.0

#include <common/FakePipe.h>
#include <common/TestMain.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace {

/// Whether each child may be read as what it is and as nothing else, with the readers of all above it still in use.
bool isReadAs(const iface::JsonNodeReader& reader, iface::JsonChildIdentifier child, const QJsonValue& value)
{
    int i = -1;
    long l = -1;
    double d = -1;
    bool b = false;
    QString s;
    const bool isInteger = value.isDouble() && value.toDouble() == value.toInt();
    bool isRight = reader.readInt(child, i) == isInteger && (!isInteger || i == value.toInt());
    isRight = isRight && reader.readLong(child, l) == isInteger && l == i;
    isRight = isRight && reader.readDouble(child, d) == value.isDouble() && d == value.toDouble(-1);
    isRight = isRight && reader.readBool(child, b) == value.isBool() && b == value.toBool(false);
    isRight = isRight && reader.readString(child, s) == value.isString() && s == value.toString();
    const bool isContainer = value.isObject() || value.isArray();
    const iface::JsonObjectReader object = reader[child].object();
    const iface::JsonArrayReader array = reader[child].array(); // both are entered by push
    isRight = isRight && object.isValid() == isContainer && array.isValid() == isContainer;
    const QJsonObject members = value.toObject();
    for (auto it = members.begin(); it != members.end(); ++it)
        isRight = isRight && isReadAs(object, it.key().toUtf8().constData(), it.value());
    const QJsonArray elements = value.toArray();
    for (int k = value.isArray() ? -1 : 0; k < elements.size(); ++k)
        isRight = isRight && isReadAs(array, k, k < 0 ? QJsonValue(QJsonValue::Undefined) : elements.at(k));
    return isRight && array.numChildren() == members.size() + elements.size();
}

} // namespace

class TstPpsJsonSource : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsValuesOfTheRightTypeAndLeavesOthersAlone()
    {
        const QByteArray json = R"({"i":7,"d":1.5,"b":true,"s":"t\u0000","e":"","n":null,"o":{},"a":[],
            "deep":{"inner":{"id":"in"},"list":[{"id":"l0"},["l1",true],"l2",-3],"id":"out"}})";
        const ReadMessage message(QByteArray("{\"all\":" + json).replace('\n', "") + '}');
        QVERIFY(isReadAs(message.root, "all", QJsonDocument::fromJson(json).object()));
        QVERIFY(isReadAs(message.root, "missing", QJsonValue(QJsonValue::Undefined)));
        // Several at once.
        QString text;
        double real = 0;
        const auto all = message.root["all"].object();
        QCOMPARE(all.readFields("s", text, "missing", text, "d", real), 2);
        QVERIFY(text == QString::fromUtf16(u"t\0", 2) && real == 1.5);
        QVERIFY(all["e"].read(text) && text.isEmpty() && !text.isNull());
    }

    void invalidReadersFailQuietly()
    {
        ReadMessage message(R"({"m":5})");
        const iface::JsonObjectReader invalid = message.root["m"].object();
        QVERIFY(!invalid.isValid());
        QString text;
        QVERIFY(!invalid.readString("m", text) && !invalid.readString(0, text));
        QCOMPARE(invalid.numChildren(), 0);
        QVERIFY(!invalid["m"].object()["x"].array()[0].object().isValid());
        // Straight at the source, as a handler with a stale handle would.
        bool ok = true;
        QCOMPARE(message.source.push(nullptr, "m", ok), nullptr);
        QVERIFY(!ok && !message.source.readString(nullptr, "m", text) && message.source.numChildren(nullptr) == 0);
        // A reader without a source says so, under the numbers that readers of logs know.
        const iface::JsonObjectReader nothing(nullptr, nullptr, true);
        for (const int line : {57, 35})
            QTest::ignoreMessage(QtDebugMsg,
                                 QRegularExpression(u"JsonSource.*\\[ ?%1 ?\\]: .*NULL source!!"_s.arg(line)));
        QVERIFY(!nothing["a"].object().isValid() && !nothing["a"].array().isValid());
    }

    void readsEveryTextWhole()
    {
        for (const QString& piece : {u"a"_s, u"\uFEFF"_s, u"\u00E9"_s, u"\u65E5"_s, u"\U0001F600"_s}) {
            for (const int count : {1, 2, 60, 256, 257, 1000}) {
                const QString text = piece.repeated(count) + u"z\uFEFF"_s;
                const ReadMessage message("[\"" + text.toUtf8() + "\"]");
                QString read;
                QVERIFY(message.root.readString(0, read));
                QCOMPARE(read, text);
            }
        }
        // An attribute may hold any bytes; more of them become characters than in any text.
        const QByteArray attribute = "raw:b64:" + QByteArray(300, '\x80').toBase64();
        device::Decoder taken(attribute);
        zel::PpsJsonSource source(taken.get());
        QString read;
        QVERIFY(source.startParsing().readString("raw", read));
        QCOMPARE(read, QString(300, QChar::ReplacementCharacter));
    }
};

ZEL_TEST(TstPpsJsonSource)
#include "tst_ppsjsonsource.moc"
