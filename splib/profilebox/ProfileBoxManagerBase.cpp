// SPDX-License-Identifier: Apache-2.0
#include <splib/profilebox/ProfileBoxManagerBase.h>

#include <splib/EventQueue.h>
#include <splib/RegistrationHandler.h>
#include <splib/channel/Retries.h>
#include <splib/channel/StreamRequests.h>
#include <splib/log/Logging.h>
#include <splib/profilebox/ProfileBoxImageJsonAdapter.h>
#include <splib/profilebox/ProfileBoxItemJsonAdapter.h>
#include <splib/profilebox/ProfileBoxMirror.h>

#include <zel/JsonStreamFunctorAdapter.h>
#include <zel/JsonWriter.h>
#include <zel/LiveList.h>

#include <iface/ObservableListImplFunctorAdapter.h>
#include <iface/ObserverFunctorAdapter.h>

#include <QCryptographicHash>
#include <QHash>
#include <QSharedDataPointer>

#include <algorithm>
#include <utility>

namespace zelsplib {

using namespace logging;

namespace {

constexpr qsizetype maxTextLength = 100;
constexpr qsizetype maxTextBreaks = 2;
constexpr qsizetype maxCookieLength = 128;
constexpr unsigned maxIconSize = 32768;

/// `value` is the icon's id or its size, whichever the line names.
bool refuse(BoxRefusal refusal, const QString& value = {})
{
    const auto line = [refusal] {
        switch (refusal) {
        case BoxRefusal::TextIsEmpty:
            return QStringLiteral("Failed to create profile box item: text is null or empty");
        case BoxRefusal::TextIsTooLong:
            return QStringLiteral("Failed to create profile box item: text > 100 chars");
        case BoxRefusal::TextHasTooManyLines:
            return QStringLiteral("Failed to create profile box item: text contains more than 2 new line chars");
        case BoxRefusal::CookieIsTooLong:
            return QStringLiteral("Failed to create profile box item: cookie > 128 chars");
        case BoxRefusal::IconIdIsNegative:
            return QStringLiteral("Failed to register profile box icon: icon ID is invalid");
        case BoxRefusal::IconIsNull:
            return QStringLiteral("Failed to register profile box icon: null pointer found");
        case BoxRefusal::IconHasWrongSize:
            return QStringLiteral("Failed to register profile box icon: icon size=%1 is invalid");
        case BoxRefusal::IconIsUnderWay:
            return QStringLiteral("Failed to register profile box icon ID=%1: registration of icon with same ID "
                                  "already in progress");
        case BoxRefusal::IconIsRegistered:
            return QStringLiteral("Failed to register a profile box icon with id=%1; already registered");
        }
        Q_UNREACHABLE();
    }();
    Log<GENERAL_ERROR>({}, line.contains(QLatin1String("%1")) ? line.arg(value) : line);
    return false;
}

/// The stream an icon's data is asked for on. Only the low eight bits of the id enter it, as one byte.
QString retrievalStreamId(int iconId)
{
    QByteArray name("requestProfileBoxImage-");
    name.append(static_cast<char>(iconId & 0xff));
    return QString::fromLatin1(QCryptographicHash::hash(name, QCryptographicHash::Sha1).toHex());
}

} // namespace

struct ProfileBoxManagerBase::Private
{
    using ItemList = zel::LiveList<ProfileBoxItem, QString>;
    using ImageList = zel::LiveList<ProfileBoxImage, QString>;

    const QSharedPointer<zel::ListApiMultiplexer> listApi;
    const QSharedPointer<zel::JsonStream> jsonStream;
    RegistrationHandler* const registrationHandler;

    ItemList::Pointer itemList; ///< both lists are null until init()
    ImageList::Pointer imageList;
    std::unique_ptr<zel::JsonStreamFunctorAdapter> streamAdapter;
    EventQueue events;
    ProfileBoxState state = ProfileBoxState::Loading;

    // What the application has been told of.
    ProfileBoxMirror<ProfileBoxItem, &ProfileBoxItem::getItemId> items;
    ProfileBoxMirror<ProfileBoxImage, &ProfileBoxImage::getImageId> images;

