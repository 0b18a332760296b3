// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/globals/GlobalsManagerBase.h>

#include <concepts>

namespace zelsplib {

/// Hears of registration states, by their access code.
template <typename T>
concept RegistrationEvents = std::default_initializable<T> && requires(T handler, const QString& code)
{
    handler.pushPermissionEvent(code);
};

/// Hears what changed in the own profile; each event carries the whole new record with its picture.
template <typename T>
concept UserProfileEvents = std::default_initializable<T> && requires(T handler, const PlatformContact& profile)
{
    handler.pushPlatformUserProfileDisplayNameChangedEvent(profile);
    handler.pushPlatformUserProfilePersonalMessageChangedEvent(profile);
    handler.pushPlatformUserProfileStatusChangedEvent(profile);
    handler.pushPlatformUserProfileAvatarChangedEvent(profile);
};

/// Keeps the core service's "global" list: the permissions and the registration state, and the own profile. Owned
/// by the facade; holds its event handlers by value.
template <RegistrationEvents Registration, UserProfileEvents UserProfile>
class GlobalsManager final : public GlobalsManagerBase
{
public:
    using GlobalsManagerBase::GlobalsManagerBase;

    void pushRegistrationEvent(const QString& state) override { m_registration.pushPermissionEvent(state); }
    Registration& registrationEventHandler() { return m_registration; }
    UserProfile& userProfileEventHandler() { return m_userProfile; }

private:
    void pushDisplayNameChanged(const PlatformContact& profile) override
    {
        m_userProfile.pushPlatformUserProfileDisplayNameChangedEvent(profile);
    }
    void pushPersonalMessageChanged(const PlatformContact& profile) override
    {
        m_userProfile.pushPlatformUserProfilePersonalMessageChangedEvent(profile);
    }
    void pushStatusChanged(const PlatformContact& profile) override
    {
        m_userProfile.pushPlatformUserProfileStatusChangedEvent(profile);
    }
    void pushAvatarChanged(const PlatformContact& profile) override
    {
        m_userProfile.pushPlatformUserProfileAvatarChangedEvent(profile);
    }

    Registration m_registration;
    UserProfile m_userProfile;
};

} // namespace zelsplib
