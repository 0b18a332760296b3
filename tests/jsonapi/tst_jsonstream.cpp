// SPDX-License-Identifier: Apache-2.0
#include <common/FakePipe.h>
#include <common/Random.h>
#include <common/TestMain.h>
#include <zel/JsonStream.h>

#include <QtCore/QJsonDocument>

#include <algorithm>
#include <utility>

class TstJsonStream : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        pipe = QSharedPointer<FakePipe>::create();
        received.clear();
        stream = QSharedPointer<zel::JsonStream>::create(pipe, [this](const QString& id, const QVariant& data) {
            received.append(id + u'=' + QString::fromLatin1(data.toByteArray()));
        });
    }

    void reassemblesWhatItSends()
    {
        const std::pair<int, QList<int>> pieces[] = {
            {0, {}}, {1, {4}}, {15360, {20480}}, {15361, {20480, 4}}, {32768, {20480, 20480, 2732}}};
        QRandomGenerator random = seededRandom();
        for (const auto& [size, characters] : pieces) {
            QByteArray data(size, Qt::Uninitialized);
            std::generate(data.begin(), data.end(), [&] { return char(random.generate()); });
            stream->send(u"id"_s, data);
            for (const int length : characters) {
                QVERIFY(received.isEmpty());
                const QByteArray message = pipe->takeSent();
                const QByteArray value = QJsonDocument::fromJson(message)[u"stream"][u"value"].toString().toLatin1();
                const QByteArray last = pipe->sentCount() == 0 ? ",\"last\":true" : "";
                QCOMPARE(message, "{\"stream\":{\"id\":\"id\",\"value\":\"" + value + '"' + last + "}}");
                QCOMPARE(value.size(), length);
                pipe->inject(message);
            }
            QCOMPARE(pipe->sentCount(), 0);
            const QStringList expected(u"id="_s + QString::fromLatin1(data));
            QCOMPARE(std::exchange(received, {}), size > 0 ? expected : QStringList());
        }
    }

    void keepsTransfersApartAlsoThoseOfOneIdInANestedLoop()
    {
        bool nested = false;
        connect(stream.data(), &zel::JsonStream::dataReceived, this, [&] {
            if (!std::exchange(nested, true))
                take("a", "new ", false);
        });
        take("a", "old");
        take("b", "more ", false);
        take("c", "half", false);
        take("a", "data");
        stream->forget(u"c"_s);
        take("c", "whole");
        take("b", "more ", false);
        take("b", "data");
        pipe->inject(R"({"stream":{"id":5,"value":[],"last":true}})");
        QCOMPARE(received.join(u", "), u"a=old, a=new data, c=whole, b=more more data, ="_s);
        stream.reset();
        QCOMPARE(pipe->listenerCount(u"stream"_s), 0);
    }

private:
    void take(const char* id, const QByteArray& bytes, bool isLast = true)
    {
        pipe->inject("{'stream':{'id':'@','value':'@','last':@}}", {id, bytes.toBase64(), isLast ? "true" : "false"});
    }

    QSharedPointer<FakePipe> pipe;
    QSharedPointer<zel::JsonStream> stream;
    QStringList received;
};

ZEL_TEST(TstJsonStream)
#include "tst_jsonstream.moc"
