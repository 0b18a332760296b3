// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>

#include <Arguments.h>
#include <CommandLine.h>
#include <Commands.h>
#include <Output.h>
#include <Record.h>

#include <common/Manual.h>
#include <common/Printable.h>
#include <zelcore/Simulator.h>

#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using namespace zelctl;
using namespace Qt::StringLiterals;

/// What zelctl takes and what it prints, without a library behind it.
class TstCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesWhatIsTyped()
    {
        const std::pair<const char*, const char*> rows[] = {
            {"--json --simulate=first-steps --timeout 2.5 state", "json simulate=first-steps timeout=2500 state"},
            {"--simulate state", "simulate= state"},
            {"--uuid=4d3c2b1a-0f9e-4d8c-8b7a-695847362514 state", "uuid=4d3c2b1a-0f9e-4d8c-8b7a-695847362514 state"},
            {"--uuid null-uuid state", "uuid=00000000-0000-0000-0000-000000000000 state"},
            {"--uuid 00000000-0000-0000-0000-000000000000 state", "uuid=00000000-0000-0000-0000-000000000000 state"},
            {"-- state", "state"},
            {"set-message --json", "set-message|--json"}, // a command without options has none
            {"icon-get -1", "icon-get|-1"},               // a negative number is no option
            {"icon-get +07", "icon-get|7"},
            {"box-add hi --icon -7", "box-add|hi --icon=-7"},
            {"box-add '-5 degrees'", "box-add|-5 degrees"},
            {"picture -o f.png bob", "picture|bob -o=f.png"},
            {"box-add hi --cookie=a=b", "box-add|hi --cookie=a=b"},
            {"box-add hi --cookie ''", "box-add|hi --cookie="},
            {"box-add -- --icon", "box-add|--icon"}, // options ended
            {"box-add -", "box-add|-"},
            {"set-status busy ''", "set-status|busy|"},
            {"register --silent", "register --silent="}};
        for (const auto& [typed, expected] : rows)
            QCOMPARE(taken(typed), QString::fromUtf8(expected));
        for (const char* wrong :
             {"--jsom state", "--json=yes state", "--uuid", "--uuid 4d3c2b1a state", "--timeout=soon state",
              "--timeout=0 state", "--timeout=nan state", "-5 state", "invite e1 Ada", "set-message two words",
              "state --json", "icon-get one", "icon-get 2147483648", "box-add x --icon 1.5", "box-add x --icon",
              "register --loud", "register --silent=no", "set-status Busy x"})
            QVERIFY2(taken(wrong).startsWith("refused: "_L1), wrong);
    }

    void isCompletedInBash()
    {
        const zeltools::Manual manual{
            .program = u"try-it"_s,
            .options = {{u"--all"_s, {}}, {u"--root DIR"_s, {}}, {u"--with[=FILE]"_s, {}}, {u"--hue dark|light"_s, {}}},
            .commands = {{u"set on|off TEXT"_s, {}}, {u"show ID [--big] [-o FILE]"_s, {}}}};
        const std::pair<const char*, const char*> rows[] = {{"''", "--all --root --with= --hue help set show"},
                                                            {"--hue d", "dark"},
                                                            {"--hue = ''", "dark light"},
                                                            {"--a", "--all"},
                                                            {"--all s", "set show"},
                                                            {"--root s", "stars.png"},
                                                            {"--with = s", "stars.png"},
                                                            {"set o", "on off"},
                                                            {"set s", ""},
                                                            {"show 7 -", "--big -o"},
                                                            {"show 7 -o ''", "stars.png"},
                                                            {"help s", "set show"}};
        QTemporaryDir folder;
        QVERIFY(QFile(folder.filePath(u"stars.png"_s)).open(QIODevice::WriteOnly));
        for (const auto& [typed, offered] : rows) {
            QProcess bash;
            bash.setWorkingDirectory(folder.path());
            bash.start(u"bash"_s, {u"-c"_s, manual.completion() +
                                                u"COMP_WORDS=(try-it %1); COMP_CWORD=$((${#COMP_WORDS["
                                                "@]}-1)); _try_it; echo ${COMPREPLY[@]}"_s.arg(QLatin1String(typed))});
            QVERIFY(bash.waitForFinished());
            QCOMPARE(bash.readAll().trimmed(), QByteArray(offered));
        }
    }

    void replacesHalvesOfCharacters()
    {
        const QString lone = u"a"_s + QChar(0xd83d) + u"b"_s + QChar(0xdc31) + u"🐱"_s + QChar(0xd83d);
        QCOMPARE(QString::fromUtf8(toJson(Record().add(u"t"_s, lone))), u"{\"t\":\"a\ufffdb\ufffd🐱\ufffd\"}"_s);
    }

    void printsForPeopleInAnyScript()
    {
        QCOMPARE(columnsOf(u"e\u0301🐱"_s), 3);
        QCOMPARE(zeltools::printable(u"a\nb\x1b[31mc\u009b\u202e"_s), u"a\\nb\\u001b[31mc\\u009b\\u202e"_s);
        char* text = nullptr;
        std::size_t size = 0;
        std::FILE* const stream = open_memstream(&text, &size);
        Output output(Output::Format::People, stream);
        const QList<Record> contacts{Record().add(u"displayName"_s, u"王小明"_s).add(u"n"_s, 1),
                                     Record().add(u"displayName"_s, u"José"_s).add(u"n"_s, 2)};
        output.answer(u"contacts"_s, Record().add(u"contacts"_s, QVariant::fromValue(contacts)));
        output.signal(Record().add(u"source"_s, u"Context"_s).add(u"signal"_s, u"updated"_s).add(u"a"_s, u"1\n2"_s));
        std::fclose(stream);
        const QString printed = QString::fromUtf8(text);
        std::free(text);
        QCOMPARE(printed, u"display name  n\n王小明        1\nJosé          2\n"
                          "Context         updated                   a=\"1\\n2\"\n"_s);
    }

private:
    /// What zelctl makes of what is typed behind its name.
    static QString taken(const char* typed)
    {
        QString error;
        const auto line = CommandLine::parse(*zelcore::Simulator::splitWords(QString::fromUtf8(typed)), &error);
        const auto arguments =
            line ? Arguments::parse(findCommand(line->words.value(0))->usage, line->words.mid(1), &error)
                 : std::nullopt;
        if (!arguments)
            return error.isEmpty() ? QString() : u"refused: "_s + error;
        QStringList parts;
        if (line->json)
            parts += u"json"_s;
        if (line->simulate)
            parts += u"simulate="_s + line->scenario;
        if (line->timeout != CommandLine().timeout)
            parts += u"timeout=%1"_s.arg(line->timeout);
        if (line->uuid != CommandLine::defaultUuid())
            parts += u"uuid="_s + line->uuid.toString(QUuid::WithoutBraces);
        parts += (QStringList(line->words.value(0)) + arguments->words()).join(u'|');
        for (const QString& option : {u"--icon"_s, u"--cookie"_s, u"--silent"_s, u"-o"_s}) {
            if (arguments->has(option))
                parts += option + u'=' + arguments->text(option);
        }
        return parts.join(u' ');
    }
};

ZEL_TEST_WITHOUT_APPLICATION(TstCommandLine)
#include "tst_commandline.moc"
