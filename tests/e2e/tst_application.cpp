// SPDX-License-Identifier: Apache-2.0
#include "RawCore.h"

#include <vx/platform/zel/Context.h>
#include <vx/platform/zel/UserProfile.h>

#include <QtCore/QEventLoop>
#include <QtCore/QTemporaryDir>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

using namespace vx::platform::zel;
using namespace Qt::StringLiterals;

namespace {

const QUuid uuid(u"4d3c2b1a-0f9e-4d8c-8b7a-695847362514"_s);

QList<RegistrationState::Type> statesOf(const QSignalSpy& spy)
{
    QList<RegistrationState::Type> states;
    for (const QVariantList& arguments : spy)
        states += arguments.first().value<RegistrationState::Type>();
    return states;
}

} // namespace

/// What only an application's own code can do to the library: several contexts, and slots that take their time. One
/// process, one service, one library for all cases; each leaves the application registered.
class TstApplication : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void tellsAllContextsEverythingOnce();
    void refusesANullUuidOfOneContextAndTellsAll();
    void takesMoreMessagesInANestedLoop();
    void showsTheNewProfileInANestedLoop();
    void letsASlotDestroyItsContext();
    void keepsObjectsThatOutliveTheirContext();

private:
    QTemporaryDir m_root;
    std::unique_ptr<RawCore> m_core;
};

void TstApplication::initTestCase()
{
    qputenv("PPS_ROOT", m_root.path().toUtf8());
    m_core = std::make_unique<RawCore>(m_root.path());
    QVERIFY(m_core->listen());
    m_core->setPermission(u"Success"_s);
    m_core->setGlobal(u"platformProfile"_s, {{u"userId"_s, u"own"_s}, {u"displayName"_s, u"Ada"_s}});
    m_core->serveEmptyLists();
}

void TstApplication::init()
{
    Context context(uuid);
    if (context.isAccessAllowed())
        return;
    QSignalSpy spy(&context, &Context::registrationStateUpdated);
    if (context.registrationState() != RegistrationState::Unknown)
        m_core->changeState(u"Success"_s);
    QVERIFY(QTest::qWaitFor([&] { return statesOf(spy).contains(RegistrationState::Allowed); }));
}

void TstApplication::tellsAllContextsEverythingOnce()
{
    Context first(uuid);
    Context second(QUuid::createUuid());
    QSignalSpy firstSpy(&first, &Context::registrationStateUpdated);
    QSignalSpy secondSpy(&second, &Context::registrationStateUpdated);
    m_core->changeState(u"TemporaryError"_s);
    m_core->changeState(u"TemporaryError"_s); // no news
    m_core->changeState(u"Success"_s);
    QTRY_COMPARE(secondSpy.size(), 2);
    const QList<RegistrationState::Type> expected{RegistrationState::TemporaryError, RegistrationState::Allowed};
    QCOMPARE(statesOf(firstSpy), expected);
    QCOMPARE(statesOf(secondSpy), expected);
    QVERIFY(first.isAccessAllowed() && second.isAccessAllowed());
}

void TstApplication::refusesANullUuidOfOneContextAndTellsAll()
{
    Context context(uuid);
    Context nameless{QUuid()};
    QSignalSpy spy(&context, &Context::registrationStateUpdated);
    QVERIFY(!nameless.requestRegisterApplication());
    QCOMPARE(statesOf(spy), QList{RegistrationState::InvalidUuid});
    QCOMPARE(nameless.registrationState(), RegistrationState::Allowed);
}

/// A dialog in a slot is ordinary: what arrives meanwhile is announced in the inner loop, before contexts that come
/// later have heard what the dialog is about.
void TstApplication::takesMoreMessagesInANestedLoop()
{
    Context asking(uuid);
    Context later(uuid);
    QStringList heard;
    connect(&asking, &Context::registrationStateUpdated, this, [&](RegistrationState::Type state) {
        heard += u"asking %1"_s.arg(state);
        if (state != RegistrationState::Pending)
            return;
        QEventLoop dialog;
        connect(&asking, &Context::registrationStateUpdated, &dialog, &QEventLoop::quit);
        m_core->changeState(u"Expired"_s);
        m_core->changeState(u"ZelDisabled"_s);
        dialog.exec();
        heard += u"closed"_s;
    });
    connect(&later, &Context::registrationStateUpdated, this,
            [&](RegistrationState::Type state) { heard += u"later %1"_s.arg(state); });

    m_core->changeState(u"Pending"_s);
    QTRY_COMPARE(heard.size(), 7);
    QCOMPARE(heard.mid(0, 4), (QStringList{u"asking 3"_s, u"asking 11"_s, u"later 11"_s, u"closed"_s}));
    QVERIFY(heard.indexOf(u"later 3"_s) > heard.indexOf(u"closed"_s));
    QCOMPARE(heard.count(u"asking 14"_s), 1);
    QCOMPARE(heard.count(u"later 14"_s), 1);
    QCOMPARE(asking.registrationState(), RegistrationState::ZelDisabled);
}

void TstApplication::showsTheNewProfileInANestedLoop()
{
    Context context(uuid);
    UserProfile profile(&context);
    QCOMPARE(profile.displayName(), u"Ada"_s);
    QStringList heard;
    connect(&profile, &UserProfile::personalMessageUpdated, this, [&](const QString& value) {
        heard += value;
        if (value != "first"_L1)
            return;
        QEventLoop dialog;
        connect(&profile, &UserProfile::displayNameUpdated, &dialog, &QEventLoop::quit);
        m_core->changeGlobal(u"permission"_s, {{u"showAppBox"_s, true}, {u"registrationState"_s, u"Pending"_s}});
        m_core->changeGlobal(u"permission"_s, {{u"registrationState"_s, u"Success"_s}});
        m_core->changeGlobal(u"platformProfile"_s, {{u"personalMessage"_s, u"second"_s}});
        m_core->changeGlobal(u"platformProfile"_s, {{u"displayName"_s, u"Ada L."_s}});
        dialog.exec();
        heard += profile.displayName() + u'/' + profile.personalMessage();
    });
    m_core->changeGlobal(u"platformProfile"_s, {{u"personalMessage"_s, u"first"_s}});
    QTRY_COMPARE(heard.size(), 3);
    QCOMPARE(heard, (QStringList{u"first"_s, u"second"_s, u"Ada L./second"_s}));
    QVERIFY(context.isAccessAllowed());
    m_core->changeGlobal(u"platformProfile"_s, {{u"displayName"_s, u"Ada"_s}});
    QTRY_COMPARE(profile.displayName(), u"Ada"_s);
}

void TstApplication::letsASlotDestroyItsContext()
{
    auto doomed = std::make_unique<Context>(uuid);
    Context other(uuid);
    QSignalSpy spy(&other, &Context::registrationStateUpdated);
    bool fell = false;
    connect(doomed.get(), &Context::registrationStateUpdated, this, [&] {
        fell = true;
        doomed.reset();
    });
    m_core->changeState(u"Expired"_s);
    QTRY_COMPARE(statesOf(spy), QList{RegistrationState::Expired});
    QVERIFY(fell);
}

void TstApplication::keepsObjectsThatOutliveTheirContext()
{
    auto context = std::make_unique<Context>(uuid);
    UserProfile profile(context.get());
    QCOMPARE(profile.displayName(), u"Ada"_s);
    context.reset();
    QCOMPARE(profile.displayName(), QString());
    QVERIFY(!profile.requestUpdatePersonalMessage(u"x"_s));
}

QTEST_GUILESS_MAIN(TstApplication)
#include "tst_application.moc"
