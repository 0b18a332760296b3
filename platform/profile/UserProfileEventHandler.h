// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace zelsplib {
class PlatformContact;
}

namespace vx::platform::zel {

class ServiceBridge;
class UserProfileDelegate;

/// What the globals manager reports changes of the own profile to, each with the whole new record; it passes them on to
/// the profile delegate. A value held by the manager; pushes do nothing until the bridge has introduced itself.
class UserProfileEventHandler
{
public:
    void setUserProfileBridge(ServiceBridge* bridge);

    void pushPlatformUserProfileDisplayNameChangedEvent(const zelsplib::PlatformContact& profile) const;
    void pushPlatformUserProfilePersonalMessageChangedEvent(const zelsplib::PlatformContact& profile) const;
    void pushPlatformUserProfileStatusChangedEvent(const zelsplib::PlatformContact& profile) const;
    void pushPlatformUserProfileAvatarChangedEvent(const zelsplib::PlatformContact& profile) const;

private:
    UserProfileDelegate* m_delegate = nullptr;
};

} // namespace vx::platform::zel
