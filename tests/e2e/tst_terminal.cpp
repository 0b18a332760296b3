// SPDX-License-Identifier: Apache-2.0
#include <common/Program.h>
#include <simulator/ServiceTest.h>

#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <tuple>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

namespace {

/// A program at a terminal of its own, and what that shows, what is bold between asterisks. A shell starts the program
/// and stays behind: the system would put the terminal in order itself when its first process ends.
class PseudoTerminal
{
public:
    PseudoTerminal(const QStringList& words, const QProcessEnvironment& environment)
    {
        const winsize size{24, columns, 0, 0};
        ::openpty(&m_terminal, &m_programEnd, nullptr, nullptr, &size);
        ::fcntl(m_terminal, F_SETFD, FD_CLOEXEC);
        m_before = modes();
        m_shell.setProcessEnvironment(environment);
        m_shell.setChildProcessModifier([this] { ::login_tty(m_programEnd); });
        const QString script = u"trap : INT TERM; \"$@\"; echo \"status $?\"; read rest"_s;
        m_shell.start(u"/bin/sh"_s, QStringList{u"-c"_s, script, u"sh"_s} + words);
    }

    ~PseudoTerminal()
    {
        m_shell.kill();
        m_shell.waitForFinished();
        ::close(m_programEnd);
        ::close(m_terminal);
    }

    bool type(const QByteArray& keys) const
    {
        return ::write(m_terminal, keys.constData(), std::size_t(keys.size())) == keys.size();
    }

    void terminate() const { ::kill(-pid_t(m_shell.processId()), SIGTERM); }

    /// Waits until \a rows are all that there is from the last prompt on that was seen before, or else from the row
    /// where the cursor was. At first they may be the last ones.
    bool shows(const QByteArrayList& rows)
    {
        const auto there = [&] {
            draw();
            return m_rows.mid(m_seen == -1 ? m_rows.size() - rows.size() : m_seen) == rows;
        };
        if (!QTest::qWaitFor(there, patience)) {
            qWarning("the terminal shows:\n%s", m_rows.mid(m_seen).join('\n').constData());
            return false;
        }
        const auto prompt =
            std::find_if(rows.crbegin(), rows.crend(), [](const QByteArray& row) { return row.contains("> "); });
        m_seen = prompt == rows.crend() ? m_row : m_rows.size() - 1 - (prompt - rows.crbegin());
        return true;
    }

    /// The last row; for a time of some seconds it has "# s".
    QString line()
    {
        draw();
        return QString::fromUtf8(m_rows[m_row]).replace(QRegularExpression(u"\\b\\d s\\b"_s), u"# s"_s);
    }

    /// Whether the program ends with success, below the \a line, and leaves the terminal as it was.
    bool isLeftInOrder(const QByteArray& line) { return shows({line, "status 0", ""}) && modes() == m_before; }

private:
    static constexpr int patience = 20'000;
    static constexpr unsigned short columns = 64;

    QByteArray modes() const
    {
        termios state{};
        ::tcgetattr(m_terminal, &state);
        return QByteArray::number(state.c_lflag) + ' ' + QByteArray::number(state.c_iflag) + ' ' +
               QByteArray::number(state.c_oflag);
    }

    void draw()
    {
        char byte;
        for (pollfd waiting{m_terminal, POLLIN, 0}; ::poll(&waiting, 1, 0) > 0 && ::read(m_terminal, &byte, 1) == 1;) {
            if (!m_escape.isEmpty() || byte == '\033')
                escape(byte);
            else if (byte == '\r')
                m_column = 0;
            else if (byte == '\n' && m_rows[m_row].startsWith("[1]+  Stopped"))
                m_rows[m_row--].clear(); // what not every shell says, on a row of its own
            else if (byte == '\n')
                goToRow(m_row + 1);
            else if (byte == '\b')
                --m_column;
            else if (uchar(byte) >= ' ')
                put(byte);
        }
        while (m_rows.size() - 1 > m_row && m_rows.last().isEmpty())
            m_rows.removeLast();
    }

    void put(char byte)
    {
        if (m_column == columns) {
            goToRow(m_row + 1);
            m_column = 0;
        }
        QByteArray& row = m_rows[m_row];
        row = row.leftJustified(m_column);
        row.replace(m_column++, 1, QByteArray(1, byte));
    }

    void escape(char byte)
    {
        m_escape += byte;
        if (m_escape.size() < 3 || byte < '@')
            return;
        const int count = std::max(1, m_escape.mid(2, m_escape.size() - 3).toInt());
        m_escape.clear();
        if (byte == 'K')
            m_rows[m_row].truncate(m_column);
        else if (byte == 'A')
            m_row -= count;
        else if (byte == 'C')
            m_column += count;
        else if (byte == 'm')
            put('*');
    }

    void goToRow(qsizetype row)
    {
        m_row = row;
        m_rows.resize(std::max(m_rows.size(), row + 1));
    }