    QHash<QString, QSharedDataPointer<Avatar>> pendingIcons; ///< announced but not listed yet, by icon id
    Retries announcements;     ///< of the pending icons whose bytes the service has not asked for yet
    StreamRequests retrievals; ///< of the data of icons, by icon id

    Private(const QSharedPointer<zel::ListApiMultiplexer>& multiplexer, const QSharedPointer<zel::JsonStream>& stream,
            RegistrationHandler* handler)
        : listApi(multiplexer)
        , jsonStream(stream)
        , registrationHandler(handler)
        , announcements([this](const QString& imageId) { sendIcon(imageId); })
        , retrievals(stream,
                     [this](const QString& imageId, const QString& streamId) { sendRetrieval(imageId, streamId); })
    {
    }

    void sendIcon(const QString& imageId) const
    {
        const auto request =
            QSharedPointer<zel::JsonWriter>::create(QStringLiteral("createProfileBoxImage"), QStringLiteral("zel"));
        request->addAttribute(QStringLiteral("imageHash"), pendingIcons.value(imageId).constData()->getHash());
        request->addAttribute(QStringLiteral("imageId"), imageId);
        jsonStream->pipe()->send(request);
    }

    void sendRetrieval(const QString& imageId, const QString& streamId) const
    {
        const auto request =
            QSharedPointer<zel::JsonWriter>::create(QStringLiteral("requestProfileBoxImage"), QStringLiteral("zel"));
        request->addAttribute(QStringLiteral("streamId"), streamId);
        request->addAttribute(QStringLiteral("imageId"), imageId);
        jsonStream->pipe()->send(request);
    }

    /// Whose data it is that has come, with this hash, on a stream that several icons may share; empty when nobody's.
    QString retrievalOf(const QString& streamId, const QString& hash) const
    {
        const QStringList waiting = retrievals.waiting(streamId);
        bool isRepeated = false; // the answer for an icon that has had one
        for (const ProfileBoxImage& image : images.records()) {
            const QString imageId = image.getImageId();
            if (image.getImageHash() != hash || retrievalStreamId(imageId.toInt()) != streamId)
                continue;
            if (waiting.contains(imageId))
                return imageId;
            isRepeated = true;
        }
        if (isRepeated)
            return {};
        const auto unlisted = std::find_if(waiting.begin(), waiting.end(),
                                           [this](const QString& imageId) { return !images.find(imageId); });
        return unlisted != waiting.end() ? *unlisted : waiting.value(0);
    }

    ProfileBoxItem itemAt(int index) const { return itemList->data(ItemList::pathOf(index)).value<ProfileBoxItem>(); }

    /// The icon with its data, as far as that is known.
    ProfileBoxImage imageAt(int index) const
    {
        auto image = imageList->data(ImageList::pathOf(index)).value<ProfileBoxImage>();
        const auto pending = pendingIcons.value(image.getImageId());
        if (pending)
            image.setImage(pending);
        else if (const ProfileBoxImage* known = images.find(image.getImageId());
                 known && known->getImageHash() == image.getImageHash())
            image.setImage(known->getImage());
        return image;
    }

    bool isListed(const QString& imageId) const { return imageList && imageList->locateItem(imageId) != -1; }

    QList<ProfileBoxItem> allItems() const
    {
        QList<ProfileBoxItem> all;
        for (int i = 0, count = itemList->childCount({}); i < count; ++i)
            all.append(itemAt(i));
        return all;
    }

    QList<ProfileBoxImage> allImages() const
    {
        QList<ProfileBoxImage> all;
        for (int i = 0, count = imageList->childCount({}); i < count; ++i)
            all.append(imageAt(i));
        return all;
    }

