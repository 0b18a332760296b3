// SPDX-License-Identifier: Apache-2.0
#include "RawApplication.h"

#include <zelcore/Simulator.h>

#include <QtCore/QCryptographicHash>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

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
        changeProfile(
            {{QStringLiteral("currentStatus"), QStringLiteral("Zu Tisch")}, {QStringLiteral("showBusy"), true}});
        QCOMPARE(response(), QStringLiteral("Success"));
        const QJsonObject seen = changedProfile(*m_application);
        QCOMPARE(changedProfile(other), seen);
        QCOMPARE(seen.value(QLatin1String("currentStatus")).toString(), QStringLiteral("Zu Tisch"));
        QCOMPARE(seen.value(QLatin1String("displayName")).toString(), before.displayName);
        zelcore::Person expected = before;
        expected.statusMessage = QStringLiteral("Zu Tisch");
        expected.showBusy = true;
        QCOMPARE(m_simulator->profile(), expected);
    }

    void refusesAChangeAsAWhole()
    {
        const QJsonObject changes[] = {{{QStringLiteral("displayName"), QStringLiteral("New")},
                                        {QStringLiteral("showBusy"), QStringLiteral("yes")}},
                                       {{QStringLiteral("displayName"), QStringLiteral("New")},
                                        {QStringLiteral("userId"), QStringLiteral("someone")}},
                                       {{QStringLiteral("avatarId"), QStringLiteral("no hash")}},
                                       {{QStringLiteral("displayName"), QString(62000, QLatin1Char('x'))}}};
        const zelcore::Person before = m_simulator->profile();
        for (const QJsonObject& change : changes) {
            m_refused->clear();
            changeProfile(change);
            const QJsonObject answer = m_application->take("profileChangeResponse");
            QCOMPARE(answer.value(QLatin1String("status")).toString(), QStringLiteral("Failure"));
            QVERIFY(!answer.value(QLatin1String("error")).toString().isEmpty());
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
        changeProfile({{QStringLiteral("personalMessage"), QStringLiteral("meanwhile")}});
        QCOMPARE(response(), QStringLiteral("Success"));
        QVERIFY(changedProfile(*m_application).value(QLatin1String("avatarId")).toString() != sha1(data));
        sendStream(stream, data);
        QCOMPARE(response(), QStringLiteral("Success"));
        const QJsonObject profile = changedProfile(*m_application);
        QCOMPARE(profile.value(QLatin1String("avatarId")).toString(), sha1(data));
        QCOMPARE(profile.value(QLatin1String("avatarMimeType")).toString(), QStringLiteral("image/gif"));
        QCOMPARE(profile.value(QLatin1String("personalMessage")).toString(), QStringLiteral("meanwhile"));
        // Known by now, it is not asked for again.
        announcePicture(data);
        QCOMPARE(response(), QStringLiteral("Success"));
        QCOMPARE(m_application->drain(), QStringList());
        // And it is served, under the id and to the user asked for.
        m_application->send(
            QStringLiteral("requestUserAvatar"),
            {{QStringLiteral("userId"), m_simulator->profile().userId}, {QStringLiteral("streamId"), sha1(data)}});
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
            QCOMPARE(response(), QStringLiteral("Failure"));
            QVERIFY(m_simulator->picture(sha1(sent)).isEmpty());
        }
        announcePicture(noise(100));
        m_application->send(QStringLiteral("stream"), {{QStringLiteral("id"), requestedStream()},
                                                       {QStringLiteral("value"), QStringLiteral("***")},
                                                       {QStringLiteral("last"), true}});
        QCOMPARE(response(), QStringLiteral("Failure"));
        const auto refusals = m_refused->size();
        m_application->send("stream", R"({"id":"who asked","value":"QUJD","last":true})");
        QVERIFY(!m_application->drain().contains(QLatin1String("listChange")));
        QCOMPARE(m_refused->size(), refusals + 1);
        QCOMPARE(m_simulator->profile(), before);
    }

    void refusesWhatTheBoxDoesNotTake()
    {
        const QString create = QStringLiteral("createProfileBoxItem");
        const auto item = [](const QString& text, const QString& cookie) {
            return QJsonObject{{QStringLiteral("text"), text}, {QStringLiteral("cookie"), cookie}};
        };
        m_application->send(create, item(QString(), QString()));
        m_application->send(create, item(QString(101, QLatin1Char('x')), QString()));
        m_application->send(create, item(QStringLiteral("a\r\nb\nc"), QString()));
        m_application->send(create, item(QStringLiteral("a"), QString(129, QLatin1Char('x'))));
        m_application->send("createProfileBoxItem", R"({"text":"a","cookie":"","imageId":"3"})");
        m_application->send(QStringLiteral("createProfileBoxImage"), {{QStringLiteral("imageId"), QStringLiteral("-1")},
                                                                      {QStringLiteral("imageHash"), sha1(noise(9))}});
        m_application->send("createProfileBoxImage", R"({"imageId":"1","imageHash":"abc"})");
        QCOMPARE(m_application->drain(), QStringList());
        QCOMPARE(m_refused->size(), 7);
        QVERIFY(m_simulator->boxItems().isEmpty());
        // As much as it does take.
        m_application->send(
            create, item(QString(98, QLatin1Char('x')) + QStringLiteral("\n\n"), QString(128, QLatin1Char('x'))));
        QCOMPARE(m_application->drain(), QStringList{QStringLiteral("listAdd")});
    }

