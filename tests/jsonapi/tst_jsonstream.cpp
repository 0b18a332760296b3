// SPDX-License-Identifier: Apache-2.0
#include <common/FakePipe.h>
#include <zel/JsonStreamFunctorAdapter.h>

#include <QJsonObject>
#include <QRandomGenerator>
#include <QTest>

#include <memory>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace {

QByteArray chunk(const QString& id, const QByteArray& bytes, bool last)
{
    QJsonObject body{{u"id"_s, id}, {u"value"_s, QString::fromLatin1(bytes.toBase64())}};
    if (last)
        body.insert(u"last"_s, true);
    return QJsonDocument(QJsonObject{{u"stream"_s, body}}).toJson(QJsonDocument::Compact);
}

QByteArray randomBytes(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator random(quint32(size) + 1);
    for (char& byte : bytes)
        byte = char(random.generate());
    return bytes;
}

} // namespace

class TstJsonStream : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        pipe = QSharedPointer<FakePipe>::create();
        received.clear();
        stream = QSharedPointer<zel::JsonStream>::create(pipe, [this](const QString& id, const QVariant& data) {
            received.append({id, data.toByteArray()});
        });
    }

    void writesMembersInOrder()
    {
        stream->send(u"s1"_s, "abc");
        QVERIFY(pipe->expectSentText(R"({"stream":{"id":"s1","value":"YWJj","last":true}})"));
    }

    void reassemblesWhatItSends_data()
    {
        QTest::addColumn<int>("bytes");
        QTest::addColumn<QList<int>>("characters");
        QTest::newRow("nothing") << 0 << QList<int>();
        QTest::newRow("one byte") << 1 << QList<int>{4};
        QTest::newRow("20480 characters") << 15360 << QList<int>{20480};
        QTest::newRow("20484 characters") << 15361 << QList<int>{20480, 4};
        QTest::newRow("32768 bytes") << 32768 << QList<int>{20480, 20480, 2732};
    }

    void reassemblesWhatItSends()
    {
        QFETCH(int, bytes);
        QFETCH(QList<int>, characters);
        const QByteArray data = randomBytes(bytes);
        stream->send(u"id"_s, data);
        for (const int size : characters) {
            QVERIFY(received.isEmpty());
            const QByteArray message = pipe->takeSent();
            const QJsonObject body = QJsonDocument::fromJson(message).object().value(u"stream"_s).toObject();
            QCOMPARE(body.value(u"value"_s).toString().size(), size);
            QCOMPARE(body.contains(u"last"_s), pipe->sentCount() == 0);
            pipe->inject(message);
        }
        QVERIFY(pipe->expectNothingSent());
        const QList<QPair<QString, QByteArray>> whole{{u"id"_s, data}};
        QVERIFY(bytes > 0 ? received == whole : received.isEmpty());
    }

    void keepsInterleavedStreamsApart()
    {
        pipe->inject(chunk(u"a"_s, "a1", false));
        pipe->inject(chunk(u"b"_s, "b1", false));
        pipe->inject(chunk(u"a"_s, "a2", false));
        pipe->inject(chunk(u"c"_s, "c1", true));
        pipe->inject(chunk(u"b"_s, "b2", true));
        pipe->inject(chunk(u"a"_s, "a3", true));
        pipe->inject(chunk(u"a"_s, "again", true));
        const QList<QPair<QString, QByteArray>> expected{
            {u"c"_s, "c1"}, {u"b"_s, "b1b2"}, {u"a"_s, "a1a2a3"}, {u"a"_s, "again"}};
        QCOMPARE(received, expected);
    }

    void takesMissingMembersAsEmpty()
    {
        pipe->inject(R"({"stream":{"last":true}})");
        pipe->inject(R"({"stream":{"id":5,"value":[],"last":"true"}})");
        pipe->inject(R"({"stream":{"id":"x","value":"!not base64!","last":true}})");
        QCOMPARE(received.size(), 2);
        QCOMPARE(received.at(0), qMakePair(QString(), QByteArray()));
        QCOMPARE(received.at(1).first, u"x"_s);
    }

    void aNestedTransferOfTheSameIdStartsAfresh()
    {
        bool nested = false;
        connect(stream.data(), &zel::JsonStream::dataReceived, this, [&](const QString&, const QVariant&) {
            if (!std::exchange(nested, true)) {
                QVERIFY(received.isEmpty()); // the signal comes before the callback
                pipe->inject(chunk(u"a"_s, "new ", false));
            }
        });
        pipe->inject(chunk(u"a"_s, "old", true));
        pipe->inject(chunk(u"a"_s, "data", true));
        const QList<QPair<QString, QByteArray>> expected{{u"a"_s, "old"}, {u"a"_s, "new data"}};
        QCOMPARE(received, expected);
    }

    void forgetsHalfATransfer()
    {
        pipe->inject(chunk(u"a"_s, "half", false));
        pipe->inject(chunk(u"b"_s, "kept ", false));
        stream->forget(u"a"_s);
        pipe->inject(chunk(u"a"_s, "whole", true));
        pipe->inject(chunk(u"b"_s, "whole", true));
        const QList<QPair<QString, QByteArray>> expected{{u"a"_s, "whole"}, {u"b"_s, "kept whole"}};
        QCOMPARE(received, expected);
    }

    void noReceiverHearsOfTheNextTransferFirst()
    {
        QStringList heard;
        // The first spins an event loop, in which more arrives, and throws.
        const zel::JsonStreamFunctorAdapter first(stream, [&](const QString& id, const QVariant&) {
            heard.append(u"1"_s + id);
            if (id == u"a")
                pipe->inject(chunk(u"b"_s, "y", true));
            else
                throw std::runtime_error("receiver");
        });
        const zel::JsonStreamFunctorAdapter second(
            stream, [&](const QString& id, const QVariant&) { heard.append(u"2"_s + id); });
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, pipe->inject(chunk(u"a"_s, "x", true)));
        QCOMPARE(heard.join(u' '), u"1a 2a 1b 2b"_s);
        QCOMPARE(received.size(), 2);
    }

    void aReceiverMayDestroyTheStream()
    {
        connect(stream.data(), &zel::JsonStream::dataReceived, this,
                [this](const QString&, const QVariant&) { stream.reset(); });
        pipe->inject(chunk(u"a"_s, "x", true));
        QVERIFY(received.isEmpty());
        pipe->inject(chunk(u"a"_s, "x", true));
        QCOMPARE(pipe->listenerCount(u"stream"_s), 0);
    }

    void adaptersHearUntilTheyGo()
    {
        QStringList heard;
        std::unique_ptr<zel::JsonStreamFunctorAdapter> second;
        zel::JsonStreamFunctorAdapter first(stream, [&](const QString& id, const QVariant& data) {
            heard.append(u"1:"_s + id + QString::fromUtf8(data.toByteArray()));
        });
        second = std::make_unique<zel::JsonStreamFunctorAdapter>(stream, [&](const QString& id, const QVariant&) {
            second.reset(); // in the middle of its own call
            heard.append(u"2:"_s + id);
        });
        pipe->inject(chunk(u"a"_s, "x", true));
        pipe->inject(chunk(u"b"_s, "y", true));
        QCOMPARE(heard, QStringList({u"1:ax"_s, u"2:a"_s, u"1:by"_s}));
    }

private:
    QSharedPointer<FakePipe> pipe;
    QSharedPointer<zel::JsonStream> stream;
    QList<QPair<QString, QByteArray>> received;
};

QTEST_GUILESS_MAIN(TstJsonStream)
#include "tst_jsonstream.moc"
