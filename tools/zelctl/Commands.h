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
    Record record;          ///< What was asked for, without the command's name.
    std::optional<bool> ok; ///< For requests: what the public call returned.
    QString failure;        ///< Not empty: the command could not even be tried, and why.
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
    QLatin1String source = {}; ///< The signal that tells; none: the answer tells.
    QLatin1String signal = {};
    QLatin1String key = {}; ///< The member of that signal that must be the first argument; none: any signal will do.

    /// What people read at the end. {0}, {1} are arguments, {name} a member of the signal.
    QLatin1String sentence = {};
    /// The same when that member of the signal is empty or 0.
    QLatin1String member = {};
    QLatin1String nothing = {};
    /// What people read when the request was refused.
    QLatin1String refused = {};
    /// Why a service that works may leave the request unanswered, as a question.
    QLatin1String unanswered = {};

    /// Whether things already stand as the command wants them, so that no signal will follow; may be null.
    bool (*settled)(Session& session, const Arguments& arguments) = nullptr;
    /// Whether it takes as many signals as it needs until things are settled.
    bool untilSettled = false;
    /// Why there is no point in trying, as a sentence; empty to go on. May be null.
    QString (*objection)(Session& session, const Arguments& arguments) = nullptr;
};

struct Command
{
    QLatin1String name;
    QLatin1String summary;
    Needs needs;
    Signature signature;
    Answer (*run)(Session& session, const Arguments& arguments);
    Outcome outcome = {};
};

/// All commands but `watch` and `shell`, which are ways of running and not requests. In the order of the help.
const std::vector<Command>& commands();

const Command* findCommand(const QString& name);

} // namespace zelctl
