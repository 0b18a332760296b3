// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

#include <QtCore/QMetaProperty>
#include <QtCore/QPointer>

using namespace vx::platform::zel;

using State = RegistrationState::Type;

/// One process, one bridge: the cases follow the life of one application and build on each other.
class TstContext : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void knowsNothingBeforeTheServiceSpeaks();
    void refusesANullUuid();
    void announcesNoEmptyState();
    void announcesTheFirstState();
    void registersWithItsUuid();
    void registersOnlyInStatesThatAllowIt_data();
    void registersOnlyInStatesThatAllowIt();
    void announcesAStateOnceHoweverOftenItIsSent();
    void readsAPermissionRecordThatLacksMembers();
    void announcesToEveryContext();
    void tellsANewContextOnlyWhatChanges();
    void maySpinAnEventLoopInASlot();
    void mayBeDestroyedInItsOwnSlot();
    void holdsAllowedBackUntilProfileAndPictureAreThere();
    void announcesAllowedOnceMoreAfterAnotherState();
    void asksNothingForARegisteredApplication();

private:
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
};

void TstContext::init()
{
    if (!m_context) {
        m_desk.heldBack = QStringList{QStringLiteral("permission")};
        m_context = std::make_unique<Context>(m_uuid);
    }
}

void TstContext::knowsNothingBeforeTheServiceSpeaks()
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

void TstContext::refusesANullUuid()
{
    Context withoutUuid{QUuid()};
    QSignalSpy states(&withoutUuid, &Context::registrationStateUpdated);
    QVERIFY(!withoutUuid.requestRegisterApplication());
    QVERIFY(!withoutUuid.requestRegisterApplicationSilent());
    QCOMPARE(statesOf(states), QList<State>({RegistrationState::InvalidUuid, RegistrationState::InvalidUuid}));
    QVERIFY(m_desk.nothingWritten());
}

void TstContext::announcesTheFirstState()
{
    QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
    m_desk.heldBack.clear();
    m_desk.sendElements(
        QStringLiteral("listAdd"), QStringLiteral("global"),
        {ScriptedCore::json(R"({"name":"permission","value":{"registrationState":"Unregistered","zelSetup":true}})")});
    QTRY_COMPARE(statesOf(states), QList<State>({RegistrationState::Unregistered}));
    QVERIFY(m_context->isZelSetup());

    // What a view binds to.
    QCOMPARE(m_context->property("registrationState").value<State>(), RegistrationState::Unregistered);
    QCOMPARE(m_context->property("accessAllowed").toBool(), false);
    QCOMPARE(m_context->property("zelSetup").toBool(), true);
    QCOMPARE(m_context->property("platformVersion").toInt(), 200);
    for (const char* name : {"registrationState", "accessAllowed", "zelSetup"}) {
        const auto property = Context::staticMetaObject.property(Context::staticMetaObject.indexOfProperty(name));
        QCOMPARE(property.notifySignal().name(), QByteArray("registrationStateUpdated"));
    }
}

void TstContext::registersWithItsUuid()
{
    QVERIFY(m_context->requestRegisterApplication());
    QCOMPARE(m_desk.core.nextMessage(), QByteArray("{\"registrationRequest\":{\"uuid\":"
                                                   "\"6f8d2c4e-5b0a-4a37-9d0e-0c8f3f1f2a10\",\"silent\":false}}"));
    QVERIFY(m_context->requestRegisterApplicationSilent());
    QCOMPARE(m_desk.core.nextMessage(), QByteArray("{\"registrationRequest\":{\"uuid\":"
                                                   "\"6f8d2c4e-5b0a-4a37-9d0e-0c8f3f1f2a10\",\"silent\":true}}"));
}

void TstContext::registersOnlyInStatesThatAllowIt_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<State>("state");
    QTest::addColumn<bool>("allowed");
    const struct
    {
        const char* word;
        State state;
        bool allowed;
    } rows[] = {{"NoSuchWord", RegistrationState::Unknown, false},
                {"Pending", RegistrationState::Pending, false},
                {"NoDataConnection", RegistrationState::NoDataConnection, true},
                {"MaximumUsersReached", RegistrationState::MaxDownloadsReached, false},
                {"CancelledByUser", RegistrationState::CancelledByUser, true}};
    for (const auto& row : rows)
        QTest::newRow(row.word) << QString::fromLatin1(row.word) << row.state << row.allowed;
}

void TstContext::registersOnlyInStatesThatAllowIt()
{
    QFETCH(QString, word);
    QFETCH(State, state);
    QFETCH(bool, allowed);
    QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
    m_desk.changeState(word);
    QTRY_COMPARE(statesOf(states), QList<State>({state}));
    QCOMPARE(m_context->registrationState(), state);
    QVERIFY(!m_context->isAccessAllowed());

    QCOMPARE(m_context->requestRegisterApplication(), allowed);
    if (allowed)
        QVERIFY(m_desk.core.nextMessage().startsWith("{\"registrationRequest\":"));
    QVERIFY(m_desk.nothingWritten());
    QCOMPARE(states.size(), 1);
}

