// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>

#include <simulator/wire/Wire.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtTest/QTest>

using namespace zelcore;

namespace {

QList<QByteArray> elementsOfSize(int count, int size)
{
    QList<QByteArray> elements;
    for (int i = 0; i < count; ++i)
        elements.append('"' + QByteArray::number(i).rightJustified(size - 2, '0') + '"');
    return elements;
}

qsizetype recordSize(const QByteArray& body)
{
    return wire::record(wire::envelope(QLatin1String("listElements"), body)).size();
}

} // namespace

class TstWire : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsWhatIsInTheForm()
    {
        for (const char* record : {"msg::zel\ndat:json:{\"a\":{\"b\":1}}\n", "msg::zel\ndat:json:{\"a\":{\"b\":1}}",
                                   "id:n:3\nmsg::zel\nmsgs::no\ndat:json:{\"a\":{\"b\":1}}\n\n"}) {
            QString problem;
            const auto message = wire::parse(record, &problem);
            QVERIFY2(message, qPrintable(problem));
            QCOMPARE(message->type, QStringLiteral("a"));
            QCOMPARE(message->body.value(QLatin1String("b")).toInt(), 1);
            QCOMPARE(message->json, QByteArray("{\"a\":{\"b\":1}}"));
        }
    }

    void refusesEverythingElseWithASentence()
    {
        for (const char* record :
             {"\n", "dat:json:{\"a\":{}}\n", "msg::bel\ndat:json:{\"a\":{}}\n", "msg:n:zel\ndat:json:{\"a\":{}}\n",
              "msg::zel\n", "msg::zel\ndat::{\"a\":{}}\n", "msg::zel\ndat:json:\n",
              "msg::zel\ndat:json:{\"a\":{\"b\":\n", "msg::zel\ndat:json:[]\n", "msg::zel\ndat:json:{}\n",
              "msg::zel\ndat:json:{\"a\":{},\"b\":{}}\n", "msg::zel\ndat:json:{\"a\":1}\n"}) {
            QString problem;
            QVERIFY2(!wire::parse(record, &problem), record);
            QVERIFY(!problem.isEmpty());
        }
    }

    void packsListsInOrderIntoRecordsThatFitOneRead()
    {
        const std::pair<int, int> countsAndSizes[] = {
            {0, 100}, {1, 100}, {1000, 400}, {7, 30000}, {3, int(wire::largestElement)}, {20000, 20}};
        for (const auto& [count, size] : countsAndSizes) {
            const QList<QByteArray> elements = elementsOfSize(count, size);
            const QList<QByteArray> bodies = wire::packElements(elements, QStringLiteral("platformUser"), true);
            QByteArrayList found;
            for (const QByteArray& body : bodies) {
                QVERIFY2(recordSize(body) <= wire::largestRecord, qPrintable(QString::number(recordSize(body))));
                const QJsonObject object = QJsonDocument::fromJson(body).object();
                QCOMPARE(object.value(QLatin1String("type")).toString(), QStringLiteral("platformUser"));
                QCOMPARE(object.value(QLatin1String("last")).toBool(), &body == &bodies.last());
                for (const QJsonValue element : object.value(QLatin1String("elements")).toArray())
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
