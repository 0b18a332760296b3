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

} // namespace zelctl
