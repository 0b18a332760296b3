// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>

/// The client library, when an application of this very process has loaded it. Neither links the other: it is found by
/// name, and where it is not there is nothing to do.
namespace zelcore::clientlibrary {

/// Whether the library of this process has opened its object, and did so below \a root.
bool isConnectedTo(const QString& root);

/// Lets the library begin anew, as in a new process; it opens its object again when it is used again. False when the
/// application still has objects of it.
bool letGo();

/// Makes sure that an application that begins now finds the service below \a root. Empty, or a sentence that says why
/// not and what to do.
QString freeFor(const QString& root);

} // namespace zelcore::clientlibrary
