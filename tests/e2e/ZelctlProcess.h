// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QProcess>
#include <QtCore/QStringList>

/// zelctl as a program that another one drives: words in, lines out.
class ZelctlProcess
{
public:
    /// \a root is its PPS_ROOT; empty for none.
    explicit ZelctlProcess(const QString& root = QString());
    ~ZelctlProcess();

    /// Standard input stays open until finish().
    bool start(const QStringList& arguments);
    /// `--json shell` up to its first line; empty when that does not come.
    QJsonObject startShell(const QStringList& options = {});

    /// One line to standard input.
    void write(const QByteArray& line);
    /// The next line that was not taken yet, whatever it is; empty when none comes.
    QByteArray takeLine();
    QJsonObject take() { return parsed(takeLine()); }
    /// Sends a command and takes the next line.
    QJsonObject ask(const QByteArray& command);
    /// The lines up to the one that announces this registration state, without it.
    QList<QJsonObject> takeUntil(const QString& registrationState);

    /// SIGTERM.
    void terminate() { m_process.terminate(); }
    /// SIGINT.
    void interrupt();
    /// Closes standard input and waits for the end. The exit status; -1 when it crashed or did not end.
    int finish();
    /// Runs it to its end on \a input.
    int run(const QStringList& arguments, const QByteArray& input = QByteArray());

    /// What it wrote in all.
    QByteArray output() const { return m_output; }
    QByteArray diagnostics();
    QList<QByteArray> lines() const;

    static QJsonObject parsed(const QByteArray& line);

private:
    void collect();

    QProcess m_process;
    QByteArray m_output;
    QByteArray m_diagnostics;
    qsizetype m_taken = 0;
};
