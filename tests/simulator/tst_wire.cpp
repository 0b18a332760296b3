// SPDX-License-Identifier: Apache-2.0
#include <simulator/Wire.h>

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
    void readsWhatIsInTheForm_data()
    {
        QTest::addColumn<QByteArray>("record");
        QTest::newRow("as the library writes it") << QByteArray("msg::zel\ndat:json:{\"a\":{\"b\":1}}\n");
        QTest::newRow("without the last newline") << QByteArray("msg::zel\ndat:json:{\"a\":{\"b\":1}}");
        QTest::newRow("attributes that mean nothing here")
            << QByteArray("id:n:3\nmsg::zel\nmsgs::no\ndat:json:{\"a\":{\"b\":1}}\n\n");
    }

    void readsWhatIsInTheForm()
    {
        QFETCH(QByteArray, record);
        QString problem;
        const auto message = wire::parse(record, &problem);
        QVERIFY2(message, qPrintable(problem));
        QCOMPARE(message->type, QStringLiteral("a"));
        QCOMPARE(message->body.value(QLatin1String("b")).toInt(), 1);
        QCOMPARE(message->json, QByteArray("{\"a\":{\"b\":1}}"));
    }

    void refusesEverythingElseWithASentence_data()
    {
        QTest::addColumn<QByteArray>("record");
        QTest::newRow("empty line") << QByteArray("\n");
        QTest::newRow("no msg") << QByteArray("dat:json:{\"a\":{}}\n");
        QTest::newRow("another msg") << QByteArray("msg::bel\ndat:json:{\"a\":{}}\n");
        QTest::newRow("msg with an encoding") << QByteArray("msg:n:zel\ndat:json:{\"a\":{}}\n");
        QTest::newRow("no dat") << QByteArray("msg::zel\n");
        QTest::newRow("dat as a string") << QByteArray("msg::zel\ndat::{\"a\":{}}\n");
        QTest::newRow("dat empty") << QByteArray("msg::zel\ndat:json:\n");
        QTest::newRow("dat cut") << QByteArray("msg::zel\ndat:json:{\"a\":{\"b\":\n");
        QTest::newRow("dat an array") << QByteArray("msg::zel\ndat:json:[]\n");
        QTest::newRow("no member") << QByteArray("msg::zel\ndat:json:{}\n");
        QTest::newRow("two members") << QByteArray("msg::zel\ndat:json:{\"a\":{},\"b\":{}}\n");
        QTest::newRow("member no object") << QByteArray("msg::zel\ndat:json:{\"a\":1}\n");
    }

    void refusesEverythingElseWithASentence()
    {
        QFETCH(QByteArray, record);
        QString problem;
        QVERIFY(!wire::parse(record, &problem));
        QVERIFY(!problem.isEmpty());
    }

    void packsListsInOrderIntoRecordsThatFitOneRead_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("size");
        QTest::newRow("none") << 0 << 100;
        QTest::newRow("one") << 1 << 100;
        QTest::newRow("many") << 1000 << 400;
        QTest::newRow("large") << 7 << 30000;
        QTest::newRow("largest") << 3 << int(wire::largestElement);
        QTest::newRow("small") << 20000 << 20;
    }

    void packsListsInOrderIntoRecordsThatFitOneRead()
    {
        QFETCH(int, count);
        QFETCH(int, size);
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

    void cutsStreamsAtWholeQuadruples_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("messages");
        QTest::newRow("nothing") << 0 << 0;
        QTest::newRow("1") << 1 << 1;
        QTest::newRow("15360") << 15360 << 1;
        QTest::newRow("15361") << 15361 << 2;
        QTest::newRow("32768") << 32768 << 3;
    }

    void cutsStreamsAtWholeQuadruples()
    {
        QFETCH(int, size);
        QFETCH(int, messages);
        QByteArray data;
        for (int i = 0; i < size; ++i)
            data.append(char(i * 7));
        const QList<QByteArray> bodies = wire::packStream(QStringLiteral("s \"1\""), data);
        QCOMPARE(bodies.size(), messages);
        QByteArray received;
        for (const QByteArray& body : bodies) {
            const QJsonObject object = QJsonDocument::fromJson(body).object();
            QCOMPARE(object.value(QLatin1String("id")).toString(), QStringLiteral("s \"1\""));
            QCOMPARE(object.contains(QLatin1String("last")), &body == &bodies.last());
            const QByteArray value = object.value(QLatin1String("value")).toString().toLatin1();
            QVERIFY(value.size() <= 20480);
            received += QByteArray::fromBase64(value);
        }
        QCOMPARE(received, data);
    }
};

QTEST_GUILESS_MAIN(TstWire)
#include "tst_wire.moc"
