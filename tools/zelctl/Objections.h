// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/RegistrationState.h>

#include <QtCore/QString>

namespace zelctl {

class Arguments;
class Session;

/// Why a request would have no answer: the library hands some requests on, or drops them with a line in its log,
/// where a person at a terminal would only see nothing happen. Empty when there is nothing to object to.
QString objectToUnknownContact(Session& session, const Arguments& arguments);
QString objectToUnknownItem(Session& session, const Arguments& arguments);
QString objectToItem(Session& session, const Arguments& arguments);

/// Why an application in this state cannot register, and what to do.
QString whyNotRegistered(vx::platform::zel::RegistrationState::Type state);

/// That there is no core service, where it was looked for, and what to do.
QString whyNoService();

} // namespace zelctl
