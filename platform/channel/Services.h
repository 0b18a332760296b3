// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <platform/channel/EventHandlers.h>
#include <platform/messaging/InvocationManager.h>
#include <splib/ZELSPServices.h>

// The services core is written without knowledge of the public classes; this is the one place where it gets the types
// that it reports to. Services.cpp holds the only instantiation.
extern template class zelsplib::ZELSPServices<
    vx::platform::zel::RegistrationEventHandler, vx::platform::zel::UserProfileEventHandler,
    vx::platform::zel::ContactListEventHandler, vx::platform::zel::ConnectionEventHandler,
    vx::platform::zel::ProfileBoxEventHandler, vx::platform::zel::InvocationManager,
    vx::platform::zel::EcoIdEventHandler, vx::platform::zel::EcoIdStatusEventHandler>;

namespace vx::platform::zel {

using Services = zelsplib::ZELSPServices<RegistrationEventHandler, UserProfileEventHandler, ContactListEventHandler,
                                         ConnectionEventHandler, ProfileBoxEventHandler, InvocationManager,
                                         EcoIdEventHandler, EcoIdStatusEventHandler>;

} // namespace vx::platform::zel
