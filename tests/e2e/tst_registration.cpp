// SPDX-License-Identifier: Apache-2.0
#include "RawCore.h"
#include "ZelctlProcess.h"

#include <QtCore/QJsonArray>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;

namespace {

const QByteArray uuidText = "4d3c2b1a-0f9e-4d8c-8b7a-695847362514";

QJsonObject stateSignal(const QString& state)
{
    return {{u"source"_s, u"Context"_s}, {u"signal"_s, u"registrationStateUpdated"_s}, {u"state"_s, state}};
}

QJsonObject answer(const QString& command, bool ok)
{
    return {{u"answer"_s, command}, {u"ok"_s, ok}};
}

/// A record that changes the registration state and is \a size bytes long, by blanks within its JSON.
QByteArray stateRecordOfSize(const QString& state, qsizetype size)
{
    QByteArray record = RawCore::recordOf(
        u"listChange"_s, {{u"type"_s, u"global"_s},
                          {u"elements"_s, QJsonArray{QJsonObject{{u"name"_s, u"permission"_s},
                                                                 {u"value"_s, RawCore::permission(state)}}}}});
    return record.insert(record.indexOf('{') + 1, QByteArray(size - record.size(), ' '));
}

} // namespace

/// Registration as an application sees it, over a real object, against a service that is played byte by byte. Each
/// case is an application of its own: a process knows one service for its life.
class TstRegistration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void beginsWithItsNameAndAsksForThePermission();
    void followsTheWholeWayToAllowed();
    void reportsEveryState_data();
    void reportsEveryState();
    void registersSilently();
    void refusesANullUuidWithoutAWord();
    void takesTheStateBlockedWithoutAnObject_data();
    void takesTheStateBlockedWithoutAnObject();
    void isAllowedAtOnceWhenTheFirstRecordSaysSo();
    void isAllowedAgainAfterAnotherState();
    void sendsWhatWasAskedForBeforeTheEnd();
    void survivesAServiceThatGoesAwayAndReturns();
    void takesMessagesUpToOneRead_data();
    void takesMessagesUpToOneRead();
    void readsUpToANulByte();
    void dropsNonsenseBetweenGoodMessages_data();
    void dropsNonsenseBetweenGoodMessages();
    void readsWhatItCanOfAPermissionRecord_data();
    void readsWhatItCanOfAPermissionRecord();

private:
    QJsonObject startShell(const QByteArray& uuid = uuidText);
    void beUnregistered();

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<RawCore> m_core;
    std::unique_ptr<ZelctlProcess> m_zelctl;
};

void TstRegistration::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    m_core = std::make_unique<RawCore>(m_root->path());
    QVERIFY(m_core->listen());
    m_zelctl = std::make_unique<ZelctlProcess>(m_root->path());
}

void TstRegistration::cleanup()
{
    m_zelctl.reset();
    m_core.reset();
}

QJsonObject TstRegistration::startShell(const QByteArray& uuid)
{
    return m_zelctl->startShell({u"--uuid"_s, QString::fromLatin1(uuid)});
}

/// A shell that waits for its user to register.
void TstRegistration::beUnregistered()
{
    m_core->setPermission(u"Unregistered"_s);
    QCOMPARE(startShell().value("ready"_L1), QJsonValue(true));
    QCOMPARE(m_zelctl->take(), stateSignal(u"Unregistered"_s));
}

void TstRegistration::beginsWithItsNameAndAsksForThePermission()
{
    const QJsonObject ready{{u"ready"_s, true},
                            {u"registrationState"_s, u"Unknown"_s},
                            {u"accessAllowed"_s, false},
                            {u"zelSetup"_s, false},
                            {u"platformVersion"_s, 200}};
    QCOMPARE(startShell(), ready);
    QCOMPARE(m_zelctl->lines().first(),
             "{\"ready\":true,\"registrationState\":\"Unknown\",\"accessAllowed\":false,\"zelSetup\":false,"
             "\"platformVersion\":200}");

    const QJsonObject request = m_core->take(u"requestListElements"_s);
    QCOMPARE(m_core->records().first(), "msg::zel\ndat:json:{\"tpaApi\":{\"apiType\":\"Qt\"}}\n");
    const QByteArray cookie = request.value("cookie"_L1).toString().toUtf8();
    QCOMPARE(m_core->records().at(1), "msg::zel\ndat:json:{\"requestListElements\":{\"cookie\":\"" + cookie +
                                          "\",\"elements\":[{\"name\":\"permission\"}],\"type\":\"global\"}}\n");
    QCOMPARE(m_zelctl->ask("register"), answer(u"register"_s, false)); // nothing is known yet
}

