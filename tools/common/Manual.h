// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QCommandLineOption>
#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

class QCommandLineParser;

namespace zeltools {

/// How a program is called: told for people, as a page of the manual, and to the shell that completes its command line.
///
/// A usage is what is typed: "--timeout S", "--simulate[=SCENARIO]", "set-status available|busy TEXT",
/// "picture HANDLE [-o FILE]". FILE, DIR and SCENARIO stand for names of files, other capitals for what only a person
/// knows.
struct Manual
{
    struct Entry
    {
        QString usage;
        QString text;
    };

    QString program;
    QString synopsis = {}; ///< Behind the program's name, a line for every form; "--" is followed by a command.
    QString purpose = {};  ///< As manuals name it: a lower-case letter first, and no full stop.
    QString more = {};     ///< Further sentences.
    QList<Entry> options = {};
    QHash<QString, QStringList> values = {}; ///< What may be typed for an option's value, by "--option".
    QList<Entry> commands = {};              ///< The first word of a usage is the command's name.
    QString ending = {};
    QList<Entry> statuses = {}; ///< What the program ends with, and when.
    // For the page alone.
    QList<Entry> lines = {}; ///< What it takes on standard input,
    QString aboutLines = {}; ///< and what there is to know about that.
    QList<Entry> environment = {};
    QList<Entry> files = {};

    QString help() const;
    /// In the words of man(7).
    QString page(const QString& version) const;
    /// For bash. "help" is completed by the names of the commands, if there are any.
    QString completion() const;

    /// Prints what \a word ("--help", "-h", "--version", "--manual-page", "--completion") asks for; false when it is
    /// none of them.
    bool print(const QString& word, const QString& version) const;
    /// The same for what a parser has found, that learnt of them by addOwnOptions().
    bool printAsked(const QCommandLineParser& parser, const QString& version) const;
    static void addOwnOptions(QCommandLineParser& parser);
    static QList<Entry> entriesOf(const QList<QCommandLineOption>& options);
    /// The options that print() knows, for the table of them.
    static QList<Entry> ownOptions();
    /// The variables that every application of the library reads.
    static QList<Entry> libraryEnvironment();
};

} // namespace zeltools
