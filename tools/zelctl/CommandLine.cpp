// SPDX-License-Identifier: Apache-2.0
#include "CommandLine.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace zelctl {

namespace {

/// One option as it was typed: "--name", "--name=value", or "--name value" where the option wants a value.
struct Typed
{
    QString name;
    std::optional<QString> value;
};

Typed split(const QString& word)
{
    const qsizetype equals = word.indexOf(u'=');
    if (equals < 0)
        return {word, std::nullopt};
    return {word.left(equals), word.mid(equals + 1)};
}

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

/// Options without a value; false when \a typed is none of them.
bool setSwitch(CommandLine& line, const Typed& typed)
{
    if (typed.name == "--simulate"_L1) {
        line.simulate = true;
        line.scenario = typed.value.value_or(QString());
        return true;
    }
    if (typed.value)
        return false;
    if (typed.name == "--json"_L1)
        return line.json = true;
    if (typed.name == "--all"_L1)
        return line.all = true;
    static const QStringList about{u"--help"_s, u"-h"_s, u"--version"_s, u"--completion"_s, u"--manual-page"_s};
    if (!about.contains(typed.name))
        return false;
    line.about = typed.name;
    return true;
}

} // namespace

QUuid CommandLine::defaultUuid()
{
    return QUuid(u"7a1e0c74-5d0b-4c53-9a55-2f6f3c1be0d1"_s);
}

bool CommandLine::isOption(const QString& word)
{
    CommandLine line;
    const Typed typed = split(word);
    return setSwitch(line, typed) || typed.name == "--uuid"_L1 || typed.name == "--timeout"_L1;
}

std::optional<CommandLine> CommandLine::parse(const QStringList& arguments, QString* error)
{
    CommandLine line;
    qsizetype at = 0;
    for (; at < arguments.size() && arguments.at(at).startsWith(u'-'); ++at) {
        if (arguments.at(at) == "--"_L1) {
            ++at;
            break;
        }
        Typed typed = split(arguments.at(at));
        if (setSwitch(line, typed))
            continue;
        const bool isUuid = typed.name == "--uuid"_L1;
        if (!isUuid && typed.name != "--timeout"_L1) {
            *error = u"there is no option %1"_s.arg(arguments.at(at));
            return std::nullopt;
        }
        if (!typed.value && at + 1 < arguments.size())
            typed.value = arguments.at(++at);
        if (!typed.value) {
            *error = u"%1 wants a value"_s.arg(typed.name);
            return std::nullopt;
        }
        if (!(isUuid ? setUuid(line, *typed.value, error) : setTimeout(line, *typed.value, error)))
            return std::nullopt;
    }
    line.words = arguments.mid(at);
    return line;
}

} // namespace zelctl
