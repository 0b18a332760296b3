// SPDX-License-Identifier: Apache-2.0
#include <common/LineEditor.h>

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cwchar>

#include <poll.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace zeltools {

namespace {

constexpr int historySize = 500;
// What a key sends comes in one go; somebody who presses Escape alone must not stop the program until the next key.
constexpr int patienceInKey = 100;
constexpr wchar_t endOfInput = L'\x04';
constexpr wchar_t vanishKey[] = L"\x1e";

QtMessageHandler otherHandler = nullptr;

void printMessage(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    LineReader::makeRoom();
    otherHandler(type, context, message);
}

bool isOurs(int terminal)
{
    const pid_t foreground = ::tcgetpgrp(terminal);
    return foreground < 0 || foreground == ::getpgrp(); // nobody's, for whom it does not control
}

/// Keys that can be read may be gone when they are: Ctrl-C throws away what was typed before it. A read that waited for
/// the next one would stop the program.
void neverWaitForKeys(int terminal)
{
    termios modes{};
    if (::tcgetattr(terminal, &modes) != 0)
        return;
    modes.c_cc[VMIN] = 0;
    ::tcsetattr(terminal, TCSANOW, &modes);
}

sigset_t suspension()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTSTP);
    return set;
}

/// Where a user's state goes, by the rules that desktops agree on. Its folder is made if it is not there.
QByteArray historyFileOf(const QString& program)
{
    QString base = qEnvironmentVariable("XDG_STATE_HOME");
    if (!QDir::isAbsolutePath(base))
        base = QDir::homePath() + u"/.local/state"_s;
    const QString folder = base + u"/zelplatform"_s;
    QDir().mkpath(folder);
    return QFile::encodeName(folder + u'/' + program + u"-history"_s);
}

/// A file that only its user can read: what was typed may be private. Not every libedit sees to that when it saves.
bool makePrivate(const QString& name)
{
    QFile file(name);
    const QFile::Permissions forTheUser = QFile::ReadOwner | QFile::WriteOwner;
    return file.open(QIODevice::Append, forTheUser) && file.setPermissions(forTheUser);
}

void list(const QStringList& names)
{
    LineReader::makeRoom();
    std::fprintf(stdout, "%s\n", names.join("  "_L1).toUtf8().constData());
}

} // namespace

bool LineEditor::isPossible(int input)
{
    const QByteArray terminal = qgetenv("TERM");
    return ::isatty(input) && ::isatty(STDOUT_FILENO) && !terminal.isEmpty() && terminal != "dumb" && isOurs(input);
}

LineEditor::LineEditor(int input, const QString& program, const QString& prompt, const QStringList& commands)
    : LineReader(input)
    , m_prompt(prompt.toStdWString())
    , m_commands(commands)
    , m_historyFile(historyFileOf(program))
    , m_editor(el_init_fd(qPrintable(program), stdin, stdout, stderr, input, STDOUT_FILENO, STDERR_FILENO), &el_end)
    , m_history(history_winit(), &history_wend)
{
    loadHistory();
    EditLine* editor = m_editor.get();
    el_wset(editor, EL_CLIENTDATA, this);
    el_wset(editor, EL_HIST, &history_w, m_history.get());
    el_wset(editor, EL_GETCFN, &LineEditor::nextCharacter);
    el_wset(editor, EL_PROMPT, &LineEditor::promptOf);
    bindKeys();
    watchSuspension();
    setAtTerminal(this);
    otherHandler = qInstallMessageHandler(&printMessage);
}

LineEditor::~LineEditor()
{
    qInstallMessageHandler(otherHandler);
    setAtTerminal(nullptr);
    if (m_line == Line::Shown) // what the shell says next begins on a line of its own
        std::fputs("\n", stdout);
    finishLine();
    ::close(m_suspensions);
}

