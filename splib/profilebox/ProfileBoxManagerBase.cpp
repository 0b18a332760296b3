// SPDX-License-Identifier: Apache-2.0
#include <splib/profilebox/ProfileBoxManagerBase.h>

#include <splib/EventQueue.h>
#include <splib/JsonFields.h>
#include <splib/RegistrationHandler.h>
#include <splib/profilebox/BoxIcons.h>
#include <splib/profilebox/BoxList.h>
#include <splib/profilebox/ProfileBoxJsonAdapters.h>

using namespace Qt::StringLiterals;

namespace zelsplib {

struct ProfileBoxManagerBase::Private
{
    Private(ProfileBoxManagerBase* manager, const QSharedPointer<zel::ListApiMultiplexer>& multiplexer,
            const QSharedPointer<zel::JsonStream>& stream, RegistrationHandler* handler)
        : listApi(multiplexer)
        , registrationHandler(handler)
        , items(
              events, [manager](const ProfileBoxItem& item) { manager->pushItemAdded(item); },
              [manager](const ProfileBoxItem& item) { manager->pushItemUpdated(item); },
              [manager](const ProfileBoxItem& item) { manager->pushItemRemoved(item); })
        , icons(stream, events,
                {[manager](const ProfileBoxImage& image) { manager->pushImageAdded(image); },
                 [manager](const ProfileBoxImage& image) { manager->pushImageRemoved(image); },
                 [manager](const ProfileBoxImage& image) { manager->pushImageRetrieved(image); }})
    {
    }

    const QSharedPointer<zel::ListApiMultiplexer> listApi;
    RegistrationHandler* const registrationHandler;
    ProfileBoxState state = ProfileBoxState::Loading;
    EventQueue events;
    BoxList<ProfileBoxItem, &ProfileBoxItem::getItemId> items;
    BoxIcons icons;
};

ProfileBoxManagerBase::ProfileBoxManagerBase(const QSharedPointer<zel::ListApiMultiplexer>& listApi,
                                             const QSharedPointer<zel::JsonStream>& jsonStream,
                                             RegistrationHandler* registrationHandler)
    : d(new Private(this, listApi, jsonStream, registrationHandler))
{
}

ProfileBoxManagerBase::~ProfileBoxManagerBase() = default;

void ProfileBoxManagerBase::init()
{
    const auto changed = [this] { handleListChanged(); };
    d->icons.start(this, d->listApi, changed);
    d->items.start(d->listApi, QSharedPointer<ProfileBoxItemJsonAdapter>::create(), u"profileBoxItem"_s, changed);
}

void ProfileBoxManagerBase::handleListChanged()
{
    d->items.noteCompleteness();
    d->icons.noteCompleteness();
    if (d->state == ProfileBoxState::Ready)
        return;
    d->events.post([this] { pushFirstReceived(); });
    if (d->items.isComplete() && d->icons.isComplete()) {
        d->state = ProfileBoxState::Ready;
        d->registrationHandler->profileBoxIsReady();
    }
    d->events.deliver();
}

ProfileBoxState ProfileBoxManagerBase::profileBoxState() const
{
    return d->state;
}

std::optional<BoxRefusal> ProfileBoxManagerBase::refusalOfIcon(int iconId, const char* data, unsigned size) const
{
    return d->icons.refusalOf(iconId, data, size);
}

bool ProfileBoxManagerBase::isIconKnown(int iconId) const
{
    return d->icons.isKnown(QString::number(iconId));
}

bool ProfileBoxManagerBase::createProfileBoxItem(const QString& text, const boost::optional<int>& iconId,
                                                 const QString& cookie)
{
    if (const auto refusal = refusalOfItem(text, cookie)) {
        logRefusal(*refusal);
        return false;
    }
    const auto request = makeRequest("createProfileBoxItem", "text", text, "cookie", cookie);
    if (iconId)
        writeFields(*request, "imageId", QString::number(*iconId));
    d->listApi->send(request);
    return true;
}

bool ProfileBoxManagerBase::createProfileBoxImage(int iconId, Avatar::ImageType type, const char* data, unsigned size)
{
    if (const auto refusal = refusalOfIcon(iconId, data, size)) {
        logRefusal(*refusal,
                   *refusal == BoxRefusal::IconHasWrongSize ? QString::number(size) : QString::number(iconId));
        return false;
    }
    d->icons.create(iconId, type, QByteArray(data, static_cast<qsizetype>(size)));
    return true;
}

void ProfileBoxManagerBase::retrieveProfileBoxImage(int iconId)
{
    d->icons.retrieve(iconId);
}

void ProfileBoxManagerBase::removeProfileBoxItem(const QString& itemId)
{
    d->items.requestRemoval(itemId);
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
    images = d->icons.records();
}

} // namespace zelsplib
