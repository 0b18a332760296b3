// SPDX-License-Identifier: Apache-2.0
#include "RawApplication.h"

#include <zelcore/Simulator.h>

#include <QtCore/QCryptographicHash>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using zelcore::Simulator;

namespace {

QByteArray noise(int size)
{
    QByteArray data;
    for (quint32 x = quint32(size) * 2654435761U + 1; data.size() < size; x = x * 1664525U + 1013904223U)
        data.append(char(x >> 24));
    return data;
}

QString sha1(const QByteArray& data)
{
    return QString::fromLatin1(QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex());
}

} // namespace

/// What applications change: the own profile, its picture, the box and its icons.
class TstPictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_simulator = std::make_unique<Simulator>();
        QVERIFY(m_simulator->start());
        m_refused = std::make_unique<QSignalSpy>(m_simulator.get(), &Simulator::refused);
        m_application = std::make_unique<RawApplication>(m_simulator->root());
        m_application->begin();
        QTRY_COMPARE(m_simulator->clientCount(), 1);
    }

    void cleanup()
    {
        m_application.reset();
        m_refused.reset();
        m_simulator.reset();
    }

    void mergesAPartialChangeAndTellsEverybody()
    {
        RawApplication other(m_simulator->root());
        other.begin();
        QTRY_COMPARE(m_simulator->clientCount(), 2);
        const zelcore::Person before = m_simulator->profile();
        changeProfile({{u"currentStatus"_s, u"Zu Tisch"_s}, {u"showBusy"_s, true}});
        QCOMPARE(response(), u"Success"_s);
        const QJsonObject seen = changedProfile(*m_application);
        QCOMPARE(changedProfile(other), seen);
        QCOMPARE(seen.value("currentStatus"_L1).toString(), u"Zu Tisch"_s);
        QCOMPARE(seen.value("displayName"_L1).toString(), before.displayName);
        zelcore::Person expected = before;
        expected.statusMessage = u"Zu Tisch"_s;
        expected.showBusy = true;
        QCOMPARE(m_simulator->profile(), expected);
    }

    void refusesAChangeAsAWhole()
    {
        const QJsonObject changes[] = {{{u"displayName"_s, u"New"_s}, {u"showBusy"_s, u"yes"_s}},
                                       {{u"displayName"_s, u"New"_s}, {u"userId"_s, u"someone"_s}},
                                       {{u"avatarId"_s, u"no hash"_s}},
                                       {{u"displayName"_s, QString(62000, QLatin1Char('x'))}}};
        const zelcore::Person before = m_simulator->profile();
        for (const QJsonObject& change : changes) {
            m_refused->clear();
            changeProfile(change);
            const QJsonObject answer = m_application->take("profileChangeResponse");
            QCOMPARE(answer.value("status"_L1).toString(), u"Failure"_s);
            QVERIFY(!answer.value("error"_L1).toString().isEmpty());
            QCOMPARE(m_application->drain(), QStringList());
            QCOMPARE(m_simulator->profile(), before);
            QCOMPARE(m_refused->size(), 1);
        }
    }

    void asksForANewPictureAndAnnouncesItOnceItMatches_data()
    {
        QTest::addColumn<int>("size");
        for (const int size : {1, 15360, 15361, 32768})
            QTest::addRow("%d", size) << size;
    }

    void asksForANewPictureAndAnnouncesItOnceItMatches()
    {
        QFETCH(int, size);
        const QByteArray data = noise(size);
        announcePicture(data);
        const QString stream = requestedStream();
        changeProfile({{u"personalMessage"_s, u"meanwhile"_s}});
        QCOMPARE(response(), u"Success"_s);
        QVERIFY(changedProfile(*m_application).value("avatarId"_L1).toString() != sha1(data));
        sendStream(stream, data);
        QCOMPARE(response(), u"Success"_s);
        const QJsonObject profile = changedProfile(*m_application);
        QCOMPARE(profile.value("avatarId"_L1).toString(), sha1(data));
        QCOMPARE(profile.value("avatarMimeType"_L1).toString(), u"image/gif"_s);
        QCOMPARE(profile.value("personalMessage"_L1).toString(), u"meanwhile"_s);
        // Known by now, it is not asked for again.
        announcePicture(data);
        QCOMPARE(response(), u"Success"_s);
        QCOMPARE(m_application->drain(), QStringList());
        // And it is served, under the id and to the user asked for.
        m_application->send(u"requestUserAvatar"_s,
                            {{u"userId"_s, m_simulator->profile().userId}, {u"streamId"_s, sha1(data)}});
        QCOMPARE(receiveStream(sha1(data)), data);
        QCOMPARE(m_refused->size(), 0);
    }

    void refusesBytesThatAreNotTheAnnouncedPicture()
    {
        const zelcore::Person before = m_simulator->profile();
        const QList<QPair<QByteArray, QByteArray>> cases{{noise(500), noise(501)}, {noise(32769), noise(32769)}};
        for (const auto& [announced, sent] : cases) {
            announcePicture(announced);
            sendStream(requestedStream(), sent);
            QCOMPARE(response(), u"Failure"_s);
            QVERIFY(m_simulator->picture(sha1(sent)).isEmpty());
        }
        announcePicture(noise(100));
        m_application->send(u"stream"_s, {{u"id"_s, requestedStream()}, {u"value"_s, u"***"_s}, {u"last"_s, true}});
        QCOMPARE(response(), u"Failure"_s);
        const auto refusals = m_refused->size();
        m_application->send("stream", R"({"id":"who asked","value":"QUJD","last":true})");
        QVERIFY(!m_application->drain().contains("listChange"_L1));
        QCOMPARE(m_refused->size(), refusals + 1);
        QCOMPARE(m_simulator->profile(), before);
    }

    void refusesWhatTheBoxDoesNotTake()
    {
        const QString create = u"createProfileBoxItem"_s;
        const auto item = [](const QString& text, const QString& cookie) {
            return QJsonObject{{u"text"_s, text}, {u"cookie"_s, cookie}};
        };
        m_application->send(create, item(QString(), QString()));
        m_application->send(create, item(QString(101, QLatin1Char('x')), QString()));
        m_application->send(create, item(u"a\r\nb\nc"_s, QString()));
        m_application->send(create, item(u"a"_s, QString(129, QLatin1Char('x'))));
        m_application->send("createProfileBoxItem", R"({"text":"a","cookie":"","imageId":"3"})");
        m_application->send(u"createProfileBoxImage"_s, {{u"imageId"_s, u"-1"_s}, {u"imageHash"_s, sha1(noise(9))}});
        m_application->send("createProfileBoxImage", R"({"imageId":"1","imageHash":"abc"})");
        QCOMPARE(m_application->drain(), QStringList());
        QCOMPARE(m_refused->size(), 7);
        QVERIFY(m_simulator->boxItems().isEmpty());
        // As much as it does take.
        m_application->send(create, item(QString(98, QLatin1Char('x')) + u"\n\n"_s, QString(128, QLatin1Char('x'))));
        QCOMPARE(m_application->drain(), QStringList{u"listAdd"_s});
    }

