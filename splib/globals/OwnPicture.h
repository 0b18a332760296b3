// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/channel/StreamRequests.h>
#include <splib/globals/Avatar.h>

#include <zel/JsonStream.h>

#include <iface/RetryTimer.h>

#include <QtCore/QByteArray>
#include <QtCore/QSharedDataPointer>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <functional>

namespace zelsplib {

/// The largest own picture that the service takes, in bytes.
inline constexpr unsigned int DEFAULT_MAX_AVATAR_DATA_SIZE = 32768;

/// The own picture: as the service has it, and as the application wants it to be.
///
/// A member of the globals manager. A picture that the application has offered is pending until the own profile names
/// another picture than before, or the service answers for the one that it has already; while it is, the change of the
/// profile is asked for again, and the profile itself, of whose change the news may have been lost. What was offered
/// last is kept, for the service may want its bytes at any time.
class OwnPicture
{
public:
    /// What it has its manager do.
    struct Actions
    {
        std::function<void(const Avatar&)> changeProfile;          ///< ask for a profile that names this picture
        std::function<void()> readProfile;                         ///< ask for the profile as it is
        std::function<void(const QString& streamId)> requestBytes; ///< of the picture that the profile names
        std::function<void(const QByteArray&)> tell;               ///< these are the own picture's bytes
    };

    OwnPicture(const QSharedPointer<zel::JsonStream>& stream, Actions actions);

    /// False, with a line in the log, when the picture cannot be one or while another is pending.
    bool offer(Avatar::ImageType type, const char* data, unsigned int size);

    /// The own profile names another picture than before, or none.
    void follow(const QString& avatarId);
    /// Asks for the bytes of the picture that the profile names, and again until they come.
    void request(const QString& avatarId);
    /// The service has answered a change of the profile, which names the picture `avatarId`.
    void handleResponse(bool isRefused, const QString& avatarId);
    /// The service wants the own picture on the stream, or will send it there.
    void handleRequest(const QString& streamId);
    /// False when the bytes are not the own picture's.
    bool handleData(const QString& streamId, const QByteArray& data);

private:
    bool isPending() const { return m_offerRetry.isActive(); }
    void confirm();

    const QSharedPointer<zel::JsonStream> m_stream;
    const Actions m_actions;
    QSharedDataPointer<Avatar> m_offered; ///< null when the application has offered none
    iface::RetryTimer m_offerRetry;       ///< active while what was offered last is pending
    StreamRequests m_requests;            ///< of the picture that the profile names: one, under the key ownPicture
    QString m_announcedStreamId;          ///< a stream that the service means to send it on, empty when it came
};

} // namespace zelsplib