void LineEditor::bindKeys()
{
    EditLine* editor = m_editor.get();
    el_wset(editor, EL_EDITOR, L"emacs");
    el_wset(editor, EL_ADDFN, L"zel-complete", L"Complete the command", &LineEditor::complete);
    el_wset(editor, EL_ADDFN, L"zel-vanish", L"Take the line off the screen", &LineEditor::vanish);
    const std::pair<const wchar_t*, const wchar_t*> keys[] = {
        {L"\t", L"zel-complete"},
        {vanishKey, L"zel-vanish"},
        {L"\x17", L"ed-delete-prev-word"}, // Ctrl-W
        {L"\033[1;5D", L"ed-prev-word"},   // Ctrl with an arrow
        {L"\033[1;5C", L"em-next-word"},
        // These would wait for a key that may not come.
        {L"\x16", L"ed-unassigned"},
        {L"\033x", L"ed-unassigned"},
        {L"\033X", L"ed-unassigned"},
    };
    for (const auto& [key, function] : keys)
        el_wset(editor, EL_BIND, key, function, nullptr);
}

void LineEditor::watchSuspension()
{
    const sigset_t set = suspension();
    sigprocmask(SIG_BLOCK, &set, nullptr);
    m_suspensions = signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC);
    auto* notifier = new QSocketNotifier(m_suspensions, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        signalfd_siginfo info;
        if (::read(m_suspensions, &info, sizeof info) == static_cast<ssize_t>(sizeof info))
            suspend();
    });
}

void LineEditor::suspend()
{
    hideLine();
    finishLine();
    // As nobody had caught it: whether we stop is the system's to say.
    const sigset_t set = suspension();
    std::raise(SIGTSTP);
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    show();
}

void LineEditor::loadHistory()
{
    HistEventW event;
    history_w(m_history.get(), &event, H_SETSIZE, historySize);
    history_w(m_history.get(), &event, H_SETUNIQUE, 1);
    if (!makePrivate(QFile::decodeName(m_historyFile)))
        return;
    history_w(m_history.get(), &event, H_LOAD, m_historyFile.constData());
    history_w(m_history.get(), &event, H_SAVE, m_historyFile.constData()); // without what became too old
}

void LineEditor::remember(const std::wstring& line)
{
    if (std::all_of(line.cbegin(), line.cend(), [](wchar_t c) { return c == L' '; }))
        return;
    HistEventW event;
    history_w(m_history.get(), &event, H_ENTER, line.c_str());
    // At once, and behind what others of this program have added meanwhile.
    std::FILE* file = std::fopen(m_historyFile.constData(), "ae");
    if (!file)
        return;
    std::fseek(file, 0, SEEK_END);
    // H_NSAVE_FP would save the entry before it as well.
    const std::unique_ptr<HistoryW, decltype(&history_wend)> newest(history_winit(), &history_wend);
    history_w(newest.get(), &event, H_SETSIZE, 1);
    history_w(newest.get(), &event, H_ENTER, line.c_str());
    history_w(newest.get(), &event, H_SAVE_FP, file);
    std::fclose(file);
}

void LineEditor::read()
{
    if (m_line != Line::Shown) {
        readInBackground();
        return;
    }
    int length = 0;
    const wchar_t* text = el_wgets(m_editor.get(), &length); // none without any character
    const wchar_t last = text ? text[length - 1] : L'\0';
    // Where its terminal is gone libedit fails before it asks nextCharacter() for a key.
    if (m_atEnd || !::isatty(input()) || (last == endOfInput && length == 1)) {
        std::fputs("\n", stdout);
        finishLine();
        end();
    } else if (last == L'\n') {
        const std::wstring line(text, text + length - 1);
        finishLine();
        remember(line);
        take(QString::fromStdWString(line));
    }
}

/// As the system treats who reads there: it stops us, or says that there is nothing to read any more. What is to be
/// read stays, so that nothing waits for it when we go on.
void LineEditor::readInBackground()
{
    char nothing;
    if (::read(input(), &nothing, 0) < 0)
        end();
    else
        show();
}

void LineEditor::invite()
{
    show();
}

