// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/profilebox/ProfileBoxManagerBase.h>

#include <concepts>

namespace zelsplib {

/// Hears that what the box holds came for the first time, what comes into it then, changes and goes, and of icons that
/// were asked for.
template <typename T>
concept ProfileBoxEvents = std::default_initializable<T> &&
    requires(T handler, const ProfileBoxItem& item, const ProfileBoxImage& image)
{
    handler.pushProfileBoxReceivedEvent();
    handler.pushAddProfileBoxItemEvent(item);
    handler.pushUpdateProfileBoxItemEvent(item);
    handler.pushRemoveProfileBoxItemEvent(item);
    handler.pushAddProfileBoxImageEvent(image);
    handler.pushUpdateProfileBoxImageEvent(image);
    handler.pushRemoveProfileBoxImageEvent(image);
    handler.pushRetrievedProfileBoxImageEvent(image);
};

/// Keeps the user's profile box as far as it is the application's. Owned by the facade; holds its event handler by
/// value.
template <ProfileBoxEvents Handler>
class ProfileBoxManager final : public ProfileBoxManagerBase
{
public:
    using ProfileBoxManagerBase::ProfileBoxManagerBase;

    Handler& eventHandler() { return m_handler; }

private:
    void pushFirstReceived() override { m_handler.pushProfileBoxReceivedEvent(); }
    void pushItemAdded(const ProfileBoxItem& item) override { m_handler.pushAddProfileBoxItemEvent(item); }
    void pushItemUpdated(const ProfileBoxItem& item) override { m_handler.pushUpdateProfileBoxItemEvent(item); }
    void pushItemRemoved(const ProfileBoxItem& item) override { m_handler.pushRemoveProfileBoxItemEvent(item); }
    void pushImageAdded(const ProfileBoxImage& image) override { m_handler.pushAddProfileBoxImageEvent(image); }
    void pushImageUpdated(const ProfileBoxImage& image) override { m_handler.pushUpdateProfileBoxImageEvent(image); }
    void pushImageRemoved(const ProfileBoxImage& image) override { m_handler.pushRemoveProfileBoxImageEvent(image); }
    void pushImageRetrieved(const ProfileBoxImage& image) override
    {
        m_handler.pushRetrievedProfileBoxImageEvent(image);
    }

    Handler m_handler;
};

} // namespace zelsplib