void TstRegistration::followsTheWholeWayToAllowed()
{
    beUnregistered();
    m_core->setGlobal(u"platformProfile"_s, {{u"userId"_s, u"own"_s}, {u"displayName"_s, u"Ada"_s}});
    m_core->serveEmptyLists();

    QCOMPARE(m_zelctl->ask("register"), answer(u"register"_s, true));
    m_core->take(u"registrationRequest"_s);
    QVERIFY(m_core->records().contains("msg::zel\ndat:json:{\"registrationRequest\":{\"uuid\":\"" + uuidText +
                                       "\",\"silent\":false}}\n"));

    m_core->changeState(u"Pending"_s);
    QCOMPARE(m_zelctl->take(), stateSignal(u"Pending"_s));
    QCOMPARE(m_zelctl->ask("register"), answer(u"register"_s, false));
    m_core->changeState(u"Success"_s);
    QCOMPARE(m_zelctl->take(), stateSignal(u"Allowed"_s));

    // What was made in the slot of that signal is alive.
    m_zelctl->write("profile");
    QJsonObject line = m_zelctl->take();
    while (line.value("source"_L1).toString() == "ContactService"_L1)
        line = m_zelctl->take();
    QCOMPARE(line.value("displayName"_L1).toString(), u"Ada"_s);
    m_zelctl->write("permissions");
    line = m_zelctl->take();
    while (line.value("source"_L1).toString() == "ContactService"_L1)
        line = m_zelctl->take();
    QCOMPARE(line.value("profileUpdates"_L1).toString(), u"Denied"_s);
    QCOMPARE(line.value("contactInvitations"_L1).toString(), u"Allowed"_s);
}

void TstRegistration::reportsEveryState_data()
{
    QTest::addColumn<QString>("wire");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("mayRegister");
    const auto row = [](const char* wire, const char* name, bool mayRegister) {
        QTest::newRow(wire) << QString::fromLatin1(wire) << QString::fromLatin1(name) << mayRegister;
    };
    row("Unknown", "Unknown", false);
    row("Unregistered", "Unregistered", true);
    row("Pending", "Pending", false);
    row("BlockedByUser", "BlockedByUser", false);
    row("BlockedByTov", "BlockedByTOV", false);
    row("NoDataConnection", "NoDataConnection", true);
    row("UnexpectedError", "UnexpectedError", true);
    row("InvalidUuid", "InvalidUuid", true);
    row("TemporaryError", "TemporaryError", true);
    row("MaximumUsersReached", "MaxDownloadsReached", false);
    row("Expired", "Expired", false);
    row("CancelledByUser", "CancelledByUser", true);
    row("MaximumAppsReached", "MaxAppsReached", false);
    row("ZelDisabled", "ZelDisabled", false);
    row("BlockedEnterprisePerimeter", "BlockedEnterprisePerimeter", false);
    // Near misses: the comparison is exact.
    row("BlockedByTOV", "Unknown", false);
    row("unregistered", "Unknown", false);
    row("Allowed", "Unknown", false);
}

void TstRegistration::reportsEveryState()
{
    QFETCH(QString, wire);
    QFETCH(QString, name);
    QFETCH(bool, mayRegister);

    m_core->setPermission(wire);
    startShell();
    QCOMPARE(m_zelctl->take(), stateSignal(name));
    const QJsonObject state = m_zelctl->ask("state");
    QCOMPARE(state.value("registrationState"_L1).toString(), name);
    QCOMPARE(state.value("accessAllowed"_L1), QJsonValue(false));
    QCOMPARE(state.value("zelSetup"_L1), QJsonValue(true));
    QCOMPARE(m_zelctl->ask("register"), answer(u"register"_s, mayRegister));
    if (mayRegister)
        QCOMPARE(m_core->take(u"registrationRequest"_s).value("uuid"_L1).toString().toLatin1(), uuidText);
}

void TstRegistration::registersSilently()
{
    beUnregistered();
    QCOMPARE(m_zelctl->ask("register --silent"), answer(u"register"_s, true));
    QCOMPARE(m_core->take(u"registrationRequest"_s).value("silent"_L1), QJsonValue(true));
}

void TstRegistration::refusesANullUuidWithoutAWord()
{
    m_core->setPermission(u"Unregistered"_s);
    startShell("null-uuid");
    QCOMPARE(m_zelctl->take(), stateSignal(u"Unregistered"_s));
    m_zelctl->write("register");
    QCOMPARE(m_zelctl->take(), stateSignal(u"InvalidUuid"_s)); // during the call
    QCOMPARE(m_zelctl->take(), answer(u"register"_s, false));
    QCOMPARE(m_zelctl->ask("state").value("registrationState"_L1).toString(), u"Unregistered"_s);
    m_core->changeState(u"Expired"_s);
    QCOMPARE(m_zelctl->take(), stateSignal(u"Expired"_s));
    QVERIFY(m_core->bodies(u"registrationRequest"_s).isEmpty());
}

