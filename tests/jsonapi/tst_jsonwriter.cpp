// SPDX-License-Identifier: Apache-2.0
#include <common/FailingAllocations.h>
#include <common/TestMain.h>

#include <zel/JsonWriter.h>
#include <zel/JsonWriterAttribute.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

using namespace Qt::StringLiterals;

using zel::JsonWriter;

class TstJsonWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasAWholeTextOrNoneWithoutMemory()
    {
        const auto act = [](QString& text) {
            JsonWriter root(QString(300, u'n'), u"zel"_s); // children are Qt's shared pointers, which end here
            root.addAttribute(u"a"_s, QString(2000, u'x'));
            text = root.toString();
        };
        const auto check = [](const QString& text) {
            QVERIFY(text.isEmpty() || (text.size() > 2300 && text.endsWith(u"}}"_s)));
        };
        QVERIFY(failing::eachInTurn([] { return std::make_unique<QString>(); }, act, check) > 0);
    }

    void writesMembersInCallOrderAndDropsNamesInArrays()
    {
        JsonWriter root(u"m"_s, u"zel"_s);
        root.addAttribute(u"z"_s, true);
        root.addAttribute(u"a"_s, u"text"_s);
        root.addAttribute(u"z"_s, -2147483647 - 1);
        root.addAttribute(u"n"_s);
        root.addAttribute(u"c"_s, "chars");
        root.addAttribute(u"c"_s, static_cast<const char*>(nullptr));
        const auto array = root.addChild(u"l"_s, JsonWriter::Array);
        array->addAttribute(u"ignored"_s, 5);
        array->addAttribute(u"ignored"_s);
        array->addAttribute(u"ignored"_s, false);
        array->addAttribute(u"ignored"_s, u"s"_s);
        array->addChild(u"ignored"_s, JsonWriter::Null);
        array->addChild(u"ignored"_s, JsonWriter::AttributeType(99));
        zel::JsonWriterAttribute(array, "ignored").array()->addAttribute(u"ignored"_s, 2);
        // An array without a name has an empty one; an object or null never gets here without.
        const auto object = array->addChild(u"ignored"_s, JsonWriter::Object);
        object->addChild(QString(), JsonWriter::Array)->addChild(QString(), JsonWriter::Object);
        zel::JsonWriterAttribute(object, "gr\xc3\xbc\xc3\x9f").object()->addAttribute(u"x"_s);
        QVERIFY(object->toString().endsWith(u'}') && array->toString().endsWith(u']'));
        QCOMPARE(root.toString(),
                 u"{\"m\":{\"z\":true,\"a\":\"text\",\"z\":-2147483648,\"n\":null,\"c\":\"chars\",\"c\":\"\","
                 "\"l\":[5,null,false,\"s\",null,[2],{\"\":[{}],\"gr\u00fc\u00df\":{\"x\":null}}]}}"_s);
    }

    void closesAChildOnceWhenItIsAskedForItsText()
    {
        auto root = QSharedPointer<JsonWriter>::create(u"m"_s, JsonWriter::Object, u"zel"_s);
        auto child = root->addChild(u"c"_s, JsonWriter::Object);
        const QString soFar = child->toString();
        QVERIFY(soFar.endsWith(u"{\"m\":{\"c\":{}"_s));
        QCOMPARE(child->length(), soFar.toUtf8().size());
        QCOMPARE(child->toString(), soFar);
        child = root->addChild(u"d"_s, JsonWriter::Object);
        root.reset();
        child->addAttribute(u"a"_s, 1); // may outlive its root
        QVERIFY(child->toString().endsWith(u",\"d\":{\"a\":1}"_s));
    }

    void writesOneElementAfterTheOther()
    {
        JsonWriter root(u"m"_s, JsonWriter::Array, u"zel"_s);
        root.next(); // has no place for another
        {
            const auto element = root.addChild(QString(), JsonWriter::Object);
            element->addAttribute(u"a"_s, 1);
            element->next();
            element->toString();
            element->next();
            element->addAttribute(u"b"_s, 2);
        }
        QCOMPARE(root.toString(), u"{\"m\":[{\"a\":1},{},{\"b\":2}]}"_s);
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
        QCOMPARE(root.toString(), text);
    }

    // As the root's name, a member's and a value; some look like what stands before the text in the device's form.
    void carriesAnyCharacter()
    {
        QStringList values = u"json|dat:json:|json:{|a\nb||a\0b"_s.split(u'|');
        values << QString(100000, u'x');
        for (int size = 254; size <= 258; ++size)
            values << QString(size, u'y') << QString(size, u'\u00e4');
        for (const QString& value : std::as_const(values)) {
            JsonWriter root(value, QString());
            root.addAttribute(value, value);
            const QJsonObject message = QJsonDocument::fromJson(root.toString().toUtf8()).object();
            QCOMPARE(message, (QJsonObject{{value, QJsonObject{{value, value}}}}));
        }
        const auto array = QSharedPointer<JsonWriter>::create(u"m"_s, JsonWriter::Array, u"zel"_s);
        QCOMPARE(array->toString(), u"{\"m\":[]}"_s);
    }
};

ZEL_TEST(TstJsonWriter)
#include "tst_jsonwriter.moc"