    /// An icon is listed, and was told with its data.
    void settle(const ProfileBoxImage& image)
    {
        pendingIcons.remove(image.getImageId());
        announcements.end(image.getImageId());
    }
};

ProfileBoxManagerBase::ProfileBoxManagerBase(QSharedPointer<zel::ListApiMultiplexer> listApi,
                                             QSharedPointer<zel::JsonStream> jsonStream,
                                             RegistrationHandler* registrationHandler)
    : d(new Private(listApi, jsonStream, registrationHandler))
{
}

ProfileBoxManagerBase::~ProfileBoxManagerBase() = default;

void ProfileBoxManagerBase::init()
{
    d->imageList = Private::ImageList::create(d->listApi, QSharedPointer<ProfileBoxImageJsonAdapter>::create(),
                                              QStringLiteral("profileBoxImage"), {});
    d->itemList = Private::ItemList::create(d->listApi, QSharedPointer<ProfileBoxItemJsonAdapter>::create(),
                                            QStringLiteral("profileBoxItem"), {});

    using Path = QVariantList;
    new iface::ObservableListImplFunctorAdapter(
        d->itemList.data(), [this](const Path& path) { handleItemAdded(path); },
        [this](const Path& path) { handleItemUpdated(path); }, [this](const Path& path) { handleItemRemoved(path); },
        [this](auto, const auto&) { handleItemsChanged(); }, this);
    new iface::ObservableListImplFunctorAdapter(
        d->imageList.data(), [this](const Path& path) { handleImageAdded(path); },
        [this](const Path& path) { handleImageUpdated(path); }, [this](const Path& path) { handleImageRemoved(path); },
        [this](auto, const auto&) { handleImagesChanged(); }, this);
    // A first transfer that brings nothing new is announced to plain observers alone.
    d->itemList->addObserver(new iface::ObserverFunctorAdapter([this] { handleListLoaded(); }, this));
    d->imageList->addObserver(new iface::ObserverFunctorAdapter([this] { handleListLoaded(); }, this));

    d->jsonStream->pipe()->addListener(this, QStringLiteral("requestNewProfileBoxImage"),
                                       [this](QObject* sender, iface::JsonReaderAttribute message) {
                                           requestNewProfileBoxImageCallback(sender, message);
                                       });
    // The list announces nothing when it is sent anew and is the same.
    d->jsonStream->pipe()->addListener(this, QStringLiteral("listAll"),
                                       [this](QObject*, const iface::JsonReaderAttribute& message) {
                                           QString type;
                                           message.object().readString("type", type);
                                           if (type == d->imageList->type())
                                               handleImagesSentAnew();
                                       });
    d->streamAdapter = std::make_unique<zel::JsonStreamFunctorAdapter>(
        d->jsonStream, [this](const QString& id, const QVariant& data) { streamDataAvailable(id, data); });
}

ProfileBoxState ProfileBoxManagerBase::profileBoxState() const
{
    return d->state;
}

std::optional<BoxRefusal> ProfileBoxManagerBase::refusalOfItem(const QString& text, const QString& cookie)
{
    if (text.isEmpty())
        return BoxRefusal::TextIsEmpty;
    if (text.size() > maxTextLength)
        return BoxRefusal::TextIsTooLong;
    // Both characters count, so a pair of them counts twice.
    if (text.count(u'\n') + text.count(u'\r') > maxTextBreaks)
        return BoxRefusal::TextHasTooManyLines;
    if (cookie.size() > maxCookieLength)
        return BoxRefusal::CookieIsTooLong;
    return std::nullopt;
}

std::optional<BoxRefusal> ProfileBoxManagerBase::refusalOfIcon(int iconId, const char* data, unsigned size) const
{
    const QString imageId = QString::number(iconId);
    if (iconId < 0)
        return BoxRefusal::IconIdIsNegative;
    if (!data)
        return BoxRefusal::IconIsNull;
    if (size == 0 || size > maxIconSize)
        return BoxRefusal::IconHasWrongSize;
    if (d->pendingIcons.contains(imageId))
        return BoxRefusal::IconIsUnderWay;
    if (d->isListed(imageId))
        return BoxRefusal::IconIsRegistered;
    return std::nullopt;
}

bool ProfileBoxManagerBase::isIconKnown(int iconId) const
{
    const QString imageId = QString::number(iconId);
    return d->pendingIcons.contains(imageId) || d->isListed(imageId);
}

bool ProfileBoxManagerBase::createProfileBoxItem(const QString& text, const boost::optional<int>& iconId,
                                                 const QString& cookie)
{
    if (const auto refusal = refusalOfItem(text, cookie))
        return refuse(*refusal);
    const auto request =
        QSharedPointer<zel::JsonWriter>::create(QStringLiteral("createProfileBoxItem"), QStringLiteral("zel"));
    request->addAttribute(QStringLiteral("text"), text);
    request->addAttribute(QStringLiteral("cookie"), cookie);
    if (iconId)
        request->addAttribute(QStringLiteral("imageId"), QString::number(*iconId));
    d->listApi->send(request);
    return true;
}

bool ProfileBoxManagerBase::createProfileBoxImage(int iconId, Avatar::ImageType type, const char* data, unsigned size)
{
    const QString imageId = QString::number(iconId);
    if (const auto refusal = refusalOfIcon(iconId, data, size))
        return refuse(*refusal, *refusal == BoxRefusal::IconHasWrongSize ? QString::number(size) : imageId);
    const QSharedDataPointer<Avatar> icon(new Avatar(type, QByteArray(data, static_cast<qsizetype>(size))));
    d->pendingIcons.insert(imageId, icon);
    d->announcements.begin(imageId);
    d->sendIcon(imageId);
    return true;
}

void ProfileBoxManagerBase::retrieveProfileBoxImage(int iconId)
{
    d->retrievals.request(QString::number(iconId), retrievalStreamId(iconId));
}

void ProfileBoxManagerBase::removeProfileBoxItem(const QString& itemId)
{
    if (d->itemList)
        d->itemList->requestRemoveId(itemId);
}

void ProfileBoxManagerBase::getProfileBoxItems(QList<ProfileBoxItem>& items) const
{
    items = d->items.records();
}

bool ProfileBoxManagerBase::getProfileBoxItemByItemId(const QString& itemId, ProfileBoxItem* item) const
{
    const ProfileBoxItem* found = d->items.find(itemId);
    if (!found || !item)
        return false;
    *item = *found;
    return true;
}

int ProfileBoxManagerBase::profileBoxItemCount() const
{
    return static_cast<int>(d->items.records().size());
}

void ProfileBoxManagerBase::buildProfileBoxImageList(QList<ProfileBoxImage>& images) const
{
    images = d->images.records();
}

void ProfileBoxManagerBase::handleItemAdded(const QVariantList& indexPath)
{
    const int index = Private::ItemList::indexOfPath(indexPath);
    if (index == -1)
        return;
    const ProfileBoxItem item = d->itemAt(index);
    d->items.insert(index, item);
    d->events.post([this, item] { pushItemAdded(item); });
    d->events.deliver();
}

void ProfileBoxManagerBase::handleItemUpdated(const QVariantList& indexPath)
{
    const int index = Private::ItemList::indexOfPath(indexPath);
    if (index != -1)
        d->items.replace(index, d->itemAt(index));
}

void ProfileBoxManagerBase::handleItemRemoved(const QVariantList& indexPath)
{
    if (const auto item = d->items.take(Private::ItemList::indexOfPath(indexPath))) {
        d->events.post([this, item = *item] { pushItemRemoved(item); });
        d->events.deliver();
    }
}

void ProfileBoxManagerBase::handleItemsChanged()
{
    const auto changes = d->items.replaceAll(d->allItems());
    for (const ProfileBoxItem& item : changes.removed)
        d->events.post([this, item] { pushItemRemoved(item); });
    for (const ProfileBoxItem& item : changes.added)
        d->events.post([this, item] { pushItemAdded(item); });
    d->events.deliver();
}

void ProfileBoxManagerBase::handleImageAdded(const QVariantList& indexPath)
{
    const int index = Private::ImageList::indexOfPath(indexPath);
    if (index == -1)
        return;
    const int listSize = d->imageList->childCount({});
    const qsizetype cacheSize = d->images.records().size();
    if (listSize <= cacheSize) {
        Log<ZELSP_PROFILE_BOX_IMG_ADDED_CALLBACK_FAILURE>({}, listSize, cacheSize, index);
        return;
    }
    const ProfileBoxImage image = d->imageAt(index);
    d->settle(image);
    d->images.insert(index, image);
    d->events.post([this, image] { pushImageAdded(image); });
    d->events.deliver();
}

void ProfileBoxManagerBase::handleImageUpdated(const QVariantList& indexPath)
{
    const int index = Private::ImageList::indexOfPath(indexPath);
    if (index == -1)
        return;
    const ProfileBoxImage image = d->imageAt(index);
    d->settle(image);
    d->images.replace(index, image);
}

void ProfileBoxManagerBase::handleImageRemoved(const QVariantList& indexPath)
{
    if (const auto image = d->images.take(Private::ImageList::indexOfPath(indexPath))) {
        d->events.post([this, image = *image] { pushImageRemoved(image); });
        d->events.deliver();
    }
}

void ProfileBoxManagerBase::handleImagesChanged()
{
    const QList<ProfileBoxImage> images = d->allImages();
    for (const ProfileBoxImage& image : images)
        d->settle(image);
    const auto changes = d->images.replaceAll(images);
    for (const ProfileBoxImage& image : changes.removed)
        d->events.post([this, image] { pushImageRemoved(image); });
    for (const ProfileBoxImage& image : changes.added)
        d->events.post([this, image] { pushImageAdded(image); });
    d->events.deliver();
}

/// The service may have lost what it had been sent. If it has not, the icon will be listed before long.
void ProfileBoxManagerBase::handleImagesSentAnew()
{
    if (!d->images.isComplete())
        return;
    for (auto icon = d->pendingIcons.keyBegin(); icon != d->pendingIcons.keyEnd(); ++icon)
        d->announcements.begin(*icon);
}

void ProfileBoxManagerBase::handleListLoaded()
{
    d->items.setComplete(!d->itemList->isIncomplete());
    d->images.setComplete(!d->imageList->isIncomplete());
    if (d->state == ProfileBoxState::Ready || !d->items.isComplete() || !d->images.isComplete())
        return;
    d->state = ProfileBoxState::Ready;
    d->registrationHandler->profileBoxIsReady();
}

void ProfileBoxManagerBase::requestNewProfileBoxImageCallback(QObject*, iface::JsonReaderAttribute message)
{
    const iface::JsonObjectReader body = message.object();
    QString imageId;
    QString streamId;
    body.readFields("imageId", imageId, "streamId", streamId);
    handleProfileBoxImageRequest(imageId, streamId);
}

void ProfileBoxManagerBase::handleProfileBoxImageRequest(const QString& imageId, const QString& streamId)
{
    Log<ZELSP_PROFILE_BOX_REQ_IMG_CALLBACK>({}, imageId, streamId);
    const auto pending = d->pendingIcons.constFind(imageId);
    if (pending == d->pendingIcons.constEnd()) {
        Log<ZELSP_PROFILE_BOX_REQ_IMG_FAILURE>({}, imageId, streamId);
        return;
    }
    const QByteArray data = (*pending)->getData();
    d->announcements.end(imageId);
    d->jsonStream->send(streamId, data);
}

void ProfileBoxManagerBase::streamDataAvailable(const QString& streamId, const QVariant& data)
{
    if (d->retrievals.waiting(streamId).isEmpty())
        return;
    const QByteArray bytes = data.toByteArray();
    const QSharedDataPointer<Avatar> icon(new Avatar(Avatar::imageTypeOf(bytes), bytes));
    const QString imageId = d->retrievalOf(streamId, icon.constData()->getHash());
    if (imageId.isEmpty())
        return;
    const ProfileBoxImage* listed = d->images.find(imageId);
    if (listed && !d->retrievals.isWhole(streamId, listed->getImageHash(), icon.constData()->getHash()))
        return;
    d->retrievals.cancel(imageId);
    Log<ZELSP_PROFILE_BOX_IMG_DATA_RECEIVED>({}, imageId, streamId, static_cast<unsigned>(bytes.size()));
    const ProfileBoxImage image = ProfileBoxImage::create(imageId, icon.constData()->getHash(), icon);
    d->events.post([this, image] { pushImageRetrieved(image); });
    d->events.deliver();
}

} // namespace zelsplib
