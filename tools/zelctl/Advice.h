// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/RegistrationState.h>

#include <QtCore/QString>

namespace zelctl {

/// Why an application in this state cannot register, and what to do.
QString whyNotRegistered(vx::platform::zel::RegistrationState::Type state);

/// That there is no core service, where it was looked for, and what to do.
QString whyNoService();

} // namespace zelctl
