// SPDX-License-Identifier: Apache-2.0
#include "Answers.h"

#include <vx/platform/zel/Context.h>

#include <QtCore/QLoggingCategory>
#include <QtCore/QTemporaryDir>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

using namespace vx::platform::zel;

/// A process without a platform object to open.
class TstNotInitialized : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("PPS_ROOT", m_root.path().toLocal8Bit());
        QLoggingCategory::setFilterRules(QStringLiteral("zel.platform.debug=true"));
        // An application that shows what it is told may use the library to do so.
        static QStringList messages;
        const auto before = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
            const Context context(QUuid::createUuid());
            messages.append(QStringLiteral("%1: %2").arg(context.registrationState()).arg(text));
        });
        m_context = std::make_unique<Context>(QUuid::createUuid());
        qInstallMessageHandler(before);
        QLoggingCategory::setFilterRules({});
        QCOMPARE(
            messages,
            QStringList({QStringLiteral("4: ZELSP Services not initialized -- Abort "),
                         QStringLiteral(
                             "4: cannot open %1/services/zelcore/platform: No such file or directory; start the core "
                             "service, or a simulated one and set PPS_ROOT to its folder, before the "
                             "application")
                             .arg(m_root.path())}));
    }

    void isBlockedByTheUserAndRegistersNothing()
    {
        QCOMPARE(m_context->registrationState(), RegistrationState::BlockedByUser);
        QVERIFY(!m_context->isAccessAllowed());
        QVERIFY(!m_context->isZelSetup());
        QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
        QVERIFY(!m_context->requestRegisterApplication());
        QVERIFY(!m_context->requestRegisterApplicationSilent());
        QCOMPARE(states.size(), 0);

        Context withoutUuid{QUuid()}; // a second trace of the failed start would show as a warning nobody expects
        QVERIFY(!withoutUuid.requestRegisterApplication());
        QCOMPARE(states.size(), 1); // an application's own mistake is told all the same
        QCOMPARE(states.at(0).at(0).value<RegistrationState::Type>(), RegistrationState::InvalidUuid);
    }

    void answersDefaultsEverywhere()
    {
        compareWithDefaults<ApplicationPermissions>();
        compareWithDefaults<ContactService>();
        compareWithDefaults<ProfileBox>();
        compareWithDefaults<UserProfile>();
        compareWithDefaults<Utils>();
    }

private:
    template <class Public>
    void compareWithDefaults()
    {
        Public object(m_context.get());
        QCOMPARE(answers::of(object), answers::withoutAccess<Public>());
    }

    QTemporaryDir m_root;
    std::unique_ptr<Context> m_context;
};

QTEST_GUILESS_MAIN(TstNotInitialized)
#include "tst_notinitialized.moc"