private:
    void changeProfile(const QJsonObject& value)
    {
        const QJsonObject element{{QStringLiteral("name"), QStringLiteral("platformProfile")},
                                  {QStringLiteral("value"), value}};
        m_application->send(QStringLiteral("requestListChange"), {{QStringLiteral("elements"), QJsonArray{element}},
                                                                  {QStringLiteral("type"), QStringLiteral("global")}});
    }

    void announcePicture(const QByteArray& data)
    {
        changeProfile({{QStringLiteral("avatarId"), sha1(data)},
                       {QStringLiteral("avatarMimeType"), QStringLiteral("image/gif")}});
    }

    QString requestedStream()
    {
        return m_application->take("requestNewAvatarImage").value(QLatin1String("streamId")).toString();
    }

    QString response()
    {
        return m_application->take("profileChangeResponse").value(QLatin1String("status")).toString();
    }

    static QJsonObject changedProfile(RawApplication& application)
    {
        const QJsonObject change = application.take("listChange");
        return change.value(QLatin1String("elements"))
            .toArray()
            .at(0)
            .toObject()
            .value(QLatin1String("value"))
            .toObject();
    }

    void sendStream(const QString& id, const QByteArray& data)
    {
        const QString text = QString::fromLatin1(data.toBase64());
        for (qsizetype start = 0; start < text.size(); start += 20480) {
            QJsonObject chunk{{QStringLiteral("id"), id}, {QStringLiteral("value"), text.mid(start, 20480)}};
            if (start + 20480 >= text.size())
                chunk.insert(QStringLiteral("last"), true);
            m_application->send(QStringLiteral("stream"), chunk);
        }
    }

    QByteArray receiveStream(const QString& id)
    {
        QByteArray data;
        for (;;) {
            const QJsonObject chunk = m_application->take("stream");
            if (chunk.value(QLatin1String("id")).toString() != id)
                return "another stream";
            data += QByteArray::fromBase64(chunk.value(QLatin1String("value")).toString().toLatin1());
            if (chunk.value(QLatin1String("last")).toBool())
                return data;
        }
    }

    std::unique_ptr<Simulator> m_simulator;
    std::unique_ptr<QSignalSpy> m_refused;
    std::unique_ptr<RawApplication> m_application;
};

QTEST_GUILESS_MAIN(TstPictures)
#include "tst_pictures.moc"
