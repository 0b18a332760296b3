// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace zelsplib {
class ProfileBoxImage;
class ProfileBoxItem;
} // namespace zelsplib

namespace vx::platform::zel {

class ProfileBoxDelegate;
class ServiceBridge;

/// What the profile box manager reports to; it passes everything on to the profile box delegate. A value held by the
/// manager; pushes do nothing until the bridge has introduced itself.
class ProfileBoxEventHandler
{
public:
    void setProfileBoxBridge(ServiceBridge* bridge) { m_bridge = bridge; }

    void pushAddProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const;
    void pushRemoveProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const;
    void pushAddProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const;
    void pushRemoveProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const;
    void pushRetrievedProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const;

private:
    ProfileBoxDelegate* delegate() const;

    ServiceBridge* m_bridge = nullptr;
};

} // namespace vx::platform::zel