void TstRegistration::takesTheStateBlockedWithoutAnObject_data()
{
    QTest::addColumn<bool>("stale");
    QTest::newRow("nothing there") << false;
    QTest::newRow("a socket that nobody serves") << true;
}

void TstRegistration::takesTheStateBlockedWithoutAnObject()
{
    QFETCH(bool, stale);
    stale ? m_core->die() : m_core->leave();
    const QJsonObject ready = startShell();
    QCOMPARE(ready.value("ready"_L1), QJsonValue(true));
    QCOMPARE(ready.value("registrationState"_L1).toString(), u"BlockedByUser"_s);
    QCOMPARE(ready.value("zelSetup"_L1), QJsonValue(false));
    QCOMPARE(m_zelctl->ask("register"), answer(u"register"_s, false));
    QCOMPARE(m_zelctl->ask("contacts").value("valid"_L1), QJsonValue(false));
    QCOMPARE(m_zelctl->ask("box-add hello"), answer(u"box-add"_s, false));
    QCOMPARE(m_zelctl->finish(), 0);
    QVERIFY2(m_zelctl->diagnostics().contains("There is no core service at " + m_core->path().toUtf8()),
             m_zelctl->diagnostics().constData());
}

void TstRegistration::isAllowedAtOnceWhenTheFirstRecordSaysSo()
{
    m_core->setPermission(u"Success"_s);
    m_core->setGlobal(u"platformProfile"_s, {{u"userId"_s, u"own"_s}});
    startShell();
    QCOMPARE(m_zelctl->take(), stateSignal(u"Allowed"_s)); // and nothing before it
    QCOMPARE(m_zelctl->ask("register"), answer(u"register"_s, false));
    QVERIFY(m_core->bodies(u"registrationRequest"_s).isEmpty());
}

void TstRegistration::isAllowedAgainAfterAnotherState()
{
    isAllowedAtOnceWhenTheFirstRecordSaysSo();
    m_core->changeState(u"NoDataConnection"_s);
    QCOMPARE(m_zelctl->take(), stateSignal(u"NoDataConnection"_s));
    QCOMPARE(m_zelctl->ask("state").value("accessAllowed"_L1), QJsonValue(false));
    QCOMPARE(m_zelctl->ask("set-message x"), answer(u"set-message"_s, false));
    m_core->changeState(u"Success"_s);
    QCOMPARE(m_zelctl->take(), stateSignal(u"Allowed"_s));
    QCOMPARE(m_zelctl->ask("set-message x"), answer(u"set-message"_s, true));
    m_core->changeState(u"Expired"_s);
    QVERIFY(m_zelctl->takeUntil(u"Expired"_s).isEmpty()); // one more Allowed, not two
}

void TstRegistration::sendsWhatWasAskedForBeforeTheEnd()
{
    beUnregistered();
    m_zelctl->write("register\nquit");
    QCOMPARE(m_zelctl->finish(), 0);
    QVERIFY(!m_core->take(u"registrationRequest"_s).isEmpty());
}

void TstRegistration::survivesAServiceThatGoesAwayAndReturns()
{
    beUnregistered();
    m_core->leave();
    QCOMPARE(m_zelctl->ask("register"), answer(u"register"_s, true)); // handed on, and lost without notice
    QCOMPARE(m_zelctl->ask("state").value("registrationState"_L1).toString(), u"Unregistered"_s);

    QVERIFY(m_core->listen());
    QVERIFY(m_core->waitForClient());
    m_core->changeState(u"TemporaryError"_s);
    QCOMPARE(m_zelctl->take(), stateSignal(u"TemporaryError"_s));
    QCOMPARE(m_zelctl->ask("register"), answer(u"register"_s, true));
    QVERIFY(!m_core->take(u"registrationRequest"_s).isEmpty());
    m_core->changeState(u"Pending"_s);
    QCOMPARE(m_zelctl->take(), stateSignal(u"Pending"_s));
}

void TstRegistration::takesMessagesUpToOneRead_data()
{
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<bool>("arrives");
    const QString state = u"Expired"_s;
    QTest::newRow("one byte less than a read") << stateRecordOfSize(state, 65535) << true;
    QTest::newRow("exactly a read") << stateRecordOfSize(state, 65536) << true;
    QTest::newRow("only the line break is cut off") << stateRecordOfSize(state, 65537) << true;
    QByteArray open = stateRecordOfSize(state, 65538);
    open.chop(1);
    QTest::newRow("the last brace is cut off") << open << false;
}

