// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Arguments.h"
#include "Record.h"

#include <optional>
#include <vector>

namespace zelctl {

class Session;

/// What a command said at once. Its later outcome, if it has one, is a signal.
struct Answer
{
    Record record = {};          ///< What was asked for, without the command's name.
    std::optional<bool> ok = {}; ///< For requests: what the public call returned.
    QString failure = {};        ///< Not empty: the command could not even be tried, and why.
};

/// What a command that stands for itself waits for before it acts.
enum class Needs {
    State,   ///< That the service has told how things stand.
    Access,  ///< Registration.
    Contacts ///< Registration, and the list of contacts.
};

/// How a command that stands for itself comes to its end after it has acted.
struct Outcome
{
    QString signal = {}; ///< "Class.signal", the one that tells; none: the answer tells.
    QString key = {};    ///< The member of it that must be the first argument; none: any such signal will do.
    /// What people read at the end: {0}, {1} are arguments, {name} a member of the signal. What stands behind a bar is
    /// read instead when such a member is empty or 0.
    QString sentence = {};
    /// What such a request takes, for who wonders why it was refused or not answered.
    QString takes = {};
    /// Whether things stand as the command wants them: no signal follows then, or no further one. May be null.
    bool (*settled)(Session& session, const Arguments& arguments) = nullptr;
};

struct Command
{
    QString name;
    /// Its arguments. HANDLE is a contact who runs the application, ID an item of the box.
    QString usage;
    QString summary;
    QString example; ///< Without the program's name.
    Needs needs;
    Answer (*run)(Session& session, const Arguments& arguments);
    Outcome outcome = {};
};

/// All commands but `watch` and `shell`, which are ways of running and not requests. In the order of the help.
const std::vector<Command>& commands();

/// Null when there is none.
const Command* findCommand(const QString& name);

/// That there is no such command, and which one may have been meant.
QString unknownCommand(const QString& name);

/// For people: how a command is used, what it does, and an example; \a program stands before what is typed. Empty when
/// there is no such command.
QString helpOn(const QString& name, const QString& program);

/// Why this command has no chance: a contact or an item that it names is not there, and the library would drop the
/// request with a line in its log, where a person at a terminal would only see nothing happen. Empty to go on.
QString objectionTo(const Command& command, const Arguments& arguments, Session& session);

/// The state of the library as `state` answers it, and as the shell begins.
Record stateRecord(Session& session);

} // namespace zelctl