private:
    void changeProfile(const QJsonObject& value)
    {
        const QJsonObject element{{u"name"_s, u"platformProfile"_s}, {u"value"_s, value}};
        m_application->send(u"requestListChange"_s, {{u"elements"_s, QJsonArray{element}}, {u"type"_s, u"global"_s}});
    }

    void announcePicture(const QByteArray& data)
    {
        changeProfile({{u"avatarId"_s, sha1(data)}, {u"avatarMimeType"_s, u"image/gif"_s}});
    }

    QString requestedStream() { return m_application->take("requestNewAvatarImage").value("streamId"_L1).toString(); }

    QString response() { return m_application->take("profileChangeResponse").value("status"_L1).toString(); }

    static QJsonObject changedProfile(RawApplication& application)
    {
        const QJsonObject change = application.take("listChange");
        return change.value("elements"_L1).toArray().at(0).toObject().value("value"_L1).toObject();
    }

    void sendStream(const QString& id, const QByteArray& data)
    {
        const QString text = QString::fromLatin1(data.toBase64());
        for (qsizetype start = 0; start < text.size(); start += 20480) {
            QJsonObject chunk{{u"id"_s, id}, {u"value"_s, text.mid(start, 20480)}};
            if (start + 20480 >= text.size())
                chunk.insert(u"last"_s, true);
            m_application->send(u"stream"_s, chunk);
        }
    }

    QByteArray receiveStream(const QString& id)
    {
        QByteArray data;
        for (;;) {
            const QJsonObject chunk = m_application->take("stream");
            if (chunk.value("id"_L1).toString() != id)
                return "another stream";
            data += QByteArray::fromBase64(chunk.value("value"_L1).toString().toLatin1());
            if (chunk.value("last"_L1).toBool())
                return data;
        }
    }

    std::unique_ptr<Simulator> m_simulator;
    std::unique_ptr<QSignalSpy> m_refused;
    std::unique_ptr<RawApplication> m_application;
};

QTEST_GUILESS_MAIN(TstPictures)
#include "tst_pictures.moc"
