// SPDX-License-Identifier: Apache-2.0
#include <common/FailingAllocations.h>
#include <common/TestMain.h>

#include <zel/JsonWriter.h>
#include <zel/JsonWriterAttribute.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

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
        const auto addOneOfEach = [](JsonWriter& writer) {
            writer.addAttribute(u"z"_s, true);
            writer.addAttribute(u"a"_s, u"text"_s);
            writer.addAttribute(u"z"_s, -2147483647 - 1);
            writer.addAttribute(u"n"_s);
            writer.addAttribute(u"c"_s, "chars");
            writer.addAttribute(u"c"_s, static_cast<const char*>(nullptr));
        };
        addOneOfEach(root);
        root.next(); // has no place for another
        const auto array = root.addChild(u"l"_s, JsonWriter::Array);
        addOneOfEach(*array);
        array->addChild(u"ignored"_s, JsonWriter::Null);
        array->addChild(u"ignored"_s, JsonWriter::AttributeType(99));
        zel::JsonWriterAttribute(array, "ignored").array()->addAttribute(u"ignored"_s, 2);
        // An array without a name has an empty one; an object or null never gets here without.
        const auto object = array->addChild(u"ignored"_s, JsonWriter::Object);
        object->addChild(QString(), JsonWriter::Array)->addChild(QString(), JsonWriter::Object);
        object->next();
        object->toString();
        object->next();
        zel::JsonWriterAttribute(object, "gr\xc3\xbc\xc3\x9f").object()->addAttribute(u"x"_s);
        QVERIFY(object->toString().endsWith(u'}') && array->toString().endsWith(u']'));
        QCOMPARE(root.toString(),
                 u"{\"m\":{\"z\":true,\"a\":\"text\",\"z\":-2147483648,\"n\":null,\"c\":\"chars\",\"c\":\"\","
                 "\"l\":[true,\"text\",-2147483648,null,\"chars\",\"\",null,[2],"
                 "{\"\":[{}]},{},{\"gr\u00fc\u00df\":{\"x\":null}}]}}"_s);
    }

    void closesAChildOnceWhenItIsAskedForItsTextAndTakesNoMoreThen()
    {
        auto root = QSharedPointer<JsonWriter>::create(u"m"_s, JsonWriter::Object, u"zel"_s);
        auto child = root->addChild(u"the name"_s, JsonWriter::Object);
        const QString soFar = child->toString();
        QVERIFY(soFar.endsWith(u"{\"m\":{\"the name\":{}"_s));
        QCOMPARE(child->length(), soFar.toUtf8().size());
        const char error[] =
            "JsonWriter::isReadOnly error: cannot addAttribute or addChild on a JsonWriterobject after "
            "toString() has been called\n Name:  \"the name\" \nType:  4";
        for (int i = 0; i < 3; ++i)
            QTest::ignoreMessage(QtCriticalMsg, error);
        QVERIFY(child->isReadOnly());
        child->addAttribute(u"a"_s, 1);
        QVERIFY(child->addChild(u"c"_s, JsonWriter::Object).isNull());
        QCOMPARE(child->toString(), soFar);
        child = root->addChild(u"d"_s, JsonWriter::Object);
        root.reset();
        child->addAttribute(u"a"_s, 1); // may outlive its root
        QVERIFY(child->toString().endsWith(u",\"d\":{\"a\":1}"_s));
    }

    // As the root's name, a member's and a value; some look like what stands before the text in the device's form.
    void carriesAnyCharacter()
    {
        QStringList values = u"json|dat:json:|json:{|a\nb||a\0b"_s.split(u'|');
        for (const int size : {254, 255, 256, 257, 100000})
            values << QString(size, u'y') << QString(size, u'\u00e4');
        for (const QString& value : std::as_const(values)) {
            JsonWriter root(value, QString());
            root.addAttribute(value, value);
            const QJsonObject message = QJsonDocument::fromJson(root.toString().toUtf8()).object();
            QCOMPARE(message, (QJsonObject{{value, QJsonObject{{value, value}}}}));
        }
    }
};

ZEL_TEST(TstJsonWriter)
#include "tst_jsonwriter.moc"
