// SPDX-License-Identifier: Apache-2.0
#include "ServiceTest.h"

#include <common/TestMain.h>
#include <common/SeededRandom.h>

#include <QtCore/QFileInfo>

#include <csignal>

#include <sys/wait.h>

using namespace Qt::StringLiterals;
using zelcore::Simulator;

namespace {

const char* const silentRequest = R"({"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":true})";

/// Something between a good request and nothing at all.
QByteArray nonsense(QRandomGenerator& random)
{
    static const auto types =
        QByteArray("registrationRequest requestListAll requestListElements requestListRemove requestListChange stream "
                   "requestUserAvatar createProfileBoxItem createProfileBoxImage requestProfileBoxImage requestEcoId "
                   "requestEcoIdStatus tpaApi unheardOf")
            .split(' ');
    static const auto keys = QByteArray("uuid silent type id cookie elements userId streamId text imageId imageHash "
                                        "name value last ppid ecoId")
                                 .split(' ');
    static const auto values =
        QByteArray("\"\" \"global\" \"platformUser\" \"profileBoxItem\" true -1 1e400 null [] [{}] [1,[],\"x\"] {} "
                   "[{\"name\":\"platformProfile\",\"value\":{\"displayName\":3}}] \"\\ud800\" [{\"userId\":7}] "
                   "[{\"name\":\"permission\",\"value\":{}}]")
            .split(' ');
    QByteArray json = "{\"" + types.at(random.bounded(int(types.size()))) + "\":{";
    const int members = random.bounded(5);
    for (int i = 0; i < members; ++i) {
        json += i > 0 ? ",\"" : "\"";
        json += keys.at(random.bounded(int(keys.size()))) + "\":" + values.at(random.bounded(int(values.size())));
    }
    json += "}}";
    QByteArray record = "msg::zel\ndat:json:" + json + '\n';
    const int spoil = random.bounded(8);
    if (spoil == 0)
        record.truncate(1 + random.bounded(int(record.size())));
    else if (spoil == 1)
        record[random.bounded(int(record.size()))] = char(random.bounded(256));
    return record;
}

} // namespace

/// Messages that go wrong, a service that goes and comes, applications that talk nonsense.
class TstWeather : public ServiceTest
{
    Q_OBJECT

private Q_SLOTS:
    void dropsDuplicatesAndDelaysOneMessageEach()
    {
        m_simulator->injectFault(Simulator::Fault::Drop);
        m_simulator->injectFault(Simulator::Fault::Duplicate);
        m_simulator->injectFault(Simulator::Fault::Delay, 20);
        // Ordered for another type, it waits for that.
        m_simulator->injectFault(Simulator::Fault::Drop, 0, u"requestEcoIdStatusResponse"_s);
        for (const char* number : {"1", "2", "3", "4"})
            m_application->send(u"requestEcoId"_s, {{u"ppid"_s, QLatin1String(number)}});
        QStringList answered;
        while (answered.size() < 4)
            answered.append(m_application->take("requestEcoIdResponse").value("ppid"_L1).toString());
        QCOMPARE(answered.join(QLatin1Char(' ')), u"2 2 4 3"_s);
        m_application->send("requestEcoIdStatus", "{\"ecoId\":\"1\"}");
        m_application->send("requestEcoIdStatus", "{\"ecoId\":\"2\"}");
        QCOMPARE(m_application->take("requestEcoIdStatusResponse").value("ecoId"_L1).toString(), u"2"_s);
    }

    void cutsAndGarblesRecords()
    {
        m_simulator->injectFault(Simulator::Fault::Truncate, 30);
        m_simulator->injectFault(Simulator::Fault::Garble);
        m_simulator->injectFault(Simulator::Fault::Truncate, 0);
        m_simulator->sendMessage(u"first"_s, {});
        m_simulator->sendMessage(u"second"_s, {{u"key"_s, u"value"_s}});
        m_simulator->sendMessage(u"third"_s, {});
        m_simulator->sendRecord("@platform\n");
        QTRY_COMPARE(m_application->unreadable, 4);
        QCOMPARE(m_application->records.at(0).size(), 30);
        QCOMPARE(m_application->records.at(1).size(),
                 qsizetype(strlen("@platform\ndat:json:{\"second\":{\"key\":\"value\"}}\n")));
        QCOMPARE(m_application->records.at(3), QByteArray("@platform\n"));
        QVERIFY(m_application->messages.isEmpty());
    }

    void tellsAnApplicationThatComesBackEverythingAnew()
    {
        m_simulator->generateContacts(3, 1);
        m_application->send("registrationRequest", silentRequest);
        QCOMPARE(m_application->nextState(), u"Success"_s);
        const QString path = m_simulator->root() + u"/services/zelcore/platform"_s;
        m_simulator->goAway();
        QTRY_VERIFY(m_application->closed);
        QVERIFY(!QFileInfo::exists(path));
        QVERIFY(m_simulator->isRunning());
        QVERIFY(!m_application->reconnect(m_simulator->root()));

        // What happens meanwhile is part of what is told.
        m_simulator->uninstallApplication(m_simulator->contacts().first().handle);
        zelcore::Person changed = m_simulator->contacts().first();
        changed.displayName = u"Changed meanwhile"_s;
        m_simulator->changeContact(changed);

        QVERIFY(m_simulator->comeBack());
        m_application->messages.clear();
        QVERIFY(m_application->reconnect(m_simulator->root()));
        const QJsonArray globals = m_application->take("listAdd").value("elements"_L1).toArray();
        QCOMPARE(globals.size(), 2);
        QCOMPARE(globals.at(0).toObject().value("value"_L1).toObject().value("registrationState"_L1), u"Success"_s);
        const QJsonArray records = m_application->take("listAdd").value("elements"_L1).toArray();
        QCOMPARE(records.size(), 2);
        QCOMPARE(records.at(0).toObject().value("displayName"_L1).toString(), changed.displayName);
        QCOMPARE(m_application->transfer("listAll").size(), 2); // contacts
        QCOMPARE(m_application->transfer("listAll").size(), 0); // items
        QCOMPARE(m_application->transfer("listAll").size(), 0); // icons
        QCOMPARE(m_simulator->registrationState(), u"Success"_s);
    }

