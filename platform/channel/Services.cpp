// SPDX-License-Identifier: Apache-2.0
#include <platform/channel/Services.h>

template class zelsplib::ZELSPServices<
    vx::platform::zel::RegistrationEventHandler, vx::platform::zel::UserProfileEventHandler,
    vx::platform::zel::ContactListEventHandler, vx::platform::zel::ConnectionEventHandler,
    vx::platform::zel::ProfileBoxEventHandler, vx::platform::zel::InvocationManager,
    vx::platform::zel::EcoIdEventHandler, vx::platform::zel::EcoIdStatusEventHandler>;
