// SPDX-License-Identifier: Apache-2.0
#include "ServiceTest.h"

#include <common/TestMain.h>

#include <QtCore/QCryptographicHash>

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
class TstPictures : public ServiceTest
{
    Q_OBJECT

private Q_SLOTS:
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

    void keepsAPictureThatIsOnItsWayApartFromOtherChanges()
    {
        const QByteArray data = noise(32768);
        announcePicture(data);
        const QString stream = requestedStream();
        changeProfile({{u"personalMessage"_s, u"meanwhile"_s}});
        QCOMPARE(response(), u"Success"_s);
        QVERIFY(changedProfile(*m_application).value("avatarId"_L1).toString() != sha1(data));
        sendStream(stream, data);
        QCOMPARE(response(), u"Success"_s);
        const QJsonObject profile = changedProfile(*m_application);
        QCOMPARE(profile.value("avatarId"_L1).toString(), sha1(data));
        QCOMPARE(profile.value("personalMessage"_L1).toString(), u"meanwhile"_s);
        // Known by now, it is not asked for again.
        announcePicture(data);
        QCOMPARE(response(), u"Success"_s);
        QCOMPARE(m_application->drain(), QStringList());
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

    void letsAnItemWaitForAnIconThatIsOnItsWay()
    {
        const auto begin = [this](const QByteArray& announced) {
            m_application->send(u"createProfileBoxImage"_s,
                                {{u"imageId"_s, u"7"_s}, {u"imageHash"_s, sha1(announced)}});
            m_application->send("createProfileBoxItem", R"({"text":"a","cookie":"","imageId":"7"})");
            return m_application->take("requestNewProfileBoxImage").value("streamId"_L1).toString();
        };
        const QByteArray icon = noise(700);
        sendStream(begin(icon), noise(701));
        QCOMPARE(m_application->drain(), QStringList());
        QCOMPARE(m_refused->size(), 1); // the icon, and with it the item
        const QString stream = begin(icon);
        QCOMPARE(m_application->drain(), QStringList());
        QVERIFY(m_simulator->boxItems().isEmpty());
        sendStream(stream, icon);
        QCOMPARE(m_application->take("listAdd").value("type"_L1).toString(), u"profileBoxImage"_s);
        QCOMPARE(m_application->take("listAdd").value("type"_L1).toString(), u"profileBoxItem"_s);
        QCOMPARE(m_simulator->boxItems().value(0).iconId, u"7"_s);
        QCOMPARE(m_refused->size(), 1);
    }

    void takesAnInvitationWhereInvitationsGo()
    {
        const auto invoke = [this](const char* target, const char* action) {
            RawApplication application(m_simulator->root());
            const QByteArray object = QByteArray("/services/invocation/") + target;
            QVERIFY(application.reconnect(m_simulator->root(), object.constData()));
            const QJsonObject request{{u"target"_s, QLatin1String(target)},
                                      {u"action"_s, QLatin1String(action)},
                                      {u"data"_s, u"{\"contactInvitation\":{\"ecoid\":\"eco-pp-zoe\"}}"_s}};
            application.sendRecord(QJsonDocument(request).toJson());
            QSignalSpy received(m_simulator.get(), &Simulator::invocationReceived);
            QTRY_COMPARE(received.size(), 1);
        };
        const auto status = [this] {
            QString reply;
            m_simulator->execute(u"eco-status eco-pp-zoe"_s, &reply);
            return reply;
        };
        invoke("sys.zel.chathandler", "vx.action.INVITEZEL");
        invoke("sys.socialplatform", "vx.action.OTHER");
        QCOMPARE(status(), u"Unknown"_s);
        invoke("sys.socialplatform", "vx.action.INVITEZEL");
        QCOMPARE(status(), u"PendingContactExists"_s);
        m_simulator->addContact(u"Zoe"_s);
        QCOMPARE(status(), u"ContactExists"_s);
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
};

ZEL_TEST(TstPictures)
#include "tst_pictures.moc"
