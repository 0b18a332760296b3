// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

namespace zelctl {

/// The words behind a command, checked against its usage: "TEXT [--icon N] [--cookie C]". All plain words are wanted; N
/// is a whole number, negative ones included, and words with bars between them are the only ones that may stand. No
/// option is wanted, and they may stand anywhere.
///
/// Only a command that has options looks for them: a message that begins with a dash is a message. And a dash before
/// a digit is a negative number (or a text that begins like one), never an option. "--" ends the options.
class Arguments
{
public:
    /// Empty, with a sentence in \a error, when \a words do not fit.
    static std::optional<Arguments> parse(const QString& usage, const QStringList& words, QString* error);

    QString text(qsizetype at) const { return m_words.value(at); }
    int number(qsizetype at) const { return m_words.value(at).toInt(); }
    const QStringList& words() const { return m_words; }

    bool has(const QString& option) const { return m_options.contains(option); }
    QString text(const QString& option) const { return m_options.value(option); }
    int number(const QString& option) const { return m_options.value(option).toInt(); }

private:
    QStringList m_words;
    QHash<QString, QString> m_options;
};

/// The names of the words that a command wants.
QStringList parametersOf(const QString& usage);

/// The options of a usage: with its dashes, and the name of the value; an empty one for an option that stands alone.
QHash<QString, QString> optionsOf(const QString& usage);

/// The option at \a at and its value go to \a options; \a at moves behind them. False, with a sentence in \a error,
/// which was empty, when it is none of those that are \a known, or misused.
bool takeOption(const QHash<QString, QString>& known, const QStringList& words, qsizetype& at,
                QHash<QString, QString>& options, QString* error);

} // namespace zelctl