void LineEditor::hideLine()
{
    if (m_line != Line::Shown || !isOurs(input()))
        return;
    // Only what a key does has libedit compare the line with what it had drawn before, and so clear all rows of it.
    m_line = Line::Hiding;
    el_resize(m_editor.get());
    el_wgets(m_editor.get(), nullptr);
    QMetaObject::invokeMethod(this, &LineEditor::show, Qt::QueuedConnection);
}

unsigned char LineEditor::vanish(EditLine* editor, int)
{
    LineEditor& self = of(editor);
    if (self.m_line != Line::Hiding) // typed by the user
        return CC_NORM;
    const LineInfoW* typed = el_wline(editor);
    self.m_hidden = {{typed->buffer, typed->lastchar}, int(typed->lastchar - typed->cursor)};
    el_cursor(editor, self.m_hidden.behind);
    el_deletestr(editor, int(self.m_hidden.text.size()));
    self.m_line = Line::Hidden;
    return CC_REFRESH;
}

void LineEditor::show()
{
    if (m_line == Line::Shown || isStopped() || !isOurs(input()))
        return;
    EditLine* editor = m_editor.get();
    if (m_line == Line::None) {
        m_line = Line::Hidden;
        el_wset(editor, EL_UNBUFFERED, 1);
        neverWaitForKeys(input());
    }
    el_winsertstr(editor, m_hidden.text.c_str());
    el_cursor(editor, -m_hidden.behind);
    m_hidden = {};
    m_line = Line::Shown;
    el_wset(editor, EL_REFRESH);
}

void LineEditor::finishLine()
{
    m_line = Line::None;
    el_wset(m_editor.get(), EL_UNBUFFERED, 0);
}

LineEditor& LineEditor::of(EditLine* editor)
{
    LineEditor* self = nullptr;
    el_wget(editor, EL_CLIENTDATA, &self);
    return *self;
}

wchar_t* LineEditor::promptOf(EditLine* editor)
{
    static wchar_t none[] = L"";
    LineEditor& self = of(editor);
    return self.m_line == Line::Shown ? self.m_prompt.data() : none;
}

int LineEditor::nextCharacter(EditLine* editor, wchar_t* character)
{
    LineEditor& self = of(editor);
    if (self.m_line == Line::Hiding) {
        *character = *vanishKey;
        return 1;
    }
    std::mbstate_t state{};
    for (;;) {
        pollfd waiting{self.input(), POLLIN, 0};
        if (::poll(&waiting, 1, patienceInKey) <= 0)
            return 0;
        char byte;
        const ssize_t count = ::read(self.input(), &byte, 1);
        if (count <= 0) {
            self.m_atEnd = count < 0 || (waiting.revents & POLLHUP) != 0;
            return 0;
        }
        const std::size_t taken = std::mbrtowc(character, &byte, 1, &state);
        if (taken <= 1)
            return 1;
        if (taken == std::size_t(-1)) // no text at all
            state = {};
    }
}

unsigned char LineEditor::complete(EditLine* editor, int)
{
    LineEditor& self = of(editor);
    const LineInfoW* typed = el_wline(editor);
    const QString begun = QString::fromWCharArray(typed->buffer, typed->cursor - typed->buffer);
    QStringList fitting = self.m_commands;
    fitting.removeIf([&begun](const QString& name) { return !name.startsWith(begun); });
    if (fitting.isEmpty())
        return CC_ERROR;
    // Everything between the ends of the sorted list begins with what these two have in common.
    fitting.sort();
    const QString& first = fitting.first();
    const auto [end, other] =
        std::mismatch(first.cbegin(), first.cend(), fitting.last().cbegin(), fitting.last().cend());
    QString more = first.mid(begun.size(), end - first.cbegin() - begun.size());
    if (fitting.size() == 1)
        more += u' ';
    el_winsertstr(editor, more.toStdWString().c_str());
    if (more.isEmpty()) // not from within libedit, which is to take the line off the screen
        QMetaObject::invokeMethod(
            &self, [fitting] { list(fitting); }, Qt::QueuedConnection);
    return CC_REFRESH;
}

} // namespace zeltools
