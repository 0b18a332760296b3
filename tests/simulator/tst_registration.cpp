// SPDX-License-Identifier: Apache-2.0
#include "RawApplication.h"

#include <zelcore/Simulator.h>

#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;
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
        QCOMPARE(m_application->take("listElements"),
                 (QJsonObject{{u"type"_s, u"global"_s}, {u"id"_s, QString()}, {u"cookie"_s, u"-17"_s}}));
        const QJsonObject chunk = m_application->take("listChunk");
        QVERIFY(chunk.value("last"_L1).toBool());
        const QJsonArray elements = chunk.value("elements"_L1).toArray();
        QCOMPARE(elements.size(), 2);
        const QJsonValue profile = elements.at(0)["value"_L1];
        QCOMPARE(profile["handle"_L1].toString(), m_simulator->profile().handle);
        QCOMPARE(elements.at(1)["name"_L1].toString(), u"permission"_s);
        QCOMPARE(elements.at(1)["value"_L1].toObject(), (QJsonObject{{u"showAppBox"_s, true},
                                                                     {u"zelInvites"_s, true},
                                                                     {u"registrationState"_s, u"Unregistered"_s},
                                                                     {u"zelSetup"_s, true}}));
    }

    void concludesNothingThatWasDecidedMeanwhile()
    {
        m_simulator->setRegistrationPolicy(Simulator::RegistrationPolicy::Automatic, QString(), 20);
        m_application->send("registrationRequest", goodRequest);
        QCOMPARE(m_application->nextState(), u"Pending"_s);
        m_simulator->setRegistrationState(u"CancelledByUser"_s);
        QCOMPARE(m_application->nextState(), u"CancelledByUser"_s);
        // An application that asks later is done later, so the moment for the first one has passed with it.
        RawApplication other(m_simulator->root());
        other.begin();
        other.send("registrationRequest", goodRequest);
        QCOMPARE(other.nextState(), u"Pending"_s);
        QCOMPARE(other.nextState(), u"Success"_s);
        QCOMPARE(m_application->drain(), QStringList());
    }

    void waitsForWordInManualMode()
    {
        m_simulator->setRegistrationPolicy(Simulator::RegistrationPolicy::Manual);
        m_application->send("registrationRequest", goodRequest);
        QCOMPARE(m_application->nextState(), u"Pending"_s);
        m_application->send("registrationRequest", silentRequest);
        QCOMPARE(m_application->drain(), QStringList());
        m_simulator->setRegistrationState(u"BlockedByTov"_s);
        QCOMPARE(m_application->nextState(), u"BlockedByTov"_s);
    }

    void takesNoMalformedUuid()
    {
        QSignalSpy refused(m_simulator.get(), &Simulator::refused);
        for (const char* uuid : {"", "{6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b}", "6a0fd1e93a4a4c4e8b6f0c1d2e3f4a5b",
                                 "00000000-0000-0000-0000-000000000000", "6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5g"}) {
            m_application->send(u"registrationRequest"_s, {{u"uuid"_s, QLatin1String(uuid)}, {u"silent"_s, false}});
            QCOMPARE(m_application->nextState(), u"InvalidUuid"_s);
        }
        QTRY_COMPARE(refused.size(), 5);
    }

    void keepsTheRegistrationOfEachApplicationApart()
    {
        RawApplication other(m_simulator->root());
        other.begin();
        m_application->send("registrationRequest", goodRequest);
        QCOMPARE(m_application->nextState(), u"Pending"_s);
        QCOMPARE(m_application->nextState(), u"Success"_s);
        // Asking again changes nothing, but is answered.
        m_application->send("registrationRequest", goodRequest);
        QCOMPARE(m_application->nextState(), u"Success"_s);
        QCOMPARE(m_application->drain(), QStringList());
        QCOMPARE(other.drain(), QStringList());
        // What the user allows is for both, and each hears its own state with it.
        m_simulator->setPermissions({false, true, true});
        QCOMPARE(m_application->nextState(), u"Success"_s);
        QCOMPARE(other.nextState(), u"Unregistered"_s);
        QCOMPARE(m_simulator->clientCount(), 2);
    }

private:
    std::unique_ptr<Simulator> m_simulator;
    std::unique_ptr<RawApplication> m_application;
};

QTEST_GUILESS_MAIN(TstRegistration)
#include "tst_registration.moc"
