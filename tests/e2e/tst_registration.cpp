// SPDX-License-Identifier: Apache-2.0
#include "ZelctlProcess.h"

#include <common/TestMain.h>
#include <common/ScriptedCore.h>

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
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

QJsonObject permission(const QString& state)
{
    return {{u"showAppBox"_s, false}, {u"zelInvites"_s, true}, {u"registrationState"_s, state}, {u"zelSetup"_s, true}};
}

QJsonObject elementsOfGlobals(const QJsonArray& elements)
{
    return {{u"type"_s, u"global"_s}, {u"elements"_s, elements}};
}

QJsonObject global(const QString& name, const QJsonValue& value)
{
    return {{u"name"_s, name}, {u"value"_s, value}};
}

/// A record that changes the registration state and is \a size bytes long, by blanks within its JSON.
QByteArray stateRecordOfSize(const QString& state, qsizetype size)
{
    QByteArray record =
        ScriptedCore::recordOf(u"listChange"_s, elementsOfGlobals({global(u"permission"_s, permission(state))}));
    return record.insert(record.indexOf('{') + 1, QByteArray(size - record.size(), ' '));
}

/// Answers requests for the globals that it has and, when told so, requests for full lists with empty ones.
class Core : public ScriptedCore
{
public:
    Core()
    {
        answer(u"requestListElements"_s, [this](const QJsonObject& body) {
            QJsonArray elements;
            const QJsonArray wanted = body.value("elements"_L1).toArray();
            for (const QJsonValue& key : wanted) {
                const QString name = key["name"_L1].toString();
                if (globals.contains(name))
                    elements += global(name, globals.value(name));
            }
            if (elements.isEmpty()) // a service that does not know yet does not answer
                return;
            send(u"listElements"_s, {{u"type"_s, u"global"_s}, {u"cookie"_s, body.value("cookie"_L1)}});
            QJsonObject chunk = elementsOfGlobals(elements);
            chunk.insert(u"last"_s, true);
            send(u"listChunk"_s, chunk);
        });
    }

    void serveEmptyLists()
    {
        answer(u"requestListAll"_s, [this](const QJsonObject& body) {
            const QJsonValue type = body.value("type"_L1);
            send(u"listAll"_s, {{u"type"_s, type}});
            send(u"listChunk"_s, {{u"type"_s, type}, {u"elements"_s, QJsonArray()}, {u"last"_s, true}});
        });
    }

    void changeState(const QString& state)
    {
        send(u"listChange"_s,
             elementsOfGlobals({global(u"permission"_s, QJsonObject{{u"registrationState"_s, state}})}));
    }

    /// The next message of this type; what comes before it is passed over.
    QByteArray take(const QByteArray& type)
    {
        QByteArray message;
        do {
            message = nextMessage();
        } while (!message.isEmpty() && !message.startsWith("{\"" + type + "\":"));
        return message;
    }

    /// Ends as a service does that is killed: the socket's file stays, nobody listens on it.
    void die()
    {
        const QString path = server().path();
        QVERIFY(QFile::rename(path, path + u'~'));
        server().close();
        QVERIFY(QFile::rename(path + u'~', path));
    }

    QJsonObject globals;
};

} // namespace