void TstContext::announcesAStateOnceHoweverOftenItIsSent()
{
    QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
    m_desk.changeState(QStringLiteral("Pending"));
    m_desk.changeState(QStringLiteral("Pending"));
    m_desk.changePermission(R"({"zelInvites":true,"zelSetup":false})");
    QVERIFY(m_desk.settle());
    QCOMPARE(statesOf(states), QList<State>({RegistrationState::Pending}));
    QVERIFY(!m_context->isZelSetup());
}

void TstContext::announcesNoEmptyState()
{
    QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
    m_desk.sendElements(QStringLiteral("listAdd"), QStringLiteral("global"),
                        {ScriptedCore::json(R"({"name":"permission","value":{"zelSetup":true}})")});
    QVERIFY(m_desk.settle());
    QVERIFY(m_context->isZelSetup()); // the record has been read
    QCOMPARE(m_context->registrationState(), RegistrationState::Unknown);
    QVERIFY(!m_context->requestRegisterApplication());
    QCOMPARE(states.size(), 0);
}

void TstContext::readsAPermissionRecordThatLacksMembers()
{
    QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
    m_desk.sendElements(QStringLiteral("listChange"), QStringLiteral("global"),
                        {ScriptedCore::json(R"({"name":"permission","value":{"registrationState":"Expired",
                                            "showAppBox":"yes","zelSetup":1,"more":[{}]}})")});
    QTRY_COMPARE(statesOf(states), QList<State>({RegistrationState::Expired}));
    QVERIFY(!m_context->isZelSetup());
}

void TstContext::announcesToEveryContext()
{
    Context second(QUuid::createUuid());
    QSignalSpy firstStates(m_context.get(), &Context::registrationStateUpdated);
    QSignalSpy secondStates(&second, &Context::registrationStateUpdated);
    m_desk.changeState(QStringLiteral("Unregistered"));
    QTRY_COMPARE(firstStates.size(), 1);
    QCOMPARE(statesOf(secondStates), statesOf(firstStates));
}

void TstContext::tellsANewContextOnlyWhatChanges()
{
    Context late(m_uuid);
    QSignalSpy states(&late, &Context::registrationStateUpdated);
    QVERIFY(m_desk.settle());
    QCOMPARE(late.registrationState(), RegistrationState::Unregistered);
    QCOMPARE(states.size(), 0);
}

void TstContext::maySpinAnEventLoopInASlot()
{
    QList<State> entered;
    QList<State> left;
    QObject owner;
    connect(m_context.get(), &Context::registrationStateUpdated, &owner, [&](State state) {
        entered.append(state);
        if (state == RegistrationState::Pending) { // a dialog, say, while the service goes on
            m_desk.changeState(QStringLiteral("NoDataConnection"));
            m_desk.changeState(QStringLiteral("TemporaryError"));
            QTRY_COMPARE(entered.size(), 3);
        }
        left.append(state);
    });
    m_desk.changeState(QStringLiteral("Pending"));
    QTRY_COMPARE(left.size(), 3);
    QCOMPARE(entered, QList<State>({RegistrationState::Pending, RegistrationState::NoDataConnection,
                                    RegistrationState::TemporaryError}));
    QCOMPARE(left.last(), RegistrationState::Pending);
    QVERIFY(m_desk.settle());
    QCOMPARE(entered.size(), 3);
    QCOMPARE(m_context->registrationState(), RegistrationState::TemporaryError);
}

void TstContext::mayBeDestroyedInItsOwnSlot()
{
    QPointer<Context> doomed = new Context(m_uuid);
    connect(doomed, &Context::registrationStateUpdated, doomed, [&] { delete doomed; });
    QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
    m_desk.changeState(QStringLiteral("Unregistered"));
    QTRY_COMPARE(states.size(), 1);
    QVERIFY(!doomed);
}

void TstContext::holdsAllowedBackUntilProfileAndPictureAreThere()
{
    QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
    m_desk.profile().insert(QStringLiteral("avatarId"), QStringLiteral("picture-1"));
    m_desk.changeState(QStringLiteral("Success"));
    QVERIFY(m_desk.settle());
    QVERIFY(m_context->isAccessAllowed()); // the service's word counts at once,
    QCOMPARE(states.size(), 0);            // the signal waits for what the other classes show

    QVERIFY(m_desk.settle()); // the profile is here, the picture was asked for and has not come
    QCOMPARE(states.size(), 0);
    m_desk.sendStream(QStringLiteral("picture-1"), "bytes");
    QTRY_COMPARE(statesOf(states), QList<State>({RegistrationState::Allowed}));
    QVERIFY(m_desk.settle());
    QCOMPARE(states.size(), 1);
}

void TstContext::announcesAllowedOnceMoreAfterAnotherState()
{
    QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
    m_desk.changeState(QStringLiteral("TemporaryError"));
    QTRY_COMPARE(states.size(), 1);
    QVERIFY(!m_context->isAccessAllowed());
    m_desk.changeState(QStringLiteral("Success"));
    QTRY_COMPARE(states.size(), 2);
    QVERIFY(m_desk.settle());
    QCOMPARE(statesOf(states), QList<State>({RegistrationState::TemporaryError, RegistrationState::Allowed}));
}

void TstContext::asksNothingForARegisteredApplication()
{
    QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
    QVERIFY(!m_context->requestRegisterApplication());
    QVERIFY(m_desk.nothingWritten());
    QCOMPARE(states.size(), 0);
}

QTEST_GUILESS_MAIN(TstContext)
#include "tst_context.moc"
