// SPDX-License-Identifier: Apache-2.0
#include "Arguments.h"

using namespace Qt::StringLiterals;

namespace zelctl {

namespace {

bool fits(const QString& parameter, const QString& word, QString* error)
{
    bool isNumber = false;
    word.toInt(&isNumber);
    if (parameter == "N"_L1 && !isNumber)
        *error = u"%1 must be a whole number, not '%2'"_s.arg(parameter, word);
    const QStringList choices = parameter.split(u'|');
    if (choices.size() > 1 && !choices.contains(word))
        *error = u"'%1' is none of %2"_s.arg(word, choices.join(", "_L1));
    return error->isEmpty();
}

bool looksLikeOption(const QString& word)
{
    return word.size() > 1 && word.startsWith(u'-') && !(word.at(1) >= u'0' && word.at(1) <= u'9');
}

} // namespace

std::optional<Arguments> Arguments::parse(const QString& usage, const QStringList& words, QString* error)
{
    error->clear();
    Arguments arguments;
    const QHash<QString, QString> options = optionsOf(usage);
    bool optionsEnded = options.isEmpty();
    for (qsizetype at = 0; at < words.size();) {
        if (!optionsEnded && words.at(at) == "--"_L1) {
            optionsEnded = true;
            ++at;
        } else if (!optionsEnded && looksLikeOption(words.at(at))) {
            if (!takeOption(options, words, at, arguments.m_options, error))
                return std::nullopt;
        } else {
            arguments.m_words += words.at(at++);
        }
    }
    const QStringList parameters = parametersOf(usage);
    if (arguments.m_words.size() != parameters.size()) {
        *error = arguments.m_words.size() < parameters.size()
                     ? u"%1 is missing"_s.arg(parameters.at(arguments.m_words.size()))
                     : u"'%1' is one word too many"_s.arg(arguments.m_words.at(parameters.size()));
        return std::nullopt;
    }
    for (qsizetype i = 0; i < parameters.size(); ++i) {
        QString& word = arguments.m_words[i];
        if (!fits(parameters.at(i), word, error))
            return std::nullopt;
        // "+07" is 7: the signal that tells the outcome is known by the number as the library spells it.
        if (parameters.at(i) == "N"_L1)
            word = QString::number(word.toInt());
    }
    return arguments;
}

QStringList parametersOf(const QString& usage)
{
    return usage.section(u'[', 0, 0).split(u' ', Qt::SkipEmptyParts);
}

QHash<QString, QString> optionsOf(const QString& usage)
{
    QHash<QString, QString> options;
    for (const QString& part : usage.split(u'[').mid(1)) {
        const QStringList words = part.section(u']', 0, 0).split(u' ');
        options.insert(words.first(), words.value(1));
    }
    return options;
}

bool takeOption(const QHash<QString, QString>& known, const QStringList& words, qsizetype& at,
                QHash<QString, QString>& options, QString* error)
{
    const QString word = words.at(at++);
    const bool isPair = word.startsWith("--"_L1) && word.contains(u'=');
    const QString name = isPair ? word.section(u'=', 0, 0) : word;
    const QString value = known.value(name);
    if (!known.contains(name))
        *error = u"there is no option %1; a text that begins with a dash goes behind --"_s.arg(word);
    else if (value.isEmpty() && isPair)
        *error = u"%1 takes no value"_s.arg(name);
    else if (!value.isEmpty() && !isPair && at == words.size())
        *error = u"%1 wants %2"_s.arg(name, value);
    if (!error->isEmpty())
        return false;
    QString& typed = options[name];
    if (!value.isEmpty())
        typed = isPair ? word.section(u'=', 1) : words.at(at++);
    return fits(value, typed, error);
}

} // namespace zelctl
