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

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

using namespace zelctl;
using namespace Qt::StringLiterals;

/// What zelctl takes and what it prints, without a library behind it.
class TstCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesWhatIsTyped()
    {
        // A command without options has none, a negative number is no option, and behind "--" there are none.
        for (const char* const typed :
             {"--json --simulate=first-steps --timeout 2.4999 state: json simulate=first-steps timeout=2500 state",
              "--simulate state: simulate= state",
              "--uuid=4d3c2b1a-0f9e-4d8c-8b7a-695847362514 state: uuid=4d3c2b1a-0f9e-4d8c-8b7a-695847362514 state",
              "--uuid null-uuid state: uuid=00000000-0000-0000-0000-000000000000 state",
              "--uuid 00000000-0000-0000-0000-000000000000 state: uuid=00000000-0000-0000-0000-000000000000 state",
              "--timeout 86400 -- state: timeout=86400000 state", "set-message --json: set-message|--json",
              "icon-get -9: icon-get|-9", "icon-get +07: icon-get|7", "box-add hi --icon -7: box-add|hi --icon=-7",
              "box-add '-0 degrees': box-add|-0 degrees", "picture -o f.png bob: picture|bob -o=f.png",
              "box-add hi --cookie=a=b: box-add|hi --cookie=a=b",
              "box-add hi --cookie '': box-add|hi --cookie=", "box-add -- --icon: box-add|--icon",
              "box-add -: box-add|-", "set-status busy '': set-status|busy|", "register --silent: register --silent="})
            QCOMPARE(taken(QByteArray(typed).split(':').first()), QString::fromUtf8(typed).section(u": "_s, 1));
        for (const char* wrong :
             {"--jsom state", "--json=yes state", "--uuid", "--uuid 4d3c2b1a state", "--timeout=soon state",
              "--timeout=0 state", "--timeout=nan state", "--timeout=86401 state", "-5 state", "invite e1 Ada",
              "set-message two words", "state --json", "icon-get one", "icon-get 2147483648", "box-add x --icon 1.5",
              "box-add x --icon", "register --loud", "register --silent=no", "set-status Busy x"})
            QVERIFY2(taken(wrong).startsWith("refused: "_L1), wrong);
    }

    void isDescribedAndCompletedInBash()
    {
        QList<zeltools::Manual::Entry> options;
        for (const QString& usage : u"--all,--root DIR,--with[=FILE],--hue dark|light,--at N"_s.split(u','))
            options += {usage, {}};
        const zeltools::Manual manual{
            .program = u"zelcore-sim"_s,
            .synopsis = u"[-x] WHAT\n-- APPLICATION"_s,
            .purpose = u"tries it"_s,
            .more = u"'Tis \\."_s,
            .options = options,
            .values = {{u"--with"_s, {u"style"_s}}},
            .commands = {{u"set on|off TEXT"_s, u"sets"_s}, {u"show ID [--big N] [-o FILE]"_s, {}}},
            .ending = u"Twice\nover"_s,
            .statuses = {{u"0"_s, u"done"_s}, {u"1"_s, u"not"_s}},
            .lines = {{u"say \"x\""_s, u"says"_s}},
            .aboutLines = u"Any"_s,
            .environment = {{u"HOME"_s, u"yours"_s}},
            .files = {{u"/f"_s, u"one"_s}}};
        QCOMPARE(manual.help(),
                 u"Usage: zelcore-sim [-x] WHAT\n       zelcore-sim -- APPLICATION\n\nTries it.\n'Tis \\.\n\n"
                 "  --all             \n  --root DIR        \n  --with[=FILE]     \n  --hue dark|light  \n  --at N     "
                 "       \n\n"
                 "Commands:\n  set on|off TEXT              sets\n  show ID [--big N] [-o FILE]  \n\nTwice\nover\n"
                 "Exit status: 0 done, 1 not.\n"_s);
        QCOMPARE(manual.page(u"2.0"_s),
                 u".TH ZELCORE\\-SIM 1 \"\" \"2.0\" \"User Commands\"\n.SH NAME\nzelcore\\-sim \\- tries it\n"
                 ".SH SYNOPSIS\n.B zelcore\\-sim\n[\\-x] WHAT\n.br\n.B zelcore\\-sim\n\\-\\- APPLICATION\n"
                 ".SH DESCRIPTION\nTries it.\n\\&'Tis \\e.\n"
                 ".SH OPTIONS\n.TP\n.B \\-\\-all\n\n.TP\n.B \\-\\-root DIR\n\n.TP\n.B \\-\\-with[=FILE]\n\n"
                 ".TP\n.B \\-\\-hue dark|light\n\n.TP\n.B \\-\\-at N\n\n.SH COMMANDS\n.TP\n.B set on|off TEXT\nsets\n"
                 ".TP\n.B show ID [\\-\\-big N] [\\-o FILE]\n\n"
                 ".SH COMMANDS\nOn standard input, a line each.\n.TP\n.B say \\(dqx\\(dq\nsays\n.PP\nAny\n"
                 ".SH EXIT STATUS\n.TP\n.B 0\ndone\n.TP\n.B 1\nnot\n.SH ENVIRONMENT\n.TP\n.B HOME\nyours\n"
                 ".SH FILES\n.TP\n.B /f\none\n.SH NOTES\n.PP\nTwice\n.PP\nover\n"
                 ".SH SEE ALSO\n.BR zel\\-contacts (1),\n.BR zelcore\\-desk (1),\n.BR zelctl (1)\n"_s);
        QTemporaryDir folder;
        QVERIFY(QFile(folder.filePath(u"stars.png"_s)).open(QIODevice::WriteOnly));
        for (const char* const typed :
             {"'': --all --root --with= --hue --at help set show", "--hue d: dark", "--hue = '': dark light",
              "--al: --all", "--at '': ", "--at = '': ", "-- stars: stars-and-stripes",
              "--all -- true stars: stars.png", "--all s: set show", "--root s: stars.png",
              "--with = s: stars.png style", "set o: on off", "set s: ", "show 7 -: --big -o",
              "show 7 -o '': stars.png", "show 7 --big '': ", "help s: set show"}) {
            const QByteArrayList row = QByteArray(typed).split(':');
            QProcess bash;
            bash.setWorkingDirectory(folder.path());
            bash.start(
                u"bash"_s,
                {u"-c"_s, manual.completion() +
                              u"stars-and-stripes() { :; }; COMP_WORDS=(zelcore-sim %1); COMP_CWORD=$((${#COMP_WORDS["
                              "@]}-1)); _zelcore_sim; echo ${COMPREPLY[@]}"_s.arg(QLatin1String(row.first()))});
            QVERIFY(bash.waitForFinished());
            QCOMPARE(bash.readAll().trimmed(), row.last().trimmed());
        }
        QProcess service;
        service.start(QStringLiteral(ZELCORE_SIM), {u"--manual-page"_s});
        QVERIFY(service.waitForFinished() && service.exitCode() == 0);
        const QByteArray page = service.readAll();
        for (const char* part : {"[installed=off]\nadds one, with the application or not\n.TP\n",
                                 "\n.B contact change HANDLE FIELD=VALUE...\nchanges one\n.TP\n",
                                 "\n.PP\n\\(dqapp APP\\(dq before ", "\n.B DIR/services/zelcore/platform\nthe"})
            QVERIFY2(page.contains(part), part);
    }

    void guessesWhatWasMeant()
    {
        for (const char* row : {"tsate state", "boxx-adds box-add", "hp help", "contct contact", "boxx-addss ",
                                "hell shell", "xxstate state"}) {
            const QStringList words = QString::fromLatin1(row).split(u' ');
            QCOMPARE(unknownCommand(words.first()).section(u'\'', 3, 3), words.last());
        }
    }

    void printsForPeopleInAnyScript()
    {
        const QString lone = u"a"_s + QChar(0xd83d) + u"b"_s + QChar(0xdc31) + u"🐱"_s + QChar(0xd83d);
        QCOMPARE(QString::fromUtf8(toJson(Record().add(u"t"_s, lone).add(u"u"_s, u"🐱"_s))),
                 u"{\"t\":\"a\ufffdb\ufffd🐱\ufffd\",\"u\":\"🐱\"}"_s);
        QCOMPARE(columnsOf(u"e\u0301\u20dd\u200d🐱"_s), 3);
        // The ends of what is wide, and one within that is not.
        const std::u32string ends =
            U"\u1100\u115f\u2e80\ua4cf\uac00\ud7a3\uf900\ufaff\ufe30\ufe6f\uff00\uff60\uffe0\uffe6"
            "\U0001f300\U0001f64f\U0001f680\U0001f6ff\U0001f900\U0001f9ff\U00020000\U0003fffd\u303f";
        QCOMPARE(columnsOf(QString::fromStdU32String(ends)), 2 * qsizetype(ends.size()) - 1);
        QCOMPARE(
            zeltools::printable(u"\n\x1f ~\x7f\u009f\u00a0\u2027\u2028\u2029\u202a\u202e\u202f\u2066\u2069\u206a"_s),
            u"\\n\\u001f ~\\u007f\\u009f\u00a0\u2027\\u2028\\u2029\\u202a\\u202e\u202f\\u2066\\u2069\u206a"_s);
        char* text = nullptr;
        std::size_t size = 0;
        std::FILE* const stream = open_memstream(&text, &size);
        Output output(Output::Format::People, stream);
        const auto person = [](const QString& name, int n) {
            return Record().add(u"displayName"_s, name).add(u"ppId"_s, u"p"_s).add(u"n"_s, n);
        };
        const QList<Record> contacts{person(u"王小明"_s, 1), person(u"José"_s, 2), person(u""_s, 3)};
        Record answer = Record().add(u"isValid"_s, true).add(u"contacts"_s, QVariant::fromValue(contacts));
        output.answer(u"contacts"_s, answer.add(u"n"_s, QVariantList{1, 2}));
        output.request(u"box-add"_s, true);
        output.ready(Record().add(u"registrationState"_s, u"Allowed"_s));
        output.request(u"box-add"_s, false);
        output.error(u"a\x1b"_s);
        output.showAll();
        output.answer(u"contact"_s, answer.add(u"contact"_s, QVariant::fromValue(contacts.first())));
        const Record updated = Record().add(u"source"_s, u"Context"_s).add(u"signal"_s, u"updated"_s);
        output.signal(updated);
        output.signal(Record(updated).add(u"a"_s, u"1\n2"_s).add(u"b"_s, 3));
        std::fclose(stream);
        const QString printed = QString::fromUtf8(text);
        std::free(text);
        QCOMPARE(printed,
                 u"is valid  yes\ndisplay name  n\n王小明        1\nJosé          2\n              3\nn         1, 2\n"
                 "ok\nReady, the registration state is Allowed. 'help' lists the commands.\nbox-add: refused\n"
                 "error: a\\u001b\ncontact:\nis valid  yes\ndisplay name  pp id  n\n王小明        p      1\n"
                 "José          p      2\n              p      3\nn         1, 2\n"
                 "display name  王小明\npp id         p\nn             1\nContext         updated\n"
                 "Context         updated                   a=\"1\\n2\"  b=3\n"_s);
    }

private:
    /// What zelctl makes of what is typed behind its name.
    static QString taken(const char* typed)
    {
        QString wrong = u"another"_s;
        QString error = wrong;
        const auto line = CommandLine::parse(*zelcore::Simulator::splitWords(QString::fromUtf8(typed)), &wrong);
        const auto arguments =
            line ? Arguments::parse(findCommand(line->words.value(0))->usage, line->words.mid(1), &error)
                 : std::nullopt;
        if (!arguments)
            return u"refused: "_s + (line ? error : wrong);
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
