// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/RetryTimer.h>

#include <QtCore/QString>

#include <functional>

namespace zelsplib {

/// The registration that the application has asked for, until the service says what becomes of it.
///
/// Who asks twice may have the user asked twice. So when nothing is heard, how the registration stands is read again
/// first, and the request repeated when that has told nothing new; while the user is being asked, only the former.
///
/// A member of the globals manager.
class RegistrationRequest
{
public:
    /// What it has its manager do.
    struct Actions
    {
        std::function<void(const QString& uuid, bool silent)> send;
        std::function<void()> readState;
    };

    explicit RegistrationRequest(Actions actions);

    void begin(const QString& uuid, bool silent);
    /// The service has told a state, unasked or another one than before.
    void heed(const QString& state);

private:
    void remind();

    const Actions m_actions;
    QString m_uuid;
    bool m_silent = false;
    bool m_isPending = false; ///< the service has taken it
    bool m_isRead = false;    ///< the state, since the request was sent
    iface::RetryTimer m_retry;
};

} // namespace zelsplib
