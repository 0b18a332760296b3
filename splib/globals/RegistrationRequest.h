// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/RetryTimer.h>

#include <QtCore/QString>

#include <functional>

namespace zelsplib {

/// The registration that the application has asked for, until the service says what becomes of it.
///
/// Who asks twice may have the user asked twice. So when nothing is heard, how the registration stands is read again
/// first. Only an answer which shows that nothing has become of the request lets it go out again, and once: the service
/// may leave a silent one as it is. While the user is being asked, the state is read and nothing else.
///
/// A member of the globals manager.
class RegistrationRequest
{
public:
    using Send = std::function<void(const QString& uuid, bool silent)>;

    /// What it has its manager do.
    RegistrationRequest(Send send, std::function<void()> readState);

    void begin(const QString& uuid, bool silent);
    /// The service has told another state than before.
    void handleState(const QString& state);
    /// The service has said how the registration stands: another state goes to handleState() first.
    void handleAnswer();

private:
    /// How the registration stands since the request went out.
    enum class Known {
        Nothing,
        Asked, ///< the service, which has not answered yet
        NothingNew
    };

    void send();
    void remind();

    const Send m_send;
    const std::function<void()> m_readState;
    QString m_uuid;
    bool m_silent = false;
    Known m_known = Known::Nothing;
    bool m_isPending = false; ///< the user is being asked
    bool m_isRepeated = false;
    iface::RetryTimer m_retry;
};

} // namespace zelsplib
