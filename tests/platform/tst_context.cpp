// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

#include <vx/platform/zel/ContactService.h>

#include <QtCore/QEventLoop>
#include <QtCore/QPointer>

using namespace vx::platform::zel;

using State = RegistrationState::Type;

/// One process, one bridge: the cases follow the life of one application and build on each other.
class TstContext : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        if (!m_context) {
            m_desk.heldBack = QStringList{QStringLiteral("permission")};
            m_context = std::make_unique<Context>(m_uuid);
        }
    }

    void knowsNothingBeforeTheServiceSpeaks()
    {
        QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
        QVERIFY(m_desk.settle());
        QCOMPARE(m_context->registrationState(), RegistrationState::Unknown);
        QVERIFY(!m_context->isAccessAllowed());
        QVERIFY(!m_context->isZelSetup());
        QCOMPARE(m_context->platformVersion(), 200);
        QVERIFY(!m_context->requestRegisterApplication());
        QVERIFY(m_desk.nothingWritten());
        QCOMPARE(states.size(), 0);
    }

    void refusesANullUuid()
    {
        Context withoutUuid{QUuid()};
        QSignalSpy states(&withoutUuid, &Context::registrationStateUpdated);
        QVERIFY(!withoutUuid.requestRegisterApplication());
        QVERIFY(!withoutUuid.requestRegisterApplicationSilent());
        QCOMPARE(statesOf(states), QList<State>({RegistrationState::InvalidUuid, RegistrationState::InvalidUuid}));
        QVERIFY(m_desk.nothingWritten());
    }

    void announcesTheFirstState()
    {
        QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
        m_desk.heldBack.clear();
        m_desk.sendElements(
            QStringLiteral("listAdd"), QStringLiteral("global"),
            {ScriptedCore::json(
                R"({"name":"permission","value":{"registrationState":"Unregistered","zelSetup":true}})")});
        QTRY_COMPARE(statesOf(states), QList<State>({RegistrationState::Unregistered}));
        QVERIFY(m_context->isZelSetup());
    }

    void registersWithItsUuid()
    {
        QVERIFY(m_context->requestRegisterApplication());
        QCOMPARE(m_desk.core.nextMessage(), QByteArray("{\"registrationRequest\":{\"uuid\":"
                                                       "\"6f8d2c4e-5b0a-4a37-9d0e-0c8f3f1f2a10\",\"silent\":false}}"));
        QVERIFY(m_context->requestRegisterApplicationSilent());
        QCOMPARE(m_desk.core.nextMessage(), QByteArray("{\"registrationRequest\":{\"uuid\":"
                                                       "\"6f8d2c4e-5b0a-4a37-9d0e-0c8f3f1f2a10\",\"silent\":true}}"));
    }

    void registersOnlyInStatesThatAllowIt()
    {
        const struct
        {
            const char* word;
            State state;
            bool allowed;
        } rows[] = {{"Unknown", RegistrationState::Unknown, false},
                    {"Unregistered", RegistrationState::Unregistered, true},
                    {"Pending", RegistrationState::Pending, false},
                    {"BlockedByUser", RegistrationState::BlockedByUser, false},
                    {"BlockedByTov", RegistrationState::BlockedByTOV, false},
                    {"NoDataConnection", RegistrationState::NoDataConnection, true},
                    {"UnexpectedError", RegistrationState::UnexpectedError, true},
                    {"InvalidUuid", RegistrationState::InvalidUuid, true},
                    {"TemporaryError", RegistrationState::TemporaryError, true},
                    {"MaximumUsersReached", RegistrationState::MaxDownloadsReached, false},
                    {"Expired", RegistrationState::Expired, false},
                    {"CancelledByUser", RegistrationState::CancelledByUser, true},
                    {"MaximumAppsReached", RegistrationState::MaxAppsReached, false},
                    {"ZelDisabled", RegistrationState::ZelDisabled, false},
                    {"BlockedEnterprisePerimeter", RegistrationState::BlockedEnterprisePerimeter, false},
                    // Near misses: enumerators that are no words of the service, another case, a blank.
                    {"Allowed", RegistrationState::Unknown, false},
                    {"BlockedByTOV", RegistrationState::Unknown, false},
                    {"MaxAppsReached", RegistrationState::Unknown, false},
                    {"unregistered", RegistrationState::Unknown, false},
                    {"Success ", RegistrationState::Unknown, false}};
        for (const auto& [word, state, allowed] : rows) {
            m_desk.changeState(QString::fromLatin1(word));
            QVERIFY(m_desk.settle());
            QVERIFY2(m_context->registrationState() == state, word);
            QVERIFY2(!m_context->isAccessAllowed(), word);
            QVERIFY2(m_context->requestRegisterApplication() == allowed, word);
            if (allowed)
                QVERIFY(m_desk.core.nextMessage().startsWith("{\"registrationRequest\":"));
            QVERIFY(m_desk.nothingWritten());
        }
    }

    void announcesAStateOnceToEveryContext()
    {
        Context second(QUuid::createUuid());
        QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
        QSignalSpy secondStates(&second, &Context::registrationStateUpdated);
        m_desk.changeState(QStringLiteral("Pending"));
        m_desk.changeState(QStringLiteral("Pending"));
        m_desk.changePermission(R"({"zelInvites":true,"zelSetup":false})");
        QVERIFY(m_desk.settle());
        QCOMPARE(statesOf(states), QList<State>({RegistrationState::Pending}));
        QCOMPARE(statesOf(secondStates), statesOf(states));
        QVERIFY(!m_context->isZelSetup());

        Context late(m_uuid); // hears only of what changes
        QSignalSpy lateStates(&late, &Context::registrationStateUpdated);
        QVERIFY(m_desk.settle());
        QCOMPARE(late.registrationState(), RegistrationState::Pending);
        QCOMPARE(lateStates.size(), 0);
    }

    /// A dialog in a slot is ordinary: what arrives meanwhile is announced in the inner loop, before contexts that come
    /// later have heard what the dialog is about.
    void maySpinAnEventLoopInASlot()
    {
        Context later(m_uuid);
        QStringList heard;
        QObject owner;
        connect(m_context.get(), &Context::registrationStateUpdated, &owner, [&](State state) {
            heard += QStringLiteral("asking %1").arg(state);
            if (state != RegistrationState::Unregistered)
                return;
            QEventLoop dialog;
            connect(m_context.get(), &Context::registrationStateUpdated, &dialog, &QEventLoop::quit);
            m_desk.changeState(QStringLiteral("NoDataConnection"));
            m_desk.changeState(QStringLiteral("TemporaryError"));
            dialog.exec();
            heard += QStringLiteral("closed");
        });
        connect(&later, &Context::registrationStateUpdated, &owner,
                [&](State state) { heard += QStringLiteral("later %1").arg(state); });

        m_desk.changeState(QStringLiteral("Unregistered"));
        QTRY_COMPARE(heard.size(), 7);
        QCOMPARE(heard.mid(0, 4), QStringList({QStringLiteral("asking 2"), QStringLiteral("asking 6"),
                                               QStringLiteral("later 6"), QStringLiteral("closed")}));
        QVERIFY(heard.indexOf(QStringLiteral("later 2")) > heard.indexOf(QStringLiteral("closed")));
        QCOMPARE(heard.count(QStringLiteral("asking 9")), 1);
        QCOMPARE(heard.count(QStringLiteral("later 9")), 1);
        QCOMPARE(m_context->registrationState(), RegistrationState::TemporaryError);
    }

    void mayBeDestroyedInItsOwnSlot()
    {
        QPointer<Context> doomed = new Context(m_uuid);
        connect(doomed, &Context::registrationStateUpdated, doomed, [&] { delete doomed; });
        QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
        m_desk.changeState(QStringLiteral("Unregistered"));
        QTRY_COMPARE(states.size(), 1);
        QVERIFY(!doomed);
    }

    void holdsAllowedBackUntilProfileAndPictureAreThere()
    {
        QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
        m_desk.heldBack = QStringList{QStringLiteral("platformContact")};
        m_desk.profile().insert(QStringLiteral("avatarId"), QStringLiteral("picture-1"));
        awaitReady();
        m_desk.changeState(QStringLiteral("Success"));
        QVERIFY(m_desk.settle());
        QVERIFY(!m_context->isReady());
        QVERIFY(m_context->isAccessAllowed()); // the service's word counts at once,
        QCOMPARE(states.size(), 0);            // the signal waits for what the other classes show

        QVERIFY(m_desk.settle()); // the profile is here, the picture was asked for and has not come
        QCOMPARE(states.size(), 0);

        // All contacts arrive behind a dialog, before there is anybody to hear of them.
        std::unique_ptr<ContactService> contacts;
        std::unique_ptr<QSignalSpy> lists;
        QObject owner;
        connect(m_context.get(), &Context::registrationStateUpdated, &owner, [&] {
            m_desk.sendList(QStringLiteral("platformContact"));
            QVERIFY(m_desk.settle());
            contacts = std::make_unique<ContactService>(m_context.get());
            lists = std::make_unique<QSignalSpy>(contacts.get(), &ContactService::contactListUpdated);
        });
        m_desk.sendStream(QStringLiteral("picture-1"), "bytes");
        QTRY_COMPARE(statesOf(states), QList<State>({RegistrationState::Allowed}));
        QVERIFY(m_desk.settle());
        QCOMPARE(states.size(), 1);
        QCOMPARE(lists->size(), 1);
        QCOMPARE(m_ready, QStringList({QStringLiteral("first"), QStringLiteral("member"), QStringLiteral("told 1")}));
    }

    void saysToALaterContextWhetherItIsReady()
    {
        Context later(QUuid::createUuid());
        QVERIFY(later.isReady());
        QSignalSpy turns(&later, SIGNAL(readyChanged()));
        int calls = 0;
        whenReady(&later, this, [&] { ++calls; });
        QCOMPARE(calls, 1);
        m_desk.changeState(QStringLiteral("NoDataConnection"));
        QVERIFY(m_desk.settle());
        QVERIFY(!later.isReady());
        whenReady(&later, this, [&] { ++calls; });
        m_desk.changeState(QStringLiteral("Pending"));
        QVERIFY(m_desk.settle());
        QCOMPARE(turns.size(), 1);
        QCOMPARE(calls, 1);
        for (const char* state : {"Success", "TemporaryError", "Success"})
            m_desk.changeState(QString::fromLatin1(state));
        QVERIFY(m_desk.settle());
        QCOMPARE(turns.size(), 4);
        QCOMPARE(calls, 2);
    }

    // The first who hears of it has a dialog open, in which it is over, and then true again.
    void callsNobodyWhileItIsNotReady()
    {
        m_desk.changeState(QStringLiteral("Pending"));
        QVERIFY(m_desk.settle());
        QStringList heard;
        whenReady(m_context.get(), this, [&] {
            m_desk.changeState(QStringLiteral("Pending"));
            QVERIFY(m_desk.settle());
            heard.append(QStringLiteral("over"));
        });
        whenReady(m_context.get(), this, [&] { heard.append(QStringLiteral("behind")); });
        m_desk.changeState(QStringLiteral("Success"));
        QTRY_COMPARE(heard, QStringList(QStringLiteral("over")));
        QVERIFY(m_desk.settle());
        QCOMPARE(heard.size(), 1);
        m_desk.changeState(QStringLiteral("Success"));
        QTRY_COMPARE(heard.value(1), QStringLiteral("behind"));
    }

