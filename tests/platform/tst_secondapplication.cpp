// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

using namespace vx::platform::zel;

/// A process that makes one application object after the other.
class TstSecondApplication : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsOn()
    {
        int argumentCount = 0;
        std::unique_ptr<QCoreApplication> application(new QCoreApplication(argumentCount, nullptr));
        Desk desk;
        Context context(QUuid::createUuid());
        QSignalSpy states(&context, &Context::registrationStateUpdated);
        QTRY_COMPARE(states.size(), 1);
        QVERIFY(desk.settle());

        application.reset();
        application.reset(new QCoreApplication(argumentCount, nullptr));
        desk.changeState(QStringLiteral("Expired"));
        QTRY_COMPARE(context.registrationState(), RegistrationState::Expired);
        QVERIFY(context.isZelSetup());
        QCOMPARE(states.size(), 2);
    }
};

QTEST_APPLESS_MAIN(TstSecondApplication)
#include "tst_secondapplication.moc"
