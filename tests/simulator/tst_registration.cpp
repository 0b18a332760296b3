// SPDX-License-Identifier: Apache-2.0
#include "RawApplication.h"

#include <zelcore/Simulator.h>

#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

using zelcore::Simulator;

namespace {

const char* const goodRequest = R"({"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":false})";
const char* const silentRequest = R"({"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":true})";

} // namespace

class TstRegistration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_simulator = std::make_unique<Simulator>();
        QVERIFY(m_simulator->start());
        m_application = std::make_unique<RawApplication>(m_simulator->root());
        m_application->begin();
        QTRY_COMPARE(m_simulator->clientCount(), 1);
    }

    void cleanup()
    {
        m_application.reset();
        m_simulator.reset();
    }

    void answersTheGlobalElementsInTheOrderAskedForWithTheCookie()
    {
        m_application->send("requestListElements",
                            R"({"cookie":"-17","elements":[{"name":"platformProfile"},{"name":"permission"}],
                                "type":"global"})");
        const QJsonObject start = m_application->take("listElements");
        QCOMPARE(start.value(QLatin1String("cookie")).toString(), QStringLiteral("-17"));
        QCOMPARE(start.value(QLatin1String("type")).toString(), QStringLiteral("global"));
        QCOMPARE(start.value(QLatin1String("id")).toString(QStringLiteral("none")), QString());
        const QJsonObject chunk = m_application->take("listChunk");
        QVERIFY(chunk.value(QLatin1String("last")).toBool());
        const QJsonArray elements = chunk.value(QLatin1String("elements")).toArray();
        QCOMPARE(elements.size(), 2);
        const QJsonObject profile = elements.at(0).toObject().value(QLatin1String("value")).toObject();
        QCOMPARE(profile.value(QLatin1String("handle")).toString(), m_simulator->profile().handle);
        QCOMPARE(profile.value(QLatin1String("currentStatus")).toString(), m_simulator->profile().statusMessage);
        const QJsonObject permission = elements.at(1).toObject();
        QCOMPARE(permission.value(QLatin1String("name")).toString(), QStringLiteral("permission"));
        QCOMPARE(permission.value(QLatin1String("value")).toObject(),
                 (QJsonObject{{QStringLiteral("showAppBox"), true},
                              {QStringLiteral("zelInvites"), true},
                              {QStringLiteral("registrationState"), QStringLiteral("Unregistered")},
                              {QStringLiteral("zelSetup"), true}}));
    }

    void registersThroughPending()
    {
        QSignalSpy requests(m_simulator.get(), &Simulator::registrationRequested);
        m_application->send("registrationRequest", goodRequest);
        QCOMPARE(m_application->nextState(), QStringLiteral("Pending"));
        QCOMPARE(m_application->nextState(), QStringLiteral("Success"));
        QCOMPARE(requests.size(), 1);
        QCOMPARE(requests.first().at(1).toBool(), false);
        QCOMPARE(m_simulator->registrationState(), QStringLiteral("Success"));
        // Asking again changes nothing, but is answered.
        m_application->send("registrationRequest", goodRequest);
        QCOMPARE(m_application->nextState(), QStringLiteral("Success"));
        QCOMPARE(m_application->drain(), QStringList());
    }

    void concludesNothingThatWasDecidedMeanwhile()
    {
        m_simulator->setRegistrationPolicy(Simulator::RegistrationPolicy::Automatic, QString(), 20);
        m_application->send("registrationRequest", goodRequest);
        QCOMPARE(m_application->nextState(), QStringLiteral("Pending"));
        m_simulator->setRegistrationState(QStringLiteral("CancelledByUser"));
        QCOMPARE(m_application->nextState(), QStringLiteral("CancelledByUser"));
        // An application that asks later is done later, so the moment for the first one has passed with it.
        RawApplication other(m_simulator->root());
        other.begin();
        other.send("registrationRequest", goodRequest);
        QCOMPARE(other.nextState(), QStringLiteral("Pending"));
        QCOMPARE(other.nextState(), QStringLiteral("Success"));
        QCOMPARE(m_application->drain(), QStringList());
    }

    void waitsForWordInManualMode()
    {
        m_simulator->setRegistrationPolicy(Simulator::RegistrationPolicy::Manual);
        m_application->send("registrationRequest", goodRequest);
        QCOMPARE(m_application->nextState(), QStringLiteral("Pending"));
        m_application->send("registrationRequest", silentRequest);
        QCOMPARE(m_application->drain(), QStringList());
        m_simulator->setRegistrationState(QStringLiteral("BlockedByTov"));
        QCOMPARE(m_application->nextState(), QStringLiteral("BlockedByTov"));
    }

    void takesNoMalformedUuid()
    {
        QSignalSpy refused(m_simulator.get(), &Simulator::refused);
        for (const char* uuid : {"", "{6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b}", "6a0fd1e93a4a4c4e8b6f0c1d2e3f4a5b",
                                 "00000000-0000-0000-0000-000000000000", "6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5g"}) {
            m_application->send(QStringLiteral("registrationRequest"),
                                {{QStringLiteral("uuid"), QLatin1String(uuid)}, {QStringLiteral("silent"), false}});
            QCOMPARE(m_application->nextState(), QStringLiteral("InvalidUuid"));
        }
        QTRY_COMPARE(refused.size(), 5);
    }

    void keepsTheRegistrationOfEachApplicationApart()
    {
        RawApplication other(m_simulator->root());
        other.begin();
        m_application->send("registrationRequest", goodRequest);
        QCOMPARE(m_application->nextState(), QStringLiteral("Pending"));
        QCOMPARE(m_application->nextState(), QStringLiteral("Success"));
        QCOMPARE(other.drain(), QStringList());
        // What the user allows is for both, and each hears its own state with it.
        m_simulator->setPermissions({false, true, true});
        QCOMPARE(m_application->nextState(), QStringLiteral("Success"));
        QCOMPARE(other.nextState(), QStringLiteral("Unregistered"));
        QCOMPARE(m_simulator->clientCount(), 2);
    }

private:
    std::unique_ptr<Simulator> m_simulator;
    std::unique_ptr<RawApplication> m_application;
};

QTEST_GUILESS_MAIN(TstRegistration)
#include "tst_registration.moc"
