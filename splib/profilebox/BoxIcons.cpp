// SPDX-License-Identifier: Apache-2.0
#include <splib/profilebox/BoxIcons.h>

#include <splib/JsonFields.h>
#include <splib/log/Logging.h>
#include <splib/profilebox/ProfileBoxJsonAdapters.h>

#include <zel/JsonPipe.h>

#include <QtCore/QCryptographicHash>

#include <algorithm>
#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

namespace zelsplib {

using namespace logging;

namespace {

/// The stream an icon's data is asked for on. Only the low eight bits of the id enter it, as one byte.
QString retrievalStreamId(int iconId)
{
    QByteArray name("requestProfileBoxImage-");
    name.append(static_cast<char>(iconId & 0xff));
    return QString::fromLatin1(QCryptographicHash::hash(name, QCryptographicHash::Sha1).toHex());
}

} // namespace

BoxIcons::BoxIcons(const QSharedPointer<zel::JsonStream>& stream, EventQueue& events, Event added, Event updated,
                   Event removed, Event retrieved)
    : BoxList(events, std::move(added), std::move(updated), std::move(removed))
    , m_stream(stream)
    , m_events(events)
    , m_retrieved(std::move(retrieved))
    , m_announcements(std::bind_front(&BoxIcons::send, this))
    , m_retrievals(stream, std::bind_front(&BoxIcons::sendRetrieval, this))
{
}

void BoxIcons::start(QObject* owner, const QSharedPointer<zel::ListApiMultiplexer>& multiplexer,
                     const std::function<void()>& changed)
{
    BoxList::start(multiplexer, QSharedPointer<ProfileBoxImageJsonAdapter>::create(), u"profileBoxImage"_s, changed);
    m_stream->pipe()->addListener(owner, u"requestNewProfileBoxImage"_s,
                                  [this](QObject*, const iface::JsonReaderAttribute& message) {
                                      QString imageId;
                                      QString streamId;
                                      message.object().readFields("imageId", imageId, "streamId", streamId);
                                      sendBytes(imageId, streamId);
                                  });
    // The list announces nothing when it is sent anew and is the same.
    m_stream->pipe()->addListener(owner, u"listAll"_s, [this](QObject*, const iface::JsonReaderAttribute& message) {
        QString type;
        message.object().readString("type", type);
        if (type == list().type())
            listIsSentAnew();
    });
    m_data = std::make_unique<zel::JsonStreamFunctorAdapter>(
        m_stream, [this](const QString& id, const QVariant& data) { handleData(id, data.toByteArray()); });
}

// --- Listed -----------------------------------------------------------------------------------------------------

/// The icon with its data, as far as that is known.
ProfileBoxImage BoxIcons::completed(const ProfileBoxImage& listed) const
{
    ProfileBoxImage image = listed;
    const auto pending = m_pending.value(image.getImageId());
    const ProfileBoxImage* known = find(image.getImageId());
    if (pending)
        image.setImage(pending);
    else if (known && known->getImageHash() == image.getImageHash())
        image.setImage(known->getImage());
    return image;
}

void BoxIcons::settle(const ProfileBoxImage& image)
{
    m_pending.remove(image.getImageId());
    m_announcements.end(image.getImageId());
}

bool BoxIcons::mayAdd(int index) const
{
    const int listSize = list().childCount({});
    const qsizetype cacheSize = records().size();
    if (listSize > cacheSize)
        return true;
    Log<ZELSP_PROFILE_BOX_IMG_ADDED_CALLBACK_FAILURE>({}, listSize, cacheSize, index);
    return false;
}

// --- On their way to the service --------------------------------------------------------------------------------

std::optional<BoxRefusal> BoxIcons::refusalOf(int iconId, const char* data, unsigned size) const
{
    const QString imageId = QString::number(iconId);
    if (const auto refusal = refusalOfIcon(iconId, data, size))
        return refusal;
    if (m_pending.contains(imageId))
        return BoxRefusal::IconIsUnderWay;
    if (isListed(imageId))
        return BoxRefusal::IconIsRegistered;
    return std::nullopt;
}

void BoxIcons::create(int iconId, Avatar::ImageType type, const QByteArray& data)
{
    const QString imageId = QString::number(iconId);
    m_pending.insert(imageId, QSharedDataPointer<Avatar>(new Avatar(type, data)));
    m_announcements.begin(imageId);
    send(imageId);
}

void BoxIcons::send(const QString& imageId) const
{
    const QString imageHash = m_pending.value(imageId).constData()->getHash();
    m_stream->pipe()->send(makeRequest("createProfileBoxImage", "imageHash", imageHash, "imageId", imageId));
}

void BoxIcons::sendBytes(const QString& imageId, const QString& streamId)
{
    Log<ZELSP_PROFILE_BOX_REQ_IMG_CALLBACK>({}, imageId, streamId);
    const auto pending = m_pending.constFind(imageId);
    if (pending == m_pending.constEnd()) {
        Log<ZELSP_PROFILE_BOX_REQ_IMG_FAILURE>({}, imageId, streamId);
        return;
    }
    const QByteArray data = (*pending)->getData();
    m_announcements.end(imageId);
    m_stream->send(streamId, data);
}

/// The service may have lost what it had been sent. If it has not, the icon will be listed before long.
void BoxIcons::listIsSentAnew()
{
    if (!isComplete())
        return;
    for (auto icon = m_pending.keyBegin(); icon != m_pending.keyEnd(); ++icon)
        m_announcements.begin(*icon);
}

// --- Their data -------------------------------------------------------------------------------------------------

void BoxIcons::retrieve(int iconId)
{
    m_retrievals.request(QString::number(iconId), retrievalStreamId(iconId));
}

void BoxIcons::sendRetrieval(const QString& imageId, const QString& streamId) const
{
    m_stream->pipe()->send(makeRequest("requestProfileBoxImage", "streamId", streamId, "imageId", imageId));
}

void BoxIcons::handleData(const QString& streamId, const QByteArray& bytes)
{
    if (m_retrievals.waiting(streamId).isEmpty())
        return;
    const QSharedDataPointer<Avatar> icon(new Avatar(Avatar::imageTypeShownBy(bytes).value_or(Avatar::Jpeg), bytes));
    const QString hash = icon.constData()->getHash();
    const QString imageId = retrievalOf(streamId, hash);
    if (imageId.isEmpty())
        return;
    const ProfileBoxImage* listed = find(imageId);
    if (listed && !m_retrievals.isWhole(streamId, listed->getImageHash(), hash))
        return;
    m_retrievals.cancel(imageId);
    Log<ZELSP_PROFILE_BOX_IMG_DATA_RECEIVED>({}, imageId, streamId, static_cast<unsigned>(bytes.size()));
    m_events.post([this, image = ProfileBoxImage::create(imageId, hash, icon)] { m_retrieved(image); });
    m_events.deliver();
}

/// Whose data it is that has come, with this hash, on a stream that several icons may share; empty when nobody's.
QString BoxIcons::retrievalOf(const QString& streamId, const QString& hash) const
{
    const QStringList waiting = m_retrievals.waiting(streamId);
    bool isRepeated = false; // the answer for an icon that has had one
    for (const ProfileBoxImage& image : records()) {
        const QString imageId = image.getImageId();
        if (image.getImageHash() != hash || retrievalStreamId(imageId.toInt()) != streamId)
            continue;
        if (waiting.contains(imageId))
            return imageId;
        isRepeated = true;
    }
    if (isRepeated)
        return {};
    const auto unlisted =
        std::find_if(waiting.begin(), waiting.end(), [this](const QString& imageId) { return !find(imageId); });
    return unlisted != waiting.end() ? *unlisted : waiting.value(0);
}

} // namespace zelsplib