/// Registration as an application sees it, over a real object, against a service that is played byte by byte. Each
/// case is an application of its own: a process knows one service for its life.
class TstRegistration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_core = std::make_unique<Core>();
        m_zelctl = std::make_unique<ZelctlProcess>(m_core->root());
    }

    void cleanup()
    {
        m_zelctl.reset();
        m_core.reset();
    }

    void beginsWithItsNameAndAsksForThePermission()
    {
        m_core->leaveToTest(u"requestListElements"_s);
        startShell();
        QCOMPARE(m_zelctl->lines().first(),
                 "{\"ready\":true,\"registrationState\":\"Unknown\",\"accessAllowed\":false,\"zelSetup\":false,"
                 "\"platformVersion\":200}");
        QCOMPARE(m_core->nextRecord(), "msg::zel\ndat:json:{\"tpaApi\":{\"apiType\":\"Qt\"}}\n");
        const QByteArray request = m_core->nextMessage();
        const QByteArray cookie =
            Core::json(request)["requestListElements"_L1].toObject()["cookie"_L1].toString().toUtf8();
        QCOMPARE(request, "{\"requestListElements\":{\"cookie\":\"" + cookie +
                              "\",\"elements\":[{\"name\":\"permission\"}],\"type\":\"global\"}}");
        QCOMPARE(m_zelctl->ask("register"), answer(u"register"_s, false)); // nothing is known yet
    }

    void followsTheWholeWayToAllowed()
    {
        beUnregistered();
        m_core->globals.insert(u"platformProfile"_s,
                               QJsonObject{{u"userId"_s, u"own"_s}, {u"displayName"_s, u"Ada"_s}});
        m_core->serveEmptyLists();

        QCOMPARE(m_zelctl->ask("register"), answer(u"register"_s, true));
        QCOMPARE(m_core->take("registrationRequest"),
                 "{\"registrationRequest\":{\"uuid\":\"" + uuidText + "\",\"silent\":false}}");
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

    void takesTheStateBlockedWithoutAnObject()
    {
        const QString path = m_core->server().path();
        m_core->die(); // and leaves a socket behind that nobody serves
        const QJsonObject ready = startShell();
        QCOMPARE(ready.value("ready"_L1), QJsonValue(true));
        QCOMPARE(ready.value("registrationState"_L1).toString(), u"BlockedByUser"_s);
        QCOMPARE(ready.value("zelSetup"_L1), QJsonValue(false));
        QCOMPARE(m_zelctl->ask("register"), answer(u"register"_s, false));
        QCOMPARE(m_zelctl->ask("contacts").value("valid"_L1), QJsonValue(false));
        QCOMPARE(m_zelctl->ask("box-add hello"), answer(u"box-add"_s, false));
        QCOMPARE(m_zelctl->finish(), 0);
        QVERIFY2(m_zelctl->diagnostics().contains("There is no core service at " + path.toUtf8()),
                 m_zelctl->diagnostics().constData());
    }

    void sendsWhatWasAskedForBeforeTheEnd()
    {
        beUnregistered();
        m_zelctl->write("register\nquit");
        QCOMPARE(m_zelctl->finish(), 0);
        QVERIFY(!m_core->take("registrationRequest").isEmpty());
    }

    void survivesAServiceThatGoesAwayAndReturns()
    {
        beUnregistered();
        m_core->server().close();
        QCOMPARE(m_zelctl->ask("register"), answer(u"register"_s, true)); // handed on, and lost without notice
        QCOMPARE(m_zelctl->ask("state").value("registrationState"_L1).toString(), u"Unregistered"_s);

        QVERIFY(m_core->server().listen(u"/pps/services/zelcore/platform"_s, nullptr));
        QTRY_VERIFY(m_core->hasClient());
        m_core->changeState(u"TemporaryError"_s);
        QCOMPARE(m_zelctl->take(), stateSignal(u"TemporaryError"_s));
        QCOMPARE(m_zelctl->ask("register"), answer(u"register"_s, true));
        QVERIFY(!m_core->take("registrationRequest").isEmpty());
        m_core->changeState(u"Pending"_s);
        QCOMPARE(m_zelctl->take(), stateSignal(u"Pending"_s));
    }

    void takesMessagesUpToOneRead()
    {
        beUnregistered();
        m_core->sendRecord(stateRecordOfSize(u"Expired"_s, 65536));
        QCOMPARE(m_zelctl->take(), stateSignal(u"Expired"_s));
        m_core->sendRecord(stateRecordOfSize(u"TemporaryError"_s, 65537)); // only the line break is cut off
        QCOMPARE(m_zelctl->take(), stateSignal(u"TemporaryError"_s));
        QByteArray open = stateRecordOfSize(u"Expired"_s, 65538); // the last brace is
        open.chop(1);
        m_core->sendRecord(open);
        m_core->changeState(u"ZelDisabled"_s);
        QCOMPARE(m_zelctl->take(), stateSignal(u"ZelDisabled"_s));
        m_core->sendRecord(stateRecordOfSize(u"Expired"_s, 400) + QByteArray("\0{[", 3));
        QCOMPARE(m_zelctl->take(), stateSignal(u"Expired"_s));
    }

private:
    QJsonObject startShell() { return m_zelctl->startShell({u"--uuid"_s, QString::fromLatin1(uuidText)}); }

    /// A shell that waits for its user to register.
    void beUnregistered()
    {
        m_core->globals.insert(u"permission"_s, permission(u"Unregistered"_s));
        QCOMPARE(startShell().value("ready"_L1), QJsonValue(true));
        QCOMPARE(m_zelctl->take(), stateSignal(u"Unregistered"_s));
    }

    std::unique_ptr<Core> m_core;
    std::unique_ptr<ZelctlProcess> m_zelctl;
};

ZEL_TEST(TstRegistration)
#include "tst_registration.moc"