    int m_terminal = -1;
    int m_programEnd = -1;
    QProcess m_shell;
    QByteArray m_before;
    QByteArray m_escape;
    QByteArrayList m_rows{QByteArray("")};
    qsizetype m_seen = -1;
    qsizetype m_row = 0;
    qsizetype m_column = 0;
};

} // namespace

/// The programs at a terminal, where a line is edited.
class TstTerminal : public ServiceTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        begin();
        m_environment.insert(u"XDG_STATE_HOME"_s, m_folder->filePath(u"state"_s));
        m_environment.insert(u"XDG_CACHE_HOME"_s, m_folder->path());
        m_environment.insert(u"XDG_RUNTIME_DIR"_s, QString());
        m_environment.insert(u"PPS_ROOT"_s, m_simulator->root());
        m_environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
        m_environment.insert(u"TERM"_s, u"vt100"_s);
        for (const QString& name : {u"ZEL_SLOG"_s, u"ZEL_SLOG_LEVEL"_s, u"NO_COLOR"_s})
            m_environment.remove(name);
    }

    void printsAboveTheLineThatIsTyped()
    {
        startSimulator();
        const QByteArrayList typed{"zelcore-sim> contact add an displayName='somebody with anextreme", "lylongname'"};
        QVERIFY(types("contact add an displayName='somebody with anextremelylongname'", typed));
        // It is taken whole, and goes on where the cursor was: from the start three words on.
        QVERIFY(types("\001\033[1;5C\033[1;5C\033[1;5C", typed));
        QCOMPARE(Program(QStringLiteral(ZELCTL_PATH), root()).run({u"state"_s}), 0);
        QVERIFY(m_terminal->shows(QByteArrayList{"application 1 comes", "application 1 goes"} + typed));
        RawApplication application(root());
        QVERIFY(application.begin() && application.send("createProfileBoxItem", R"({"text":""})"));
        QVERIFY(m_terminal->shows(QByteArrayList{"application 2 comes",
                                                 "zelcore: application 2: createProfileBoxItem: \"cookie\" is missin",
                                                 "g"} +
                                  typed));
        QVERIFY(types("na\r", {"zelcore-sim> contact add anna displayName='somebody with anextre", "melylongname'",
                               "zelcore-sim> "}));
        QVERIFY(types("contacts\r", {"zelcore-sim> contacts", "anna  installed  somebody with anextremelylongname",
                                     "contacts: 1, with the application: 1", "zelcore-sim> "}));
    }

    void bringsBackWhatWasTypedBefore()
    {
        const std::pair<QByteArray, QByteArray> rows[] = {
            {"rate 0\r", "rate 0"},
            {"eco ü ∞\reco ü ∞\r", "eco ü ∞\nzelcore-sim> eco ü ∞"}, // kept once
            {"\033[A\033[A\033[A\033[A\r", "rate 0"}};
        const QFileInfo history(m_folder->filePath(u"state/zelplatform/zelcore-sim-history"_s));
        for (const auto& [keys, line] : rows) {
            QFile::setPermissions(history.filePath(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther);
            startSimulator();
            QVERIFY(types(keys + "  \r", ("zelcore-sim> " + line + "\nzelcore-sim>   \nzelcore-sim> ").split('\n')));
            QVERIFY(types("quit\r", {"zelcore-sim> quit", "status 0", ""}));
        }
        QCOMPARE(history.permissions() & ~(QFile::ReadUser | QFile::WriteUser), QFile::ReadOwner | QFile::WriteOwner);
    }

    void completesCommandsAndGoesOnAfterEscapeAlone()
    {
        startZelctl();
        QVERIFY(types("dance\r", {"zelctl> dance", "error: there is no command 'dance'", "zelctl> "}));
        QVERIFY(types("sta\t", {"zelctl> state "}));
        QVERIFY(types("\025ic\t", {"zelctl> icon-"}));
        QVERIFY(types("\t", {"icon-get  icon-register", "zelctl> icon-"}));
        QVERIFY(m_terminal->type("\033"));
        m_simulator->setRegistrationState(u"Pending"_s);
        QVERIFY(m_terminal->shows({signalLine("Pending"), "zelctl> icon-"}));
    }

    void keepsTheLogOffTheLine()
    {
        if (!ZEL_ON_DESKTOP)
            QSKIP("a platform's log knows nothing of a line");
        m_environment.insert(u"ZEL_SLOG"_s, u"stderr"_s);
        m_environment.insert(u"ZEL_SLOG_LEVEL"_s, u"6"_s);
        startZelctl();
        QVERIFY(types("prof", {"zelctl> prof"}));
        m_simulator->sendMessage(u"x"_s, {});
        QVERIFY(m_terminal->shows(
            {"zelplatform[severity 6]: received json string from zelcore <==: ", "{\"x\":{}}", "zelctl> prof"}));
    }

    void saysWhatIsBeingWaitedFor()
    {
        m_simulator->setRegistrationState(u"Pending"_s);
        start({QStringLiteral(ZELCTL_PATH), u"contacts"_s}, {});
        // On a slow machine the first second or two go by before the registration has begun.
        QTRY_COMPARE_WITH_TIMEOUT(m_terminal->line(), u"Waiting for the registration, # s"_s, 10'000);
        m_simulator->setRegistrationState(u"Success"_s);
        QVERIFY(m_terminal->shows({"*valid   *  yes", "*complete*  yes", "*count   *  0", "status 0", ""}));
        QVERIFY(play("$ drop requestEcoIdResponse"));
        start({QStringLiteral(ZELCTL_PATH), u"eco-id"_s, u"pp"_s}, {});
        QTRY_COMPARE_WITH_TIMEOUT(m_terminal->line(), u"Waiting for the answer, # s"_s, 10'000);
        QVERIFY(play("$ state NoDataConnection\n$ state Success\n"
                     "$ send requestEcoIdResponse '{\"ppid\":\"pp\",\"ecoId\":\"E1\"}'"));
        QVERIFY(m_terminal->shows({"The eco identifier of pp is \"E1\".", "status 0", ""}));
    }

    void goesAsideAndOnAsItIsTold()
    {
        // In the background, where it is stopped when there is something to read, and back.
        const QString script = u"set -m; \"$@\"; echo \"status $?\"; fg > /dev/null; echo \"status $?\"; "
                               "{ bg; while jobs | grep Running; do :; done; fg; } > /dev/null"_s;
        start({u"bash"_s, u"-c"_s, script, u"bash"_s, QStringLiteral(ZELCTL_PATH), u"shell"_s},
              {signalLine("Unregistered"), "zelctl> "});
        QVERIFY(types("half", {"zelctl> half"}) && types("\032", {"status 148", "zelctl> half"}));
        QVERIFY(types("\032", {"status 148", ""}));
        QVERIFY(types("\rquit\r", {"", "quit", "zelctl> half", // the terminal's own echo first
                                   "error: there is no command 'half', but 'help'", "zelctl> quit", "status 0", ""}));
    }

    void leavesTheTerminalInOrder()
    {
        const std::tuple<QByteArray, QByteArray, QByteArray> ends[] = {
            {"zelcore-sim> ", "\025quit\r", "quit"}, {"zelcore-sim> ", "\003", "half"}, {"zelcore-sim> ", "", "half"},
            {"zelctl> ", "\025quit\r", "quit"},      {"zelctl> ", "\003", "half"},      {"zelctl> ", "", "half"},
            {"zelctl> ", "\025\004", "^D"}};
        for (const auto& [prompt, end, line] : ends) {
            prompt == "zelctl> " ? startZelctl() : startSimulator();
            QVERIFY(types("half", {prompt + "half"}));
            if (end.isEmpty())
                m_terminal->terminate();
            else
                QVERIFY(m_terminal->type(end));
            QVERIFY(m_terminal->isLeftInOrder(prompt + line));
        }
        // Whom a hang-up does not end has nothing to read any more.
        start({u"sh"_s, u"-c"_s, u"trap '' HUP; \"$0\" shell"_s, QStringLiteral(ZELCTL_PATH)},
              {signalLine("Unregistered"), "zelctl> "});
        m_terminal.reset();
        QTRY_COMPARE(m_simulator->clientCount(), 0);
        QByteArrayList rows{"zelctl> Context         registrationStateUpdated  state=\"Unregis", "tered\"", ""};
        start({u"sh"_s, u"-c"_s, u"\"$0\" shell | cat"_s, QStringLiteral(ZELCTL_PATH)}, rows);
        rows.replace(2, "x^A");
        QVERIFY(types("x\001\r", rows + QByteArrayList{"error: there is no command 'x\\u0001'", "zelctl> "}));
        for (const QString& terminal : {u"dumb"_s, QString()}) { // where nothing is edited
            m_environment.insert(u"TERM"_s, terminal);
            startSimulator();
            QVERIFY(types("eco a \001\r", {"zelcore-sim> eco a ^A", "zelcore-sim> "}));
            QVERIFY(types("quit\r", {"zelcore-sim> quit", "status 0", ""}));
        }
    }

private:
    QString root() const { return m_folder->path() + u"/zelplatform"_s; }

    static QByteArray signalLine(const QByteArray& state)
    {
        return "*Context       *  registrationStateUpdated  state=\"" + state + '"';
    }

    void start(const QStringList& words, const QByteArrayList& rows)
    {
        m_terminal = std::make_unique<PseudoTerminal>(words, m_environment);
        QVERIFY(m_terminal->shows(rows));
    }
    void startSimulator() { start({QStringLiteral(ZELCORE_SIM)}, {"zelcore-sim> "}); }
    void startZelctl() { start({QStringLiteral(ZELCTL_PATH), u"shell"_s}, {signalLine("Unregistered"), "zelctl> "}); }

    bool types(const QByteArray& keys, const QByteArrayList& rows)
    {
        return m_terminal->type(keys) && m_terminal->shows(rows);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<PseudoTerminal> m_terminal;
    QProcessEnvironment m_environment = QProcessEnvironment::systemEnvironment();
};

ZEL_TEST(TstTerminal)
#include "tst_terminal.moc"
