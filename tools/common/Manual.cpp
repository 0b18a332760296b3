// SPDX-License-Identifier: Apache-2.0
#include <common/Manual.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace zeltools {

namespace {

using Entry = Manual::Entry;

QString sentence(const QString& purpose)
{
    return purpose.left(1).toUpper() + purpose.mid(1);
}

/// Two columns, the second one beside what fits into the first.
QString table(const QList<Entry>& entries)
{
    qsizetype width = 0;
    for (const Entry& entry : entries)
        width = std::max(width, entry.usage.size());
    QString text;
    for (const Entry& entry : entries)
        text += u"  %1  %2\n"_s.arg(entry.usage, -int(width)).arg(entry.text);
    return text;
}

/// A line that begins with a full stop or an apostrophe would be a request.
QString escaped(QString text)
{
    text.replace(u'\\', "\\e"_L1).replace(u'-', "\\-"_L1).replace(u'"', "\\(dq"_L1);
    return text.startsWith(u'.') || text.startsWith(u'\'') ? "\\&"_L1 + text : text;
}

QString section(const QString& name, const QList<Entry>& entries, const QString& introduction = {})
{
    if (entries.isEmpty())
        return {};
    QString text = ".SH "_L1 + name + u'\n' + introduction;
    for (const Entry& entry : entries)
        text += ".TP\n.B "_L1 + escaped(entry.usage) + u'\n' + escaped(entry.text) + u'\n';
    return text;
}

QString paragraphs(const QString& text)
{
    QString made;
    const QStringList lines = text.split(u'\n', Qt::SkipEmptyParts);
    for (const QString& line : lines)
        made += ".PP\n"_L1 + escaped(line) + u'\n';
    return made;
}

/// What may be typed for a usage, beside names of files: options, and words to choose from.
QStringList wordsOf(const QString& usage)
{
    static const QRegularExpression word(u"--?[a-z][a-z-]*=?|[a-z]+(\\|[a-z]+)+"_s);
    QStringList words;
    QString plain = usage;
    plain.replace("[="_L1, "="_L1); // a value that may be left out
    for (auto found = word.globalMatch(plain); found.hasNext();)
        words += found.next().captured().split(u'|');
    return words;
}

bool wantsFile(const QString& usage)
{
    static const QRegularExpression file(u"\\b(FILE|DIR|SCENARIO)\\b"_s);
    return usage.contains(file);
}

/// A case of bash, for the value behind \a option: "--option", or "--option=" where there is no other way.
QString valueCase(const QString& option, const QStringList& words, bool isFile)
{
    const QString typed = option.endsWith(u'=') ? option : option + u'|' + option + u'=';
    return u"        %1) words='%2' files=%3 ;;\n"_s.arg(typed, words.join(u' '), isFile ? u"1"_s : QString());
}

} // namespace

QString Manual::help() const
{
    QString forms = synopsis;
    forms.replace(u'\n', u"\n       %1 "_s.arg(program));
    QString text = u"Usage: %1 %2\n\n%3.\n"_s.arg(program, forms, sentence(purpose));
    if (!more.isEmpty())
        text += more + u'\n';
    text += u'\n' + table(options);
    if (!commands.isEmpty())
        text += "\nCommands:\n"_L1 + table(commands);
    QStringList last = ending.split(u'\n', Qt::SkipEmptyParts);
    QStringList ends;
    for (const Entry& status : statuses)
        ends += status.usage + u' ' + status.text;
    if (!ends.isEmpty())
        last += u"Exit status: %1."_s.arg(ends.join(", "_L1));
    return last.isEmpty() ? text : text + u'\n' + last.join(u'\n') + u'\n';
}

QString Manual::page(const QString& version) const
{
    QStringList forms;
    for (const QString& form : synopsis.split(u'\n'))
        forms += u".B %1\n%2\n"_s.arg(escaped(program), escaped(form));
    QString text = u".TH %1 1 \"\" \"%2\" \"User Commands\"\n"_s.arg(escaped(program.toUpper()), version);
    text += u".SH NAME\n%1 \\- %2\n.SH SYNOPSIS\n"_s.arg(escaped(program), escaped(purpose));
    text += forms.join(".br\n"_L1);
    text += ".SH DESCRIPTION\n"_L1 + escaped(sentence(purpose)) + ".\n"_L1 + escaped(more) + u'\n';
    text += section(u"OPTIONS"_s, options) + section(u"COMMANDS"_s, commands);
    text += section(u"COMMANDS"_s, lines, u"On standard input, a line each.\n"_s) + paragraphs(aboutLines);
    text += section(u"EXIT STATUS"_s, statuses) + section(u"ENVIRONMENT"_s, environment) + section(u"FILES"_s, files);
    text += ending.isEmpty() ? QString() : u".SH NOTES\n"_s + paragraphs(ending);
    QStringList others{u"zel-contacts"_s, u"zelcore-desk"_s, u"zelcore-sim"_s, u"zelctl"_s};
    others.removeOne(program);
    return text + u".SH SEE ALSO\n.BR %1 (1)\n"_s.arg(escaped(others.join(" (1),\n.BR "_L1)));
}

