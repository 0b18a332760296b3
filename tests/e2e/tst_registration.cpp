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
    void refusesANullUuidWithoutAWord();
    void takesTheStateBlockedWithoutAnObject_data();
    void takesTheStateBlockedWithoutAnObject();
    void isAllowedAtOnceAndAgainAfterAnotherState();
    void sendsWhatWasAskedForBeforeTheEnd();
    void survivesAServiceThatGoesAwayAndReturns();
    void takesMessagesUpToOneRead();
    void dropsNonsenseBetweenGoodMessages();

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
    startShell();
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
    const auto answerTo = [this](const QByteArray& command) {
        QJsonObject line = m_zelctl->ask(command);
        while (line.value("source"_L1).toString() == "ContactService"_L1)
            line = m_zelctl->take();
        return line;
    };
    QCOMPARE(answerTo("profile").value("displayName"_L1).toString(), u"Ada"_s);
    const QJsonObject permissions = answerTo("permissions");
    QCOMPARE(permissions.value("profileUpdates"_L1).toString(), u"Denied"_s);
    QCOMPARE(permissions.value("contactInvitations"_L1).toString(), u"Allowed"_s);
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

void TstRegistration::isAllowedAtOnceAndAgainAfterAnotherState()
{
    m_core->setPermission(u"Success"_s);
    m_core->setGlobal(u"platformProfile"_s, {{u"userId"_s, u"own"_s}});
    startShell();
    QCOMPARE(m_zelctl->take(), stateSignal(u"Allowed"_s)); // and nothing before it
    QCOMPARE(m_zelctl->ask("register"), answer(u"register"_s, false));
    QVERIFY(m_core->bodies(u"registrationRequest"_s).isEmpty());

    m_core->changeState(u"NoDataConnection"_s);
    QCOMPARE(m_zelctl->take(), stateSignal(u"NoDataConnection"_s));
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

void TstRegistration::takesMessagesUpToOneRead()
{
    beUnregistered();
    m_core->send(stateRecordOfSize(u"Expired"_s, 65536));
    QCOMPARE(m_zelctl->take(), stateSignal(u"Expired"_s));
    m_core->send(stateRecordOfSize(u"TemporaryError"_s, 65537)); // only the line break is cut off
    QCOMPARE(m_zelctl->take(), stateSignal(u"TemporaryError"_s));
    QByteArray open = stateRecordOfSize(u"Expired"_s, 65538); // the last brace is
    open.chop(1);
    m_core->send(open);
    m_core->changeState(u"ZelDisabled"_s);
    QCOMPARE(m_zelctl->take(), stateSignal(u"ZelDisabled"_s));
    m_core->send(stateRecordOfSize(u"Expired"_s, 400) + QByteArray("\0{[", 3));
    QCOMPARE(m_zelctl->take(), stateSignal(u"Expired"_s));
}

void TstRegistration::dropsNonsenseBetweenGoodMessages()
{
    const QByteArray good = stateRecordOfSize(u"Expired"_s, 400);
    const QByteArray nonsense[] = {
        "nonsense",
        "\xff\xfe\xfd\n",
        QByteArray(good).replace("@platform", "@other"),
        QByteArray(good).replace("dat:json:", "tad:json:"),
        QByteArray(good).replace("dat:json:", "dat::"),
        good.left(200) + '\n',
        QByteArray(good).replace("Expired", QByteArray("Ex\0ired", 7)),
        "@platform\ndat:json:[1,2,3]\n",
        "@platform\ndat:json:{}\n",
        "@platform\ndat:json:{\"listChange\":17}\n",
        "@platform\ndat:json:{\"listChange\":{\"type\":\"global\",\"elements\":[1,null,\"x\",[]]}}\n",
        "@platform\ndat:json:{\"listChanged\":{}}\n",
        "@platform\ndat:json:" + QByteArray(1000, '[') + '\n',
    };
    beUnregistered();
    for (const QByteArray& record : nonsense) {
        m_core->send(record);
        m_core->changeState(u"TemporaryError"_s);
        QCOMPARE(m_zelctl->take(), stateSignal(u"TemporaryError"_s));
        m_core->changeState(u"ZelDisabled"_s);
        QCOMPARE(m_zelctl->take(), stateSignal(u"ZelDisabled"_s));
    }
}

QTEST_GUILESS_MAIN(TstRegistration)
#include "tst_registration.moc"
