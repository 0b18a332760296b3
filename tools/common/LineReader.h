// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

namespace zeltools {

/// Lines of a descriptor, as they are typed or piped in. A last line without a line break counts.
class LineReader : public QObject
{
    Q_OBJECT

public:
    /// \a input stays the caller's. \a prompt is printed before each line.
    explicit LineReader(int input, const QString& prompt = {}, QObject* parent = nullptr);

    /// For a person at a terminal, who is asked by the name of the \a program: there lines are edited, come back from
    /// the program's history, and begin with one of \a commands by Tab. Where a terminal is not at both ends, or is
    /// somebody else's at the moment, the lines are read plainly, and so are they without libedit.
    static std::unique_ptr<LineReader> forPerson(int input, const QString& program, const QStringList& commands);

    /// To be called before anything is printed: takes the line that is being typed off the screen, if there is one. It
    /// is there again when the event loop has its turn.
    static void makeRoom();

    /// Lines come from the event loop from now on.
    void start();
    /// No further line comes, also none that was read already; nor does ended().
    void stop();

Q_SIGNALS:
    void lineRead(const QString& line);
    /// There is no more input, or there never was any.
    void ended();

protected:
    /// The descriptor has something.
    virtual void read();
    /// A line may be typed now.
    virtual void invite();
    virtual void hideLine() {}

    /// A whole line, then the invitation to the next.
    void take(const QString& line);
    void end();
    int input() const { return m_input; }
    bool isStopped() const { return m_stopped; }

    /// The one that makes room; the process has one terminal.
    static void setAtTerminal(LineReader* reader);

private:
    const int m_input;
    const QByteArray m_prompt;
    QSocketNotifier m_notifier;
    QByteArray m_pending;
    bool m_stopped = false;
};

} // namespace zeltools
