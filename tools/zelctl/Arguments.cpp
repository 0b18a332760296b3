// SPDX-License-Identifier: Apache-2.0
#include "Arguments.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace zelctl {

namespace {

bool fits(const Parameter& parameter, const QString& word, QString* error)
{
    if (parameter.kind == Parameter::Number) {
        bool ok = false;
        word.toInt(&ok);
        if (!ok)
            *error = u"%1 must be a whole number, not '%2'"_s.arg(parameter.name, word);
        return ok;
    }
    if (parameter.kind == Parameter::UserStatus && word != "available"_L1 && word != "busy"_L1) {
        *error = u"the status is available or busy, not '%1'"_s.arg(word);
        return false;
    }
    return true;
}

bool looksLikeOption(const QString& word)
{
    return word.size() > 1 && word.startsWith(u'-') && !(word.at(1) >= u'0' && word.at(1) <= u'9');
}

const Option* findOption(const Signature& signature, const QString& name)
{
    const auto found = std::find_if(signature.options.begin(), signature.options.end(),
                                    [&name](const Option& option) { return option.name == name; });
    return found == signature.options.end() ? nullptr : &*found;
}

/// The option at \a at and its value; \a at moves behind them.
bool takeOption(const Signature& signature, const QStringList& words, qsizetype& at, QHash<QString, QString>& options,
                QString* error)
{
    const QString word = words.at(at++);
    const qsizetype equals = word.startsWith("--"_L1) ? word.indexOf(u'=') : -1;
    const QString name = word.left(equals);
    const Option* option = findOption(signature, name);
    if (!option) {
        *error = u"there is no option %1 here; write -- before a text that begins with a dash"_s.arg(word);
        return false;
    }
    if (!option->value) {
        *error = u"%1 takes no value"_s.arg(name);
        options.insert(name, {});
        return equals < 0;
    }
    if (equals < 0 && at == words.size()) {
        *error = u"%1 wants %2"_s.arg(name, option->value->name);
        return false;
    }
    const QString value = equals < 0 ? words.at(at++) : word.mid(equals + 1);
    options.insert(name, value);
    return fits(*option->value, value, error);
}

} // namespace

std::optional<Arguments> Arguments::parse(const Signature& signature, const QStringList& words, QString* error)
{
    Arguments arguments;
    bool optionsEnded = signature.options.empty();
    for (qsizetype at = 0; at < words.size();) {
        if (!optionsEnded && words.at(at) == "--"_L1) {
            optionsEnded = true;
            ++at;
        } else if (!optionsEnded && looksLikeOption(words.at(at))) {
            if (!takeOption(signature, words, at, arguments.m_options, error))
                return std::nullopt;
        } else {
            arguments.m_words += words.at(at++);
        }
    }
    const auto wanted = static_cast<qsizetype>(signature.parameters.size());
    if (arguments.m_words.size() != wanted) {
        *error = arguments.m_words.size() < wanted
                     ? u"%1 is missing"_s.arg(signature.parameters.at(arguments.m_words.size()).name)
                     : u"'%1' is one word too many"_s.arg(arguments.m_words.at(wanted));
        return std::nullopt;
    }
    for (qsizetype i = 0; i < wanted; ++i) {
        const Parameter& parameter = signature.parameters.at(i);
        QString& word = arguments.m_words[i];
        if (!fits(parameter, word, error))
            return std::nullopt;
        // "+07" is 7: the signal that tells the outcome is known by the number as the library spells it.
        if (parameter.kind == Parameter::Number)
            word = QString::number(word.toInt());
    }
    return arguments;
}

QString usageOf(const Signature& signature)
{
    QStringList parts;
    for (const Parameter& parameter : signature.parameters)
        parts += parameter.kind == Parameter::UserStatus ? u"available|busy"_s : QString(parameter.name);
    for (const Option& option : signature.options)
        parts += option.value ? u"[%1 %2]"_s.arg(option.name, option.value->name) : u"[%1]"_s.arg(option.name);
    return parts.join(u' ');
}

} // namespace zelctl
