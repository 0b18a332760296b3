// SPDX-License-Identifier: Apache-2.0
#include <splib/globals/OwnPicture.h>

#include <splib/log/Logging.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace zelsplib {

using namespace logging;

namespace {

const QString ownPicture = u"own picture"_s;

bool refuse(const QString& reason)
{
    Log<GENERAL_ERROR>({}, reason);
    return false;
}

} // namespace

OwnPicture::OwnPicture(const QSharedPointer<zel::JsonStream>& stream, Actions actions)
    : m_stream(stream)
    , m_actions(std::move(actions))
    , m_offerRetry([this] {
        m_actions.readProfile();
        m_actions.changeProfile(*m_offered.constData());
    })
    , m_requests(stream, [this](const QString&, const QString& streamId) { m_actions.requestBytes(streamId); })
{
}

bool OwnPicture::offer(Avatar::ImageType type, const char* data, unsigned int size)
{
    if (size == 0)
        return refuse(u"Avatar size == 0"_s);
    if (!data)
        return refuse(u"Avatar data is null"_s);
    if (size > DEFAULT_MAX_AVATAR_DATA_SIZE)
        return refuse(u"Avatar size %1 exceeds %2"_s.arg(size).arg(DEFAULT_MAX_AVATAR_DATA_SIZE));
    if (isPending())
        return refuse(u"m_pendingAvatarSetRequest != 0; this request will be ignored since a request is "
                      "already pending"_s);
    m_offered = new Avatar(type, QByteArray(data, static_cast<qsizetype>(size)));
    m_offerRetry.start();
    m_actions.changeProfile(*m_offered.constData());
    return true;
}

void OwnPicture::follow(const QString& avatarId)
{
    m_requests.cancel(ownPicture); // what was asked for is no longer the profile's picture
    if (isPending())
        confirm();
    else if (avatarId.isEmpty())
        m_actions.tell({});
    else
        request(avatarId);
}

void OwnPicture::request(const QString& avatarId)
{
    m_requests.request(ownPicture, avatarId);
}

void OwnPicture::handleResponse(bool isRefused, const QString& avatarId)
{
    if (!isPending())
        return;
    if (isRefused) {
        // The answer may be for another change, and the picture still be on its way: its bytes are kept.
        Log<GENERAL_WARNING_INFO>({}, "a change of the own profile was refused; the own picture is given up");
        m_offerRetry.stop();
    } else if (m_offered.constData()->getHash() == avatarId) {
        // Setting the picture that the profile already has changes nothing that could confirm it.
        confirm();
    }
}

void OwnPicture::handleRequest(const QString& streamId)
{
    const Avatar* offered = m_offered.constData();
    if (streamId.isEmpty())
        return;
    if (isPending() || (offered && offered->getHash() == streamId)) {
        m_stream->send(streamId, offered->getData());
    } else {
        if (!m_requests.isAwaitedByOthers({}, streamId))
            m_stream->forget(streamId);
        m_announcedStreamId = streamId;
    }
}

bool OwnPicture::handleData(const QString& streamId, const QByteArray& data)
{
    const bool isRequested = !m_requests.take(streamId, data).isEmpty();
    const bool isAnnounced =
        !streamId.isEmpty() && streamId == m_announcedStreamId && m_requests.waiting(streamId).isEmpty();
    if (!isRequested && !isAnnounced)
        return false;
    if (isAnnounced)
        m_announcedStreamId.clear();
    m_actions.tell(data);
    return true;
}

void OwnPicture::confirm()
{
    m_offerRetry.stop();
    m_actions.tell(m_offered.constData()->getData());
}

} // namespace zelsplib
