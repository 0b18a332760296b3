// SPDX-License-Identifier: Apache-2.0
#include "ServiceTest.h"

#include <common/TestMain.h>

using namespace Qt::StringLiterals;
using zelcore::Simulator;

namespace {

const char* const goodRequest = R"({"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":false})";
const char* const silentRequest = R"({"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":true})";

} // namespace

class TstRegistration : public ServiceTest
{
    Q_OBJECT

private Q_SLOTS:
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

    void asksNobodyTwiceAboutTheSameUuid()
    {
        m_application->send("registrationRequest", goodRequest);
        QCOMPARE(m_application->nextState(), u"Pending"_s);
        QCOMPARE(m_application->nextState(), u"Success"_s);
        QVERIFY(m_application->reconnect(m_simulator->root()));
        m_application->begin();
        m_application->send("registrationRequest", goodRequest);
        QCOMPARE(m_application->nextState(), u"Success"_s);
        // Until the registration of everybody is set anew.
        m_simulator->setRegistrationState(u"Expired"_s);
        QCOMPARE(m_application->nextState(), u"Expired"_s);
        m_application->send("registrationRequest", goodRequest);
        QCOMPARE(m_application->nextState(), u"Pending"_s);
    }

    void takesNoMalformedUuid()
    {
        for (const char* uuid : {"", "{6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b}", "6a0fd1e93a4a4c4e8b6f0c1d2e3f4a5b",
                                 "00000000-0000-0000-0000-000000000000", "6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5g"}) {
            m_application->send(u"registrationRequest"_s, {{u"uuid"_s, QLatin1String(uuid)}, {u"silent"_s, false}});
            QCOMPARE(m_application->nextState(), u"InvalidUuid"_s);
        }
        QTRY_COMPARE(m_refused->size(), 5);
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
};

ZEL_TEST(TstRegistration)
#include "tst_registration.moc"
