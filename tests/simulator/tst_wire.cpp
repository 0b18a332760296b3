// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>

#include <simulator/wire/Wire.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtTest/QTest>

using namespace zelcore;
using namespace Qt::StringLiterals;

class TstWire : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsWhatIsInTheFormAndSaysWhatIsNot()
    {
        const QByteArray json = R"({"a":{"b":1}})";
        const std::pair<const char*, bool> rows[] = {
            {"msg::zel\ndat:json:{\"a\":{\"b\":1}}\n", true},
            {"msg::zel\ndat:json:{\"a\":{\"b\":1}}", true},
            {"id:n:3\nmsg::zel\nmsgs::no\ndat:json:{\"a\":{\"b\":1}}\n\n", true},
            {"\n", false},
            {"dat:json:{\"a\":{}}\n", false},
            {"msg::bel\ndat:json:{\"a\":{}}\n", false},
            {"msg:n:zel\ndat:json:{\"a\":{}}\n", false},
            {"msg::zel\n", false},
            {"msg::zel\ndat::{\"a\":{}}\n", false},
            {"msg::zel\ndat:json:\n", false},
            {"msg::zel\ndat:json:{\"a\":{\"b\":\n", false},
            {"msg::zel\ndat:json:[]\n", false},
            {"msg::zel\ndat:json:{}\n", false},
            {"msg::zel\ndat:json:{\"a\":{},\"b\":{}}\n", false},
            {"msg::zel\ndat:json:{\"a\":1}\n", false}};
        for (const auto& [record, isMessage] : rows) {
            QString problem;
            const auto message = wire::parse(record, &problem);
            QVERIFY2(message.has_value() == isMessage && problem.isEmpty() == isMessage, record);
            if (isMessage)
                QVERIFY2(message->type == "a"_L1 && message->body["b"_L1].toInt() == 1 && message->json == json,
                         record);
        }
    }

    void packsListsInOrderIntoRecordsThatFitOneRead()
    {
        const std::pair<int, int> countsAndSizes[] = {
            {0, 100}, {1, 100}, {1000, 400}, {7, 30000}, {3, int(wire::largestElement)}, {20000, 20}};
        for (const auto& [count, size] : countsAndSizes) {
            QByteArrayList elements;
            for (int i = 0; i < count; ++i)
                elements.append('"' + QByteArray::number(i).rightJustified(size - 2, '0') + '"');
            const QList<QByteArray> bodies = wire::packElements(elements, u"platformUser"_s, true);
            QByteArrayList found;
            for (const QByteArray& body : bodies) {
                QVERIFY(wire::record(wire::envelope("listElements"_L1, body)).size() <= wire::largestRecord);
                const QJsonObject object = QJsonDocument::fromJson(body).object();
                QCOMPARE(object.value("type"_L1).toString(), u"platformUser"_s);
                QCOMPARE(object.value("last"_L1).toBool(), &body == &bodies.last());
                for (const QJsonValue element : object.value("elements"_L1).toArray())
                    found.append('"' + element.toString().toLatin1() + '"');
            }
            QCOMPARE(found, elements);
            // Records that are mostly empty would cost an application a wake-up each.
            QVERIFY(bodies.size() <= 1 + qsizetype(count) * (size + 1) / (wire::largestRecord / 2));
        }
    }
};

ZEL_TEST(TstWire)
#include "tst_wire.moc"