QString Manual::completion() const
{
    QStringList words;
    QString byOption;
    for (const Entry& option : options) {
        const QStringList typed = wordsOf(option.usage);
        words += typed.first();
        QString name = typed.first();
        name.remove(u'=');
        if (option.usage != name)
            byOption += valueCase(typed.first(), typed.mid(1) + values.value(name), wantsFile(option.usage));
    }
    QStringList names;
    QString cases;
    static const QRegularExpression commandOption(u"\\[(--?[a-z-]+) ([A-Z]+)\\]"_s);
    for (const Entry& command : commands) {
        names += command.usage.section(u' ', 0, 0);
        const QString rest = command.usage.section(u' ', 1);
        const bool isFileFree = wantsFile(rest) && !rest.contains("-o FILE"_L1);
        const QString offered = wordsOf(rest).join(u' ');
        if (isFileFree || !offered.isEmpty())
            cases += u"        %1) words='%2'%3 ;;\n"_s.arg(names.last(), offered, isFileFree ? " files=1"_L1 : ""_L1);
        for (auto found = commandOption.globalMatch(rest); found.hasNext();) {
            const QRegularExpressionMatch option = found.next();
            byOption += valueCase(option.captured(1), {}, wantsFile(option.captured(2)));
        }
    }
    if (!names.isEmpty())
        cases.prepend(u"        '') words+=' help %1' ;;\n        help) words=$commands ;;\n"_s.arg(names.join(u' ')));
    const QString otherCommand = u"    for ((word = 1; word < COMP_CWORD; ++word)); do\n"
                                 "        [ \"${COMP_WORDS[word]}\" = -- ] || continue\n"
                                 "        [ $((word + 1)) = \"$COMP_CWORD\" ] && files=-c || files=-f\n"
                                 "        mapfile -t COMPREPLY < <(compgen $files -- \"$current\")\n"
                                 "        [ $files = -c ] || compopt -o filenames 2>/dev/null\n"
                                 "        return\n"
                                 "    done\n"_s;
    const QString form = u"# Completes %1 in bash.\n"
                         "_%2() {\n"
                         "    local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n"
                         "    local commands='%3' words='%4' files= command= word\n"
                         "%7"
                         "    [ \"$before\" != = ] || before=${COMP_WORDS[COMP_CWORD-2]}=\n"
                         "    [ \"$current\" != = ] || { current=; before+==; }\n"
                         "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
                         "        [[ \" $commands help \" != *\" $word \"* ]] || { command=$word; break; }\n"
                         "    done\n"
                         "    case $command in\n"
                         "%5"
                         "        *) [ -z \"$command\" ] || words= ;;\n"
                         "    esac\n"
                         "    case $before in\n"
                         "%6"
                         "        *=) words= files= ;;\n"
                         "    esac\n"
                         "    mapfile -t COMPREPLY < <(compgen ${files:+-f} -W \"$words\" -- \"$current\")\n"
                         "    [ -z \"$files\" ] || compopt -o filenames 2>/dev/null\n"
                         "    [[ ${COMPREPLY[0]-} != *= ]] || compopt -o nospace 2>/dev/null\n"
                         "}\n"
                         "complete -F _%2 %1\n"_s;
    QString function = program;
    return form.arg(program, function.replace(u'-', u'_'), names.join(u' '), words.join(u' '), cases, byOption,
                    synopsis.contains("-- "_L1) ? otherCommand : QString());
}

bool Manual::print(const QString& word, const QString& version) const
{
    QString text;
    if (word == "--help"_L1 || word == "-h"_L1)
        text = help();
    else if (word == "--version"_L1)
        text = program + u' ' + version + u'\n';
    else if (word == "--manual-page"_L1)
        text = page(version);
    else if (word == "--completion"_L1)
        text = completion();
    std::fputs(text.toUtf8().constData(), stdout);
    return !text.isEmpty();
}

bool Manual::printAsked(const QCommandLineParser& parser, const QString& version) const
{
    const QStringList asked = parser.optionNames();
    return std::any_of(asked.cbegin(), asked.cend(), [&](const QString& name) {
        return print((name.size() == 1 ? "-"_L1 : "--"_L1) + name, version);
    });
}

void Manual::addOwnOptions(QCommandLineParser& parser)
{
    parser.addOption(QCommandLineOption(u"h"_s));
    for (const Entry& own : ownOptions())
        parser.addOption(QCommandLineOption(own.usage.mid(2)));
}

QList<Manual::Entry> Manual::entriesOf(const QList<QCommandLineOption>& options)
{
    QList<Entry> entries;
    for (const QCommandLineOption& option : options) {
        const QString usual = option.defaultValues().join(u' ');
        entries.append(
            {QString("--"_L1 + option.names().first() + u' ' + option.valueName()).trimmed(),
             usual.isEmpty() ? option.description() : u"%1 (default %2)"_s.arg(option.description(), usual)});
    }
    return entries;
}

QList<Manual::Entry> Manual::ownOptions()
{
    return {{u"--help"_s, u"this text"_s},
            {u"--version"_s, u"the version"_s},
            {u"--completion"_s, u"what completes the command line: source <(...) in bash"_s},
            {u"--manual-page"_s, u"the page for man"_s}};
}

QList<Manual::Entry> Manual::libraryEnvironment()
{
    return {{u"PPS_ROOT"_s, u"the folder below which the core service is, /pps without it"_s},
            {u"ZEL_SLOG"_s, u"\"stderr\" sends the library's log there, instead of syslog"_s},
            {u"ZEL_SLOG_LEVEL"_s,
             u"the highest severity that is logged: 2 errors, 3 warnings, 5 information, 6 every message, 7 debug; "
             "5 without it"_s}};
}

} // namespace zeltools
