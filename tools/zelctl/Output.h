// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Record.h"

#include <QtCore/QString>

#include <cstdio>

namespace zelctl {

/// Where everything goes that the program says: one JSON text a line for programs, tables and sentences for people.
/// Each line is written out at once, so that who reads it through a pipe has it as soon as it is there.
class Output
{
public:
    enum class Format { People, JsonLines };

    /// Tables have every column, the ids and versions too that people seldom look for.
    void showAll() { m_all = true; }

    /// Writes to \a out, which must outlive it. Colour only on a terminal that wants it.
    explicit Output(Format format, std::FILE* out = stdout);

    Format format() const { return m_format; }

    /// The first line of a shell, whose answers name their command for people, too.
    void ready(const Record& state);
    /// \a record is what the command answers, without its name.
    void answer(const QString& command, const Record& record);
    void request(const QString& command, bool ok);
    /// A line that is not a command. It is an answer, not a diagnostic: who sent the line waits for one.
    void error(const QString& message);
    void signal(const Record& record);
    /// For people only.
    void sentence(const QString& text);
    /// To standard error, whatever the format.
    void diagnostic(const QString& text) const;

private:
    void line(const QByteArray& bytes);
    void table(const QList<Record>& rows);
    void values(const Record& record);
    QString bold(const QString& text) const;

    const Format m_format;
    std::FILE* const m_out;
    const bool m_colour;
    bool m_inShell = false;
    bool m_all = false;
};

/// How many columns a terminal gives \a text.
qsizetype columnsOf(const QString& text);

} // namespace zelctl
