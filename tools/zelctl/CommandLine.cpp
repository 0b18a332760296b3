// SPDX-License-Identifier: Apache-2.0
#include "CommandLine.h"

#include "Arguments.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace zelctl {

namespace {

const QStringList abouts{u"--help"_s, u"-h"_s, u"--version"_s, u"--completion"_s, u"--manual-page"_s};
const QHash<QString, QString> options =
    optionsOf(u"[--json] [--all] [--simulate] [--uuid UUID] [--timeout S] [%1]"_s.arg(abouts.join("] ["_L1)));

bool setUuid(CommandLine& line, const QString& text, QString* error)
{
    // The null UUID is of use to see how its refusal looks.
    line.uuid = QUuid(text);
    if (!line.uuid.isNull() || text == "null-uuid"_L1 || QUuid().toString(QUuid::WithoutBraces) == text)
        return true;
    *error = u"'%1' is not a UUID; write it like %2, or null-uuid for the null one"_s.arg(
        text, CommandLine::defaultUuid().toString(QUuid::WithoutBraces));
    return false;
}

bool setTimeout(CommandLine& line, const QString& text, QString* error)
{
    const double seconds = text.toDouble(); // 0 for what is no number
    if (seconds > 0 && seconds <= 86'400) {
        line.timeout = static_cast<int>(std::ceil(seconds * 1000));
        return true;
    }
    *error = u"'%1' is not a number of seconds above 0"_s.arg(text);
    return false;
}

} // namespace

QUuid CommandLine::defaultUuid()
{
    return QUuid(u"7a1e0c74-5d0b-4c53-9a55-2f6f3c1be0d1"_s);
}

bool CommandLine::isOption(const QString& word)
{
    return options.contains(word.section(u'=', 0, 0));
}

std::optional<CommandLine> CommandLine::parse(const QStringList& arguments, QString* error)
{
    error->clear();
    CommandLine line;
    QHash<QString, QString> typed;
    qsizetype at = 0;
    while (at < arguments.size() && arguments.at(at).startsWith(u'-')) {
        if (arguments.at(at) == "--"_L1) {
            ++at;
            break;
        }
        if (arguments.at(at).startsWith("--simulate="_L1)) // which has a value only there
            typed[u"--simulate"_s] = arguments.at(at++).section(u'=', 1);
        else if (!takeOption(options, arguments, at, typed, error))
            return std::nullopt;
    }
    line.json = typed.contains(u"--json"_s);
    line.all = typed.contains(u"--all"_s);
    line.simulate = typed.contains(u"--simulate"_s);
    line.scenario = typed.value(u"--simulate"_s);
    for (const QString& about : abouts)
        line.about = typed.contains(about) ? about : line.about;
    if ((typed.contains(u"--uuid"_s) && !setUuid(line, typed.value(u"--uuid"_s), error)) ||
        (typed.contains(u"--timeout"_s) && !setTimeout(line, typed.value(u"--timeout"_s), error)))
        return std::nullopt;
    line.words = arguments.mid(at);
    return line;
}

} // namespace zelctl
