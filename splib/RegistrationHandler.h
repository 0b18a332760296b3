// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace zelsplib {

/// What the managers tell the facade about their readiness. The facade decides from these when the application
/// counts as registered.
///
/// The managers do not own it and call it on the thread of the event loop. Each call may end in a slot of the
/// application, so it may spin an event loop of its own, and more messages may be handled before it returns.
class RegistrationHandler
{
public:
    /// The core service says that the application is registered; may come more than once.
    virtual void registered() = 0;
    virtual void userProfileIsReady() = 0;
    virtual void userProfileAvatarIsReady() = 0;
    virtual void profileBoxIsReady() = 0;
    virtual void contactsIsReady() = 0;

protected:
    ~RegistrationHandler() = default;
};

} // namespace zelsplib
