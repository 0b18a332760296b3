// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/RegistrationState.h>

#include <QtCore/QAnyStringView>
#include <QtCore/QPointer>
#include <QtCore/QString>

namespace vx::platform::zel {

class Context;

/// Says what an application does that can never work: one warning in the category "zel.platform", which names the class
/// and the call, the reason and the remedy. Each text once for as long as the process is connected, however often it
/// happens. Changes nothing of what the call does. May be called on any thread, and by a message handler that uses the
/// library.
namespace mistakes {

/// `where` is the class, or the class and the call. Answers false: what a request does that was refused.
bool warn(const char* where, QAnyStringView what);

/// The same for what works, but otherwise than somebody may think: information, not a warning.
void remark(const char* where, const char* what);
/// Begins anew: everything may be said once more.
void forget();

/// What an object was made for, as far as it counts whether that was too early.
enum class Needs { Context, Access, Readiness };

/// An object of the class `where` is being made: whether it can be used.
bool checkMaking(const char* where, const QPointer<Context>& context, Needs needs);
/// An object of the class `where` is used: whether its context, if there is one, gives access.
bool hasAccess(const char* where, const Context* context);
/// A request is made: whether it may be, which is `isAllowed`. Says why, if it may not.
bool mayRequest(const char* where, const Context* context, bool isAllowed);
/// The message of the request that was made last is longer than the object takes.
void warnOfLongMessage();

/// Why nothing can be requested in this state, whatever it is: there is no service, or it has not said how things
/// stand. Empty in every other state.
QString whyNothingIsPossible(RegistrationState::Type state);
QString nameOf(RegistrationState::Type state);

/// Whether this is the thread on which the library lives; says so, if it is another.
bool isRightThread(const char* where);

} // namespace mistakes
} // namespace vx::platform::zel