void TstRegistration::takesMessagesUpToOneRead()
{
    QFETCH(QByteArray, record);
    QFETCH(bool, arrives);
    beUnregistered();
    m_core->send(record);
    m_core->changeState(u"ZelDisabled"_s);
    QList<QJsonObject> expected;
    if (arrives)
        expected += stateSignal(u"Expired"_s);
    QCOMPARE(m_zelctl->takeUntil(u"ZelDisabled"_s), expected);
}

void TstRegistration::readsUpToANulByte()
{
    beUnregistered();
    m_core->send(stateRecordOfSize(u"Expired"_s, 400) + QByteArray("\0{[", 3));
    QCOMPARE(m_zelctl->take(), stateSignal(u"Expired"_s));
}

void TstRegistration::dropsNonsenseBetweenGoodMessages_data()
{
    QTest::addColumn<QByteArray>("record");
    const QByteArray good = stateRecordOfSize(u"Expired"_s, 400);
    QTest::newRow("no form at all") << QByteArray("nonsense");
    QTest::newRow("not UTF-8") << QByteArray("\xff\xfe\xfd\n");
    QTest::newRow("another object") << QByteArray(good).replace("@platform", "@other");
    QTest::newRow("another attribute") << QByteArray(good).replace("dat:json:", "tad:json:");
    QTest::newRow("not marked as JSON") << QByteArray(good).replace("dat:json:", "dat::");
    QTest::newRow("cut within") << good.left(200) + '\n';
    QTest::newRow("a NUL byte within") << QByteArray(good).replace("Expired", QByteArray("Ex\0ired", 7));
    QTest::newRow("JSON, but no object") << QByteArray("@platform\ndat:json:[1,2,3]\n");
    QTest::newRow("an empty object") << QByteArray("@platform\ndat:json:{}\n");
    QTest::newRow("a body of another kind") << QByteArray("@platform\ndat:json:{\"listChange\":17}\n");
    QTest::newRow("elements of another kind")
        << QByteArray("@platform\ndat:json:{\"listChange\":{\"type\":\"global\",\"elements\":[1,null,\"x\",[]]}}\n");
    QTest::newRow("a type that nobody knows") << QByteArray("@platform\ndat:json:{\"listChanged\":{}}\n");
    QTest::newRow("a thousand brackets") << "@platform\ndat:json:" + QByteArray(1000, '[') + '\n';
}

void TstRegistration::dropsNonsenseBetweenGoodMessages()
{
    QFETCH(QByteArray, record);
    beUnregistered();
    m_core->changeState(u"TemporaryError"_s);
    m_core->send(record);
    m_core->changeState(u"ZelDisabled"_s);
    QCOMPARE(m_zelctl->takeUntil(u"ZelDisabled"_s), QList<QJsonObject>{stateSignal(u"TemporaryError"_s)});
}

void TstRegistration::readsWhatItCanOfAPermissionRecord_data()
{
    QTest::addColumn<QJsonObject>("record");
    QTest::addColumn<QString>("state");
    QTest::addColumn<bool>("zelSetup");
    const auto row = [](const char* name, const QByteArray& json, const char* state, bool zelSetup) {
        QTest::newRow(name) << ZelctlProcess::parsed(json) << QString::fromLatin1(state) << zelSetup;
    };
    row("only the state", R"({"registrationState":"Unregistered"})", "Unregistered", false);
    row("flags that are texts and numbers",
        R"({"showAppBox":"true","zelInvites":1,"registrationState":"Unregistered","zelSetup":"yes"})", "Unregistered",
        false);
    row("unknown members", R"({"colour":{"deep":[1]},"registrationState":"Unregistered","zelSetup":true})",
        "Unregistered", true);
    row("a state that is empty", R"({"registrationState":"","zelSetup":true})", "", true);
    row("a state that is missing", R"({"zelSetup":true})", "", true);
    row("a state that is a number", R"({"registrationState":7,"zelSetup":true})", "", true);
    row("nothing", "{}", "", false);
}

void TstRegistration::readsWhatItCanOfAPermissionRecord()
{
    QFETCH(QJsonObject, record);
    QFETCH(QString, state);
    QFETCH(bool, zelSetup);
    m_core->setGlobal(u"permission"_s, record);
    startShell();
    if (state.isEmpty()) {
        // No signal; the record itself has arrived once the next one has.
        m_core->take(u"requestListElements"_s);
        m_core->changeState(u"Expired"_s);
        QVERIFY(m_zelctl->takeUntil(u"Expired"_s).isEmpty());
    } else {
        QCOMPARE(m_zelctl->take(), stateSignal(state));
    }
    QCOMPARE(m_zelctl->ask("state").value("zelSetup"_L1), QJsonValue(zelSetup));
}

QTEST_GUILESS_MAIN(TstRegistration)
#include "tst_registration.moc"
