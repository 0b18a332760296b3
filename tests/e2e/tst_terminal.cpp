// SPDX-License-Identifier: Apache-2.0
#include "PseudoTerminal.h"
#include "ZelctlProcess.h"

#include <common/TestMain.h>

#include <zelcore/Simulator.h>

#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

using namespace Qt::StringLiterals;

/// The programs at a terminal, where a line is edited.
class TstTerminal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_service = std::make_unique<zelcore::Simulator>();
        QVERIFY(m_service->start());
        m_environment.insert(u"XDG_STATE_HOME"_s, m_folder->path());
        m_environment.insert(u"PPS_ROOT"_s, m_service->root());
        m_environment.remove(u"ZEL_SLOG"_s);
        m_environment.remove(u"ZEL_SLOG_LEVEL"_s);
    }

    void printsAboveTheLineThatIsTyped()
    {
        startSimulator();
        const QByteArrayList typed{"zelcore-sim> contact add an displayName='somebody with anextreme", "lylongname'"};
        QVERIFY(types("contact add an displayName='somebody with anextremelylongname'", typed));
        QCOMPARE(ZelctlProcess(root()).run({u"state"_s}), 0);
        QVERIFY(m_terminal->shows(QByteArrayList{"application 1 comes", "application 1 goes"} + typed));
        // It is taken whole, and goes on where the cursor was: from the start three words on.
        QVERIFY(types("\001\033[1;5C\033[1;5C\033[1;5C", {typed.first()}));
        QCOMPARE(ZelctlProcess(root()).run({u"state"_s}), 0);
        QVERIFY(m_terminal->shows({"application 2 goes", typed.first()}));
        QVERIFY(types("na\r", {"zelcore-sim> contact add anna displayName='somebody with anextre", "melylongname'",
                               "zelcore-sim> "}));
        QVERIFY(types("contacts\r", {"contacts: 1, with the application: 1", "zelcore-sim> "}));
    }

    void bringsBackWhatWasTypedBefore()
    {
        for (const QByteArray keys : {"rate 0\r", "\033[A\033[A\r"}) {
            startSimulator();
            QVERIFY(types(keys, {"zelcore-sim> rate 0", "zelcore-sim> "}));
            QVERIFY(types("quit\r", {"zelcore-sim> quit", "status 0", ""}));
        }
        const QFileInfo history(m_folder->filePath(u"zelplatform/zelcore-sim-history"_s));
        QCOMPARE(history.permissions() & ~(QFile::ReadUser | QFile::WriteUser), QFile::ReadOwner | QFile::WriteOwner);
    }

    void completesCommands()
    {
        startZelctl();
        QVERIFY(types("sta\t", {"zelctl> state "}));
        QVERIFY(types("\025ic\t\t", {"icon-get  icon-register", "zelctl> icon-"}));
    }

    void goesOnAfterEscapeAlone()
    {
        startZelctl();
        QVERIFY(types("prof", {"zelctl> prof"}));
        QVERIFY(m_terminal->type("\033"));
        m_service->setRegistrationState(u"Pending"_s);
        QVERIFY(m_terminal->shows({signalLine("Pending"), "zelctl> prof"}));
    }

    void keepsTheLogOffTheLine()
    {
        if (!ZEL_ON_DESKTOP)
            QSKIP("a platform's log knows nothing of a line");
        m_environment.insert(u"ZEL_SLOG"_s, u"stderr"_s);
        m_environment.insert(u"ZEL_SLOG_LEVEL"_s, u"6"_s);
        startZelctl();
        QVERIFY(types("prof", {"zelctl> prof"}));
        m_service->sendMessage(u"x"_s, {});
        QVERIFY(m_terminal->shows({"{\"x\":{}}", "zelctl> prof"}));
    }

    void saysWhatIsBeingWaitedFor()
    {
        m_service->setRegistrationState(u"Pending"_s);
        start({QStringLiteral(ZELCTL_PATH), u"contacts"_s}, {});
        // On a slow machine the first second or two go by before the registration has begun.
        QTRY_VERIFY_WITH_TIMEOUT(m_terminal->line().startsWith("Waiting for the registration, "), 10'000);
        m_service->setRegistrationState(u"Success"_s);
        QVERIFY(m_terminal->shows({"valid     yes", "complete  yes", "count     0", "status 0", ""}));
    }

    void leavesTheTerminalInOrder()
    {
        for (const auto start : {&TstTerminal::startSimulator, &TstTerminal::startZelctl}) {
            for (const QByteArray end : {"\025quit\r", "\003", "terminate"}) {
                (this->*start)();
                QVERIFY(m_terminal->type("half"));
                QVERIFY(m_terminal->isBeingEdited());
                if (end == "terminate")
                    m_terminal->terminate();
                else
                    QVERIFY(m_terminal->type(end));
                QVERIFY(m_terminal->isLeftInOrder());
            }
        }
        startZelctl();
        QVERIFY(m_terminal->isBeingEdited()); // before that the terminal itself takes the key
        QVERIFY(m_terminal->type("\004"));
        QVERIFY(m_terminal->isLeftInOrder());
    }

private:
    QString root() const { return m_folder->path() + u"/root"_s; }

    static QByteArray signalLine(const QByteArray& state)
    {
        return "Context         registrationStateUpdated  state=\"" + state + '"';
    }

    void start(const QStringList& words, const QByteArrayList& rows)
    {
        m_terminal = std::make_unique<PseudoTerminal>(words, m_environment);
        QVERIFY(m_terminal->shows(rows));
    }
    void startSimulator() { start({QStringLiteral(ZELCORE_SIM), u"--root"_s, root()}, {"zelcore-sim> "}); }
    void startZelctl() { start({QStringLiteral(ZELCTL_PATH), u"shell"_s}, {signalLine("Unregistered"), "zelctl> "}); }

    bool types(const QByteArray& keys, const QByteArrayList& rows)
    {
        return m_terminal->type(keys) && m_terminal->shows(rows);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<zelcore::Simulator> m_service;
    std::unique_ptr<PseudoTerminal> m_terminal;
    QProcessEnvironment m_environment = QProcessEnvironment::systemEnvironment();
};

ZEL_TEST(TstTerminal)
#include "tst_terminal.moc"
