// SPDX-License-Identifier: Apache-2.0
// The words of zelctl's command line, and the lines of its shell, with no service behind it. An input is one of these,
// as its first byte says:
//
//     w   words, a line each          j   lines of a program, which takes answers in JSON
//     p   lines of a person           t   keys of a person at a terminal
#include "MemoryFile.h"

#include <Arguments.h>
#include <CommandLine.h>
#include <Commands.h>
#include <Output.h>
#include <Session.h>
#include <Shell.h>

#include <zelcore/Simulator.h>

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <pty.h>
#include <sys/ioctl.h>

using namespace Qt::StringLiterals;

using namespace zelctl;

namespace {

/// The terminal, which standard output is, too; whatever is written there is read and thrown away.
int terminal = -1;
int keyboard = -1;

void parseWords(const QStringList& words)
{
    QString error;
    const auto line = CommandLine::parse(words, &error);
    require(line || !error.isEmpty(), "a command line that is refused says why");
    if (!line)
        return;
    require(words.endsWith(line->words.isEmpty() ? QString() : line->words.last()) || line->words.isEmpty(),
            "the command is the end of the line");
    require(line->timeout > 0 && line->timeout <= 86'400'000, "the time is bounded");
    const QString name = line->words.value(0);
    const Command* const command = findCommand(name);
    if (!command) {
        require(!unknownCommand(name).isEmpty(), "what is no command is told");
        return;
    }
    require(!helpOn(name, u"zelctl "_s).isEmpty(), "there is help on every command");
    const auto arguments = Arguments::parse(command->usage, line->words.mid(1), &error);
    require(arguments.has_value() == error.isEmpty(), "arguments that are refused say why, and no others");
    if (!arguments)
        return;
    require(arguments->words().size() == parametersOf(command->usage).size(), "there are all arguments, and no more");
    const bool hasOptions = command->usage.contains(u'[');
    const auto again = Arguments::parse(
        command->usage, (hasOptions ? QStringList{u"--"_s} : QStringList()) + arguments->words(), &error);
    require(again && again->words() == arguments->words(), "arguments are taken as they were taken");
}

/// The lines that a shell takes: those before "quit". The last may have no line break.
qsizetype linesBeforeEnd(const QByteArray& typed)
{
    QByteArrayList lines = typed.split('\n');
    if (lines.last().isEmpty())
        lines.removeLast();
    const auto isEnd = [](QByteArray line) {
        if (line.endsWith('\r'))
            line.chop(1);
        return zelcore::Simulator::splitWords(QString::fromUtf8(line)) == QStringList{u"quit"_s};
    };
    return std::find_if(lines.begin(), lines.end(), isEnd) - lines.begin();
}

/// What a shell says until its end. \a isDone is asked when nothing happens.
template <typename IsDone>
QByteArray runShell(Output::Format format, int input, IsDone isDone)
{
    static Session session{CommandLine::defaultUuid()};
    char* said = nullptr;
    size_t length = 0;
    std::FILE* const out = ::open_memstream(&said, &length);
    {
        Output output(format, out);
        Shell shell(session, output, input);
        bool isFinished = false;
        QObject::connect(&shell, &Shell::finished, &shell, [&] { isFinished = true; });
        shell.start();
        while (!isFinished) {
            if (!QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents) && isDone())
                shell.quit();
        }
    }
    std::fclose(out);
    const QByteArray text(said, static_cast<qsizetype>(length));
    std::free(said);
    return text;
}

QByteArray answersTo(const QByteArray& lines, Output::Format format)
{
    const MemoryFile file(lines);
    return runShell(format, file.descriptor(), [] { return false; });
}

void answerProgram(const QByteArray& lines)
{
    QByteArrayList said = answersTo(lines, Output::Format::JsonLines).split('\n');
    require(said.takeLast().isEmpty(), "every line ends");
    qsizetype answers = -1; // the first line is none
    for (const QByteArray& line : std::as_const(said)) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        require(object.contains(answers < 0 ? u"ready"_s : u"answer"_s), "it begins with ready, and then answers");
        ++answers;
    }
    require(answers == linesBeforeEnd(lines), "each line is answered by one");
}

/// A terminal obeys none of it.
void answerPerson(const QByteArray& lines)
{
    for (const char32_t c : QString::fromUtf8(answersTo(lines, Output::Format::People)).toUcs4())
        require(c == U'\n' || (c >= 0x20 && !(c >= 0x7f && c < 0xa0)), "what people read has no control characters");
}

void typeKeys(QByteArray keys)
{
    keys.truncate(1000);       // what a terminal holds
    keys.replace('\x13', '?'); // would stop it until another key
    ::ioctl(terminal, TCFLSH, TCIFLUSH);
    require(::write(keyboard, keys.constData(), static_cast<size_t>(keys.size())) == keys.size(), "keys are typed");
    runShell(Output::Format::People, terminal, [] {
        int waiting = 0;
        ::ioctl(terminal, FIONREAD, &waiting);
        return waiting == 0;
    });
}

} // namespace

/// The terminal's library forgets a few bytes each time it is begun with.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libtinfo";
}

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    beginQuietly();
    ::setenv("TERM", "xterm", 1);
    ::setenv("XDG_STATE_HOME", "/proc/none", 1); // no history
    require(::openpty(&keyboard, &terminal, nullptr, nullptr, nullptr) == 0, "there is a terminal");
    ::dup2(terminal, STDOUT_FILENO);
    ::dup2(::open("/dev/null", O_RDWR), STDIN_FILENO);
    std::thread([] {
        char shown[4096];
        // The fuzzer's own clock interrupts whichever thread it comes upon.
        while (::read(keyboard, shown, sizeof shown) > 0 || errno == EINTR) {
        }
    }).detach();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray text(reinterpret_cast<const char*>(data) + 1, static_cast<qsizetype>(size) - 1);
    switch (data[0]) {
    case 'w':
        parseWords(QString::fromUtf8(text).split(u'\n'));
        break;
    case 'j':
        answerProgram(text);
        break;
    case 'p':
        answerPerson(text);
        break;
    case 't':
        typeKeys(text);
        break;
    default:
        return -1;
    }
    return 0;
}