    void givesARegistrationBackToNobodyElse()
    {
        const pid_t other = ::fork();
        if (other == 0) {
            RawApplication application(m_simulator->root());
            application.begin();
            application.send("registrationRequest", silentRequest);
            for (;;)
                ::pause();
        }
        QTRY_COMPARE(m_simulator->registrationState(), u"Success"_s);
        m_simulator->goAway();
        ::kill(other, SIGKILL);
        ::waitpid(other, nullptr, 0);
        QVERIFY(m_simulator->comeBack());
        // One for the connection of this process that was there before, one that is new: neither was registered.
        for (int i = 0; i < 2; ++i) {
            RawApplication next(m_simulator->root());
            const QJsonValue permission = next.take("listAdd").value("elements"_L1).toArray().at(0).toObject();
            QCOMPARE(permission["value"_L1]["registrationState"_L1].toString(), u"Unregistered"_s);
        }
    }

    void tellsNothingUnaskedToAnApplicationThatStarts()
    {
        m_simulator->goAway();
        QVERIFY(m_simulator->comeBack());
        RawApplication starting(m_simulator->root());
        starting.begin();
        // This one keeps silent, so once it has been told, the other would have been, too.
        RawApplication returning(m_simulator->root());
        returning.take("listAdd");
        QCOMPARE(starting.drain(), QStringList());
    }

    void leavesOutTheListsThatAReturningApplicationAsksFor()
    {
        RawApplication returning(m_simulator->root());
        returning.send("requestListAll", "{\"type\":\"platformContact\"}");
        QStringList lists;
        while (lists.size() < 3)
            lists.append(returning.take("listAll").value("type"_L1).toString());
        QCOMPARE(lists, (QStringList{u"platformContact"_s, u"profileBoxItem"_s, u"profileBoxImage"_s}));
    }

    void endsAndStartsAgainWithTheSameWorld()
    {
        m_simulator->addContact(u"Anna"_s);
        m_simulator->stop();
        QVERIFY(!m_simulator->isRunning());
        QVERIFY(!m_simulator->comeBack());
        QVERIFY(m_simulator->start());
        QCOMPARE(m_simulator->contacts().size(), 1);
        QVERIFY(m_application->reconnect(m_simulator->root()));
        QTRY_COMPARE(m_simulator->clientCount(), 1);
        // Another one cannot take its place.
        Simulator second;
        second.setRoot(m_simulator->root());
        QString error;
        QVERIFY(!second.start(&error));
        QVERIFY(!error.isEmpty());
        QVERIFY(m_application->begin());
        QCOMPARE(m_application->drain(), QStringList());
        // Its own folder goes with it.
        const QString root = m_simulator->root();
        QVERIFY(QFileInfo::exists(root));
        m_simulator.reset();
        QVERIFY(!QFileInfo::exists(root));
    }

    void standsApplicationsThatComeAndGoWhileASlotSpinsTheLoop()
    {
        QObject::connect(m_simulator.get(), &Simulator::messageReceived, this,
                         [this](int, const QString& type, const QByteArray&) {
                             if (type != "registrationRequest"_L1)
                                 return;
                             m_application->disconnect();
                             QVERIFY(QTest::qWaitFor([this] { return m_simulator->clientCount() == 0; }));
                         });
        m_application->send("registrationRequest", silentRequest);
        QTRY_COMPARE(m_simulator->clientCount(), 0);
        QVERIFY(m_application->reconnect(m_simulator->root()));
        m_application->begin();
        QCOMPARE(m_application->drain(), QStringList());
    }

    void refusesNonsenseWithOneLineAndGoesOn()
    {
        QRandomGenerator random = seededRandom();
        for (int i = 0; i < 3000; ++i) {
            QVERIFY(m_application->sendRecord(nonsense(random)));
            if (i % 50 == 0)
                m_application->drain();
        }
        m_application->drain();
        QVERIFY(m_refused->size() > 1000);
        QVERIFY(m_refused->size() <= 3000);
        for (const auto& line : *m_refused) {
            QVERIFY(!line.first().toString().contains(QLatin1Char('\n')));
            QVERIFY(line.first().toString().size() < 400);
        }
        QCOMPARE(m_application->unreadable, 0);
        m_application->send("requestListElements", R"({"elements":[{"name":"permission"}],"type":"global"})");
        QCOMPARE(m_application->transfer("listElements").size(), 1);
    }
};

ZEL_TEST(TstWeather)
#include "tst_weather.moc"
