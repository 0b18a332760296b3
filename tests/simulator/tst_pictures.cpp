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

    void refusesAChangeAsAWhole_data()
    {
        QTest::addColumn<QJsonObject>("change");
        QTest::newRow("wrong type") << QJsonObject{{QStringLiteral("displayName"), QStringLiteral("New")},
                                                   {QStringLiteral("showBusy"), QStringLiteral("yes")}};
        QTest::newRow("another user") << QJsonObject{{QStringLiteral("displayName"), QStringLiteral("New")},
                                                     {QStringLiteral("userId"), QStringLiteral("someone")}};
        QTest::newRow("no hash") << QJsonObject{{QStringLiteral("avatarId"), QStringLiteral("face")}};
        QTest::newRow("endless") << QJsonObject{{QStringLiteral("displayName"), QString(62000, QLatin1Char('x'))}};
    }

    void refusesAChangeAsAWhole()
    {
        QFETCH(QJsonObject, change);
        const zelcore::Person before = m_simulator->profile();
        changeProfile(change);
        const QJsonObject answer = m_application->take("profileChangeResponse");
        QCOMPARE(answer.value(QLatin1String("status")).toString(), QStringLiteral("Failure"));
        QVERIFY(!answer.value(QLatin1String("error")).toString().isEmpty());
        QCOMPARE(m_application->drain(), QStringList());
        QCOMPARE(m_simulator->profile(), before);
        QCOMPARE(m_refused->size(), 1);
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

    void refusesBytesThatAreNotTheAnnouncedPicture_data()
    {
        QTest::addColumn<QByteArray>("announced");
        QTest::addColumn<QByteArray>("sent");
        QTest::newRow("others") << noise(500) << noise(501);
        QTest::newRow("too many") << noise(32769) << noise(32769);
    }

    void refusesBytesThatAreNotTheAnnouncedPicture()
    {
        QFETCH(QByteArray, announced);
        QFETCH(QByteArray, sent);
        const zelcore::Person before = m_simulator->profile();
        announcePicture(announced);
        sendStream(requestedStream(), sent);
        QCOMPARE(response(), QStringLiteral("Failure"));
        QVERIFY(!m_application->drain().contains(QLatin1String("listChange")));
        QCOMPARE(m_simulator->profile(), before);
        QVERIFY(m_simulator->picture(sha1(sent)).isEmpty());
    }

    void refusesWhatIsNoBase64AndStreamsThatNobodyAskedFor()
    {
        announcePicture(noise(100));
        m_application->send(QStringLiteral("stream"), {{QStringLiteral("id"), requestedStream()},
                                                       {QStringLiteral("value"), QStringLiteral("***")},
                                                       {QStringLiteral("last"), true}});
        QCOMPARE(response(), QStringLiteral("Failure"));
        m_application->send("stream", R"({"id":"who asked","value":"QUJD","last":true})");
        QTRY_COMPARE(m_refused->size(), 2);
        QCOMPARE(m_application->drain(), QStringList());
    }

    void takesThePictureAway()
    {
        changeProfile({{QStringLiteral("avatarId"), QString()}});
        QCOMPARE(response(), QStringLiteral("Success"));
        QCOMPARE(changedProfile(*m_application).value(QLatin1String("avatarMimeType")).toString(), QString());
        QCOMPARE(m_simulator->profile().avatarId, QString());
    }

    void servesAContactsPicture()
    {
        m_simulator->addContact(QStringLiteral("Anna"));
        QVERIFY(m_simulator->setContactPicture(QStringLiteral("anna"), noise(20000)));
        m_application->send("requestUserAvatar", R"({"userId":"user-anna","streamId":"an older one"})");
        QCOMPARE(receiveStream(QStringLiteral("an older one")), noise(20000));
        m_application->send("requestUserAvatar", R"({"userId":"nobody","streamId":"s"})");
        QTRY_COMPARE(m_refused->size(), 1);
    }

    void keepsItemsAndIcons()
    {
        const QByteArray icon = noise(16000);
        m_application->send(
            QStringLiteral("createProfileBoxImage"),
            {{QStringLiteral("imageHash"), sha1(icon)}, {QStringLiteral("imageId"), QStringLiteral("7")}});
        const QJsonObject request = m_application->take("requestNewProfileBoxImage");
        QCOMPARE(request.value(QLatin1String("imageId")).toString(), QStringLiteral("7"));
        sendStream(request.value(QLatin1String("streamId")).toString(), icon);
        QCOMPARE(
            firstElement("listAdd", "profileBoxImage"),
            (QJsonObject{{QStringLiteral("imageId"), QStringLiteral("7")}, {QStringLiteral("imageHash"), sha1(icon)}}));

        m_application->send("createProfileBoxItem", R"({"text":"Level 3","cookie":"c","imageId":"7"})");
        const QJsonObject item = firstElement("listAdd", "profileBoxItem");
        QCOMPARE(item.value(QLatin1String("imageId")).toString(), QStringLiteral("7"));
        m_application->send("createProfileBoxItem", R"({"text":"Level 4","cookie":""})");
        QCOMPARE(firstElement("listAdd", "profileBoxItem").value(QLatin1String("imageId")).toString(), QString());
        QCOMPARE(m_simulator->boxItems().size(), 2);

        m_application->send("requestProfileBoxImage", R"({"streamId":"x","imageId":"7"})");
        QCOMPARE(receiveStream(QStringLiteral("x")), icon);

        const QString id = item.value(QLatin1String("itemId")).toString();
        remove("profileBoxItem", "itemId", id);
        QCOMPARE(firstElement("listRemove", "profileBoxItem"), (QJsonObject{{QStringLiteral("itemId"), id}}));
        remove("profileBoxImage", "imageId", QStringLiteral("7"));
        QCOMPARE(firstElement("listRemove", "profileBoxImage").value(QLatin1String("imageId")).toString(),
                 QStringLiteral("7"));
        QCOMPARE(m_simulator->boxItems().size(), 1);
        QVERIFY(m_simulator->boxIcons().isEmpty());
        QCOMPARE(m_refused->size(), 0);
    }

    void refusesWhatTheBoxDoesNotTake_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QJsonObject>("body");
        const auto item = [](const QString& text, const QString& cookie) {
            return QJsonObject{{QStringLiteral("text"), text}, {QStringLiteral("cookie"), cookie}};
        };
        const QString create = QStringLiteral("createProfileBoxItem");
        QTest::newRow("no text") << create << item(QString(), QString());
        QTest::newRow("101 characters") << create << item(QString(101, QLatin1Char('x')), QString());
        QTest::newRow("3 line breaks") << create << item(QStringLiteral("a\r\nb\nc"), QString());
        QTest::newRow("129 in the cookie") << create << item(QStringLiteral("a"), QString(129, QLatin1Char('x')));
        QTest::newRow("an unknown icon") << create
                                         << QJsonObject{{QStringLiteral("text"), QStringLiteral("a")},
                                                        {QStringLiteral("cookie"), QString()},
                                                        {QStringLiteral("imageId"), QStringLiteral("3")}};
        const QString icon = QStringLiteral("createProfileBoxImage");
        QTest::newRow("icon id below 0") << icon
                                         << QJsonObject{{QStringLiteral("imageId"), QStringLiteral("-1")},
                                                        {QStringLiteral("imageHash"), sha1(noise(9))}};
        QTest::newRow("no hash") << icon
                                 << QJsonObject{{QStringLiteral("imageId"), QStringLiteral("1")},
                                                {QStringLiteral("imageHash"), QStringLiteral("abc")}};
    }

    void refusesWhatTheBoxDoesNotTake()
    {
        QFETCH(QString, type);
        QFETCH(QJsonObject, body);
        m_application->send(type, body);
        QTRY_COMPARE(m_refused->size(), 1);
        QCOMPARE(m_application->drain(), QStringList());
        QVERIFY(m_simulator->boxItems().isEmpty());
    }

    void leavesTheBoxAloneWhenTheUserSaysSo()
    {
        m_simulator->setPermissions({false, true, true});
        m_application->take("listChange");
        m_application->send("createProfileBoxItem", R"({"text":"a","cookie":""})");
        QTRY_COMPARE(m_refused->size(), 1);
        QVERIFY(m_simulator->boxItems().isEmpty());
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

    QJsonObject firstElement(const char* type, const char* list)
    {
        const QJsonObject body = m_application->take(type);
        return body.value(QLatin1String("type")).toString() == QLatin1String(list)
                   ? body.value(QLatin1String("elements")).toArray().at(0).toObject()
                   : body;
    }

    void remove(const char* list, const char* member, const QString& id)
    {
        const QJsonObject element{{QString::fromLatin1(member), id}};
        m_application->send(QStringLiteral("requestListRemove"), {{QStringLiteral("elements"), QJsonArray{element}},
                                                                  {QStringLiteral("type"), QLatin1String(list)}});
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
