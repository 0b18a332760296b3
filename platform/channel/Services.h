// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <platform/contacts/ContactListEventHandler.h>
#include <platform/context/RegistrationEventHandler.h>
#include <platform/ecoid/EcoIdEventHandler.h>
#include <platform/ecoid/EcoIdStatusEventHandler.h>
#include <platform/messaging/ConnectionEventHandler.h>
#include <platform/messaging/InvocationManager.h>
#include <platform/profile/UserProfileEventHandler.h>
#include <platform/profilebox/ProfileBoxEventHandler.h>
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
