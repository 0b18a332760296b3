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
    text.replace(u'\\', "\\e"_L1).replace(u'-', "\\-"_L1);
    return text.startsWith(u'.') || text.startsWith(u'\'') ? "\\&"_L1 + text : text;
}

QString section(const QString& name, const QList<Entry>& entries)
{
    if (entries.isEmpty())
        return {};
    QString text = ".SH "_L1 + name + u'\n';
    for (const Entry& entry : entries)
        text += ".TP\n.B "_L1 + escaped(entry.usage) + u'\n' + escaped(entry.text) + u'\n';
    return text;
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
    return usage.contains("FILE"_L1) || usage.contains("DIR"_L1);
}

} // namespace

QString Manual::help() const
{
    QString text = u"Usage: %1 %2\n\n%3.\n"_s.arg(program, synopsis, sentence(purpose));
    if (!more.isEmpty())
        text += more + u'\n';
    text += u'\n' + table(options);
    if (!commands.isEmpty())
        text += "\nCommands:\n"_L1 + table(commands);
    return ending.isEmpty() ? text : text + u'\n' + ending + u'\n';
}

QString Manual::page(const QString& version) const
{
    QString text = u".TH %1 1 \"\" \"%2\" \"User Commands\"\n"_s.arg(escaped(program.toUpper()), version);
    text += u".SH NAME\n%1 \\- %2\n"_s.arg(escaped(program), escaped(purpose));
    text += u".SH SYNOPSIS\n.B %1\n%2\n"_s.arg(escaped(program), escaped(synopsis));
    text += ".SH DESCRIPTION\n"_L1 + escaped(sentence(purpose)) + ".\n"_L1 + escaped(more) + u'\n';
    text += section(u"OPTIONS"_s, options) + section(u"COMMANDS"_s, commands);
    const QStringList last = ending.split(u'\n', Qt::SkipEmptyParts);
    text += last.isEmpty() ? QString() : u".SH NOTES\n"_s;
    for (const QString& line : last)
        text += ".PP\n"_L1 + escaped(line) + u'\n';
    return text;
}

QString Manual::completion() const
{
    QStringList words;
    QStringList beforeFiles{u"-o"_s, u"*="_s}; // of a command's options the one that names a file, as "--option=" does
    QString choices;
    for (const Entry& option : options) {
        const QStringList typed = wordsOf(option.usage);
        words += typed.first();
        if (typed.size() > 1)
            choices += u"        %1|%1=) words='%2' ;;\n"_s.arg(typed.first(), typed.mid(1).join(u' '));
        else if (wantsFile(option.usage) && !typed.first().endsWith(u'='))
            beforeFiles += typed.first();
    }
    QStringList names;
    QString cases;
    for (const Entry& command : commands) {
        names += command.usage.section(u' ', 0, 0);
        const QString rest = command.usage.section(u' ', 1);
        const bool isFileFree = wantsFile(rest) && !rest.contains("-o FILE"_L1);
        const QString offered = wordsOf(rest).join(u' ');
        if (isFileFree || !offered.isEmpty())
            cases += u"        %1) words='%2'%3 ;;\n"_s.arg(names.last(), offered, isFileFree ? " files=1"_L1 : ""_L1);
    }
    if (!names.isEmpty())
        cases.prepend(u"        '') words+=' help %1' ;;\n        help) words=$commands ;;\n"_s.arg(names.join(u' ')));
    const QString form = u"# Completes %1 in bash.\n"
                         "_%2() {\n"
                         "    local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n"
                         "    local commands='%3' words='%4' files= command= word\n"
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
                         "        %7) words= files=1 ;;\n"
                         "    esac\n"
                         "    mapfile -t COMPREPLY < <(compgen ${files:+-f} -W \"$words\" -- \"$current\")\n"
                         "    [[ ${COMPREPLY[0]-} != *= ]] || compopt -o nospace 2>/dev/null\n"
                         "}\n"
                         "complete -o filenames -F _%2 %1\n"_s;
    QString function = program;
    return form.arg(program, function.replace(u'-', u'_'), names.join(u' '), words.join(u' '), cases, choices,
                    beforeFiles.join(u'|'));
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
        const QString value = option.valueName().isEmpty() ? QString() : u' ' + option.valueName();
        const QString usual = option.defaultValues().join(u' ');
        entries.append(
            {"--"_L1 + option.names().first() + value,
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

} // namespace zeltools
