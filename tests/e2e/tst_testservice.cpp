// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>

#include <zelcore/TestService.h>

#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>

#include <QtCore/QRegularExpression>

using namespace vx::platform::zel;
using namespace Qt::StringLiterals;

namespace {

/// An application that registers as the guide says.
struct Application
{
    Application()
    {
        QObject::connect(&context, &Context::registrationStateUpdated, &context, [this](RegistrationState::Type state) {
            told.append(state);
            if (state == RegistrationState::Unregistered)
                context.requestRegisterApplicationSilent();
        });
        whenReady(&context, &context, [this] {
            contacts = std::make_unique<ContactService>(&context);
            profile = std::make_unique<UserProfile>(&context);
        });
    }

    bool hasExactly(const QStringList& names)
    {
        return QTest::qWaitFor([&] {
            QStringList found;
            const QList<Contact> all = contacts ? contacts->contacts() : QList<Contact>();
            for (const Contact& contact : all)
                found.append(contact.displayName());
            return found == names;
        });
    }

    Context context{QUuid::createUuid()};
    QList<RegistrationState::Type> told;
    std::unique_ptr<ContactService> contacts;
    std::unique_ptr<UserProfile> profile;
    ProfileBox box{&context};
};

} // namespace

/// Test functions as they may follow each other in one process.
class TstTestService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_application = std::make_unique<QCoreApplication>(m_argumentCount, nullptr); }
    void cleanup() { m_application.reset(); }

    void beginsAnewForEachFunction()
    {
        qputenv("PPS_ROOT", "/former");
        for (const QString& name : {u"Anna"_s, u"Bert"_s}) {
            zelcore::TestService service;
            QVERIFY2(service.isRunning() && service.isTimelinePaused(), qPrintable(service.problem()));
            service.addContact(name);
            Application application;
            QCOMPARE(application.context.registrationState(), RegistrationState::Unknown);
            QVERIFY(application.hasExactly({name}));
            QCOMPARE(application.told, QList({RegistrationState::Unregistered, RegistrationState::Allowed}));
            QCOMPARE(application.box.itemCount(), 0);
            QVERIFY(application.box.requestAddItem(name, name));
            QTRY_COMPARE(application.box.itemCount(), 1);
            QCOMPARE(service.refusals(), QStringList());
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"no icon with this id is registered"_s));
            QVERIFY(application.box.requestAddItem(name, 0, name));
            QTRY_COMPARE(service.refusals().size(), 1);

            // What has no answer when its function ends is not waited for in the next, and what is to be deleted
            // counts as gone.
            service.goAway();
            QVERIFY(application.profile->requestUpdateDisplayPicture(ImageType::Png, "picture"));
            (new Context(QUuid::createUuid()))->deleteLater();
        }
        QCOMPARE(qgetenv("PPS_ROOT"), QByteArray("/former"));
    }

    void servesAContextThatOutlivesTheApplicationObject()
    {
        zelcore::TestService service;
        Context context(QUuid::createUuid());
        QTRY_COMPARE(context.registrationState(), RegistrationState::Unregistered);
        cleanup();
        init();
        service.setRegistrationPolicy(zelcore::Simulator::RegistrationPolicy::Fixed, u"Expired"_s);
        QVERIFY(context.requestRegisterApplicationSilent());
        QTRY_COMPARE(context.registrationState(), RegistrationState::Expired);
        // Bytes behind the end of a text are none of it.
        service.sendRecord(QByteArrayLiteral(R"(@platform
dat:json:{"listChange":{"type":"global","elements":[{"name":"permission","value":{"registrationState":"Success"}}]}})"
                                             "\0\n"));
        QTRY_COMPARE(context.registrationState(), RegistrationState::Allowed);
    }

    void leavesWithTheApplicationObjectWhereNoContextIsLeft()
    {
        zelcore::TestService service;
        service.addContact(u"Anna"_s);
        QVERIFY(std::make_unique<Application>()->hasExactly({u"Anna"_s}));
        QCOMPARE(service.clientCount(), 1);
        cleanup();
        init();
        QTRY_COMPARE(service.clientCount(), 0);
    }

    void remarksOnceForEachServiceOnASuccessorThatWouldWaitInVain()
    {
        for (int function = 0; function < 2; ++function) {
            zelcore::TestService service;
            auto application = std::make_unique<Application>();
            QTRY_VERIFY(application->contacts);
            application.reset();
            QTest::ignoreMessage(QtInfoMsg, QRegularExpression(u"the process is registered already.*TestService"_s));
            const Context successor(QUuid::createUuid());
            QVERIFY(successor.isAccessAllowed());
        }
    }

    void saysWhenItIsTooLate()
    {
        zelcore::TestService first;
        first.addContact(u"Anna"_s);
        auto application = std::make_unique<Application>();
        QVERIFY(application->hasExactly({u"Anna"_s}));
        const QString sentence = u"too late: this process is connected to %1, and the application still has a Context: "
                                 u"delete its objects before another service begins (zelcore::TestService has the "
                                 u"recipe)"_s.arg(first.root());

        QTest::ignoreMessage(QtWarningMsg, qPrintable(sentence));
        const zelcore::TestService second;
        QVERIFY(!second.isRunning());
        QCOMPARE(second.problem(), sentence);

        // A service may serve other processes. Only who points this one to it is told.
        zelcore::Simulator third;
        QVERIFY(third.start());
        QTest::ignoreMessage(QtWarningMsg, qPrintable(sentence));
        QVERIFY(!third.exportRoot() && first.exportRoot());
        third.stop();
        qputenv("PPS_ROOT", QFile::encodeName(third.root()));
        QString problem;
        QVERIFY(!third.start(&problem));
        QCOMPARE(problem, sentence);

        first.addContact(u"Zoe"_s);
        QVERIFY(application->hasExactly({u"Anna"_s, u"Zoe"_s}));

        // Of an application that is gone nothing is in the way.
        application.reset();
        const zelcore::TestService last;
        QVERIFY2(last.isRunning(), qPrintable(last.problem()));
    }

private:
    std::unique_ptr<QCoreApplication> m_application;
    int m_argumentCount = 0;
};

ZEL_TEST_WITHOUT_APPLICATION(TstTestService)
#include "tst_testservice.moc"
