// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "RawApplication.h"

#include <common/TestMain.h>

#include <zelcore/Simulator.h>

#include <QtTest/QSignalSpy>

#include <map>

/// Each case has a service of its own and one application, A, that has begun.
class ServiceTest : public QObject
{
    Q_OBJECT

protected Q_SLOTS:
    void init();
    void cleanup();

protected:
    /// Plays a dialogue, a line each, up to the first that does not go as it says. A letter is an application, which
    /// comes when it is first named.
    ///
    ///     $ COMMAND => TEXT...  the service does this, and what it says has these texts in it
    ///     $! COMMAND => TEXT    it refuses to, and says why
    ///     A> TYPE JSON          A sends a message; "change" is one that changes the own profile, "register silent" (or
    ///                           loud) one that registers
    ///     A= RECORD             it sends just these bytes, \n for a line break
    ///     A< TYPE TEXT... -TEXT... the next message of this type to A has these texts in it and not those; behind what
    ///                           A sends this is "-> TYPE TEXT...; TYPE TEXT..."
    ///     A. TYPE...            that is all A hears but for messages of these types, in this order
    ///     ! NUMBER              so many messages have been refused by now, with one short line each
    ///
    /// x[N], data[N] and hash[N] stand for so many letters, a picture of so many bytes in base64 and its SHA-1.
    bool play(const char* dialogue);

    RawApplication& application(char name);

    std::unique_ptr<zelcore::Simulator> m_simulator;
    std::unique_ptr<QSignalSpy> m_refused;

private:
    bool playLine(const QString& line);
    bool playCommand(const QString& line, bool isDone);
    static bool say(RawApplication& speaker, const QString& message);
    static bool hears(RawApplication& listener, const QString& expected);

    std::map<char, std::unique_ptr<RawApplication>> m_applications;
};