private:
    void noteMember() { m_ready.append(QStringLiteral("member")); }

    /// Everything that waits is called, but for what goes with its receiver or its context.
    void awaitReady()
    {
        whenReady(m_context.get(), this, [this] { m_ready.append(QStringLiteral("first")); });
        whenReady(m_context.get(), this, &TstContext::noteMember);
        connect(m_context.get(), &Context::readyChanged, this,
                [this] { m_ready.append(QStringLiteral("told %1").arg(m_context->isReady())); });
        const auto never = [this] { m_ready.append(QStringLiteral("never")); };
        whenReady(m_context.get(), std::make_unique<QObject>().get(), never);
        whenReady(std::make_unique<Context>(m_uuid).get(), this, never);
    }

    static QList<State> statesOf(const QSignalSpy& spy)
    {
        QList<State> states;
        for (const QList<QVariant>& arguments : spy)
            states.append(arguments.at(0).value<State>());
        return states;
    }

    Desk m_desk;
    QUuid const m_uuid{QStringLiteral("{6F8D2C4E-5B0A-4A37-9D0E-0C8F3F1F2A10}")};
    std::unique_ptr<Context> m_context;
    QStringList m_ready; ///< what awaitReady() has waited for
};

QTEST_GUILESS_MAIN(TstContext)
#include "tst_context.moc"
