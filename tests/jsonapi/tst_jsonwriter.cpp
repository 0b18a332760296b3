// SPDX-License-Identifier: Apache-2.0

#include <zel/JsonWriter.h>
#include <zel/JsonWriterAttribute.h>

#include <common/TestMain.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

using namespace Qt::StringLiterals;

using zel::JsonWriter;

namespace {

QSharedPointer<JsonWriter> makeRoot(JsonWriter::AttributeType type = JsonWriter::Object)
{
    return QSharedPointer<JsonWriter>::create(u"m"_s, type, u"zel"_s);
}

QJsonObject parsed(const QString& text)
{
    return QJsonDocument::fromJson(text.toUtf8()).object();
}

} // namespace

class TstJsonWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keysTheMessageByTheRootsName()
    {
        QCOMPARE(makeRoot(JsonWriter::Object)->toString(), u"{\"m\":{}}"_s);
        QCOMPARE(makeRoot(JsonWriter::Array)->toString(), u"{\"m\":[]}"_s);
        QCOMPARE(makeRoot(JsonWriter::Null)->toString(), u"{\"m\":null}"_s);
        for (const QString& name : {u"json"_s, u"dat:json:"_s, u"json:{"_s, u"a\nb"_s, QString()}) {
            JsonWriter root(name, u"json:"_s);
            root.addAttribute(u"json:"_s, u"json:"_s);
            const QJsonObject message = parsed(root.toString());
            QCOMPARE(message.keys(), QStringList(name));
            QCOMPARE(message.value(name).toObject().value(u"json:"_s).toString(), u"json:"_s);
        }
    }

    void writesMembersInCallOrderWithDuplicates()
    {
        JsonWriter root(u"m"_s, u"zel"_s);
        root.addAttribute(u"z"_s, true);
        root.addAttribute(u"a"_s, u"text"_s);
        root.addAttribute(u"z"_s, -2147483647 - 1);
        root.addAttribute(u"n"_s);
        root.addAttribute(u"c"_s, "chars");
        root.addAttribute(u"c"_s, static_cast<const char*>(nullptr));
        QCOMPARE(root.toString(),
                 u"{\"m\":{\"z\":true,\"a\":\"text\",\"z\":-2147483648,\"n\":null,\"c\":\"chars\",\"c\":\"\"}}"_s);
    }

    void dropsNamesInArrays()
    {
        const auto root = makeRoot(JsonWriter::Array);
        root->addAttribute(u"ignored"_s, 5);
        root->addAttribute(u"ignored"_s);
        root->addAttribute(u"ignored"_s, false);
        root->addAttribute(u"ignored"_s, u"s"_s);
        root->addChild(u"ignored"_s, JsonWriter::Null);
        root->addChild(u"ignored"_s, JsonWriter::AttributeType(99));
        zel::JsonWriterAttribute(root, "ignored").array()->addAttribute(u"ignored"_s, 2);
        // An array without a name has an empty one; an object or null never gets here without.
        const auto object = root->addChild(u"ignored"_s, JsonWriter::Object);
        object->addChild(QString(), JsonWriter::Array)->addChild(QString(), JsonWriter::Object);
        zel::JsonWriterAttribute(object, "gr\xc3\xbc\xc3\x9f").object()->addAttribute(u"x"_s);
        QVERIFY(object->toString().endsWith(u'}'));
        QCOMPARE(root->toString(),
                 u"{\"m\":[5,null,false,\"s\",null,[2],{\"\":[{}],\"gr\u00fc\u00df\":{\"x\":null}}]}"_s);
    }

    void closesAChildOnceWhenItIsAskedForItsText()
    {
        auto root = makeRoot();
        auto child = root->addChild(u"c"_s, JsonWriter::Object);
        const QString soFar = child->toString();
        QVERIFY(soFar.endsWith(u"{\"m\":{\"c\":{}"_s));
        QCOMPARE(child->length(), soFar.toUtf8().size());
        QCOMPARE(child->toString(), soFar);
        child.reset();
        root->addAttribute(u"d"_s, 1);
        QCOMPARE(root->toString(), u"{\"m\":{\"c\":{},\"d\":1}}"_s);

        root = makeRoot();
        child = root->addChild(u"c"_s, JsonWriter::Array)->addChild(QString(), JsonWriter::Object);
        root.reset();
        child->addAttribute(u"a"_s, 1); // may outlive its root
        QVERIFY(child->length() > 0);
    }

    void refusesMembersAfterTheText()
    {
        JsonWriter root(u"the name"_s, QString());
        QVERIFY(!root.isReadOnly());
        const QString text = root.toString();
        const char error[] =
            "JsonWriter::isReadOnly error: cannot addAttribute or addChild on a JsonWriterobject after "
            "toString() has been called\n Name:  \"the name\" \nType:  4";
        for (int i = 0; i < 3; ++i)
            QTest::ignoreMessage(QtCriticalMsg, error);
        QVERIFY(root.isReadOnly());
        root.addAttribute(u"a"_s, 1);
        QVERIFY(root.addChild(u"c"_s, JsonWriter::Object).isNull());
        const int length = root.length();
        QCOMPARE(root.toString(), text);
        QCOMPARE(root.length(), length);
    }

    void carriesAnyCharacter()
    {
        QStringList values{u"\"quoted\" \\ /"_s, u"\b\f\n\r\t\u0001\u001f\u007f"_s, QString::fromUtf16(u"a\0b", 3),
                           u"\U0001f600 \u05e9\u05dc\u05d5\u05dd \u4f60\u597d"_s, QString(100000, u'x')};
        for (int size = 254; size <= 258; ++size)
            values << QString(size, u'y') << QString(size, u'\u00e4');
        for (const QString& value : std::as_const(values)) {
            JsonWriter root(value, QString());
            root.addAttribute(value, value);
            const QJsonObject message = parsed(root.toString());
            QCOMPARE(message.keys(), QStringList(value));
            QCOMPARE(message.value(value).toObject().value(value).toString(), value);
        }
    }
};

ZEL_TEST(TstJsonWriter)
#include "tst_jsonwriter.moc"

#include <common/TestMain.h>
