// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/EventQueue.h>
#include <splib/globals/Avatar.h>
#include <splib/profilebox/BoxIcons.h>
#include <splib/profilebox/BoxList.h>
#include <splib/profilebox/BoxRefusal.h>
#include <splib/profilebox/ProfileBoxImage.h>
#include <splib/profilebox/ProfileBoxItem.h>

#include <zel/JsonStream.h>
#include <zel/ListApiMultiplexer.h>

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <boost/optional.hpp>

#include <optional>

namespace zelsplib {

class RegistrationHandler;

/// Whether the box's contents are known.
enum class ProfileBoxState {
    Loading, ///< at least one of the two lists has not been received whole yet
    Ready,
};

/// What ProfileBoxManager does whatever its event handler is: mirrors the box's items and icons, checks and sends
/// requests, and carries the icons' data.
///
/// Used on the thread of the event loop. What the box holds when it is first received raises no events. A handler
/// may make requests and spin an event loop.
class ProfileBoxManagerBase : public QObject
{
    Q_OBJECT

public:
    ProfileBoxManagerBase(const QSharedPointer<zel::ListApiMultiplexer>& listApi,
                          const QSharedPointer<zel::JsonStream>& jsonStream, RegistrationHandler* registrationHandler);

    /// Starts to mirror the box. Called once, by the facade.
    void init();
    ProfileBoxState profileBoxState() const { return m_state; }

    /// Each false, with a line in the log, when the request cannot be one. What is created shows in the lists later.
    bool createProfileBoxItem(const QString& text, const boost::optional<int>& iconId, const QString& cookie);
    bool createProfileBoxImage(int iconId, Avatar::ImageType type, const char* data, unsigned size);
    /// The first reason for which an icon would be refused now; see refusalOfItem() for items.
    std::optional<BoxRefusal> refusalOfIcon(int iconId, const char* data, unsigned size) const
    {
        return m_icons.refusalOf(iconId, data, size);
    }
    /// Whether an icon is registered or on its way to the service. Before both lists have come nobody knows.
    bool isIconKnown(int iconId) const { return m_icons.isKnown(QString::number(iconId)); }
    /// Asks for an icon's data, and again until it comes as an event. Of icons that share a stream, the data is that
    /// one's whose listed hash it has, else that of the one that has waited longest.
    void retrieveProfileBoxImage(int iconId) { m_icons.retrieve(iconId); }
    /// Asks for an item's removal; nothing is sent before init().
    void removeProfileBoxItem(const QString& itemId) { m_items.requestRemoval(itemId); }

    /// Replaces what `items` holds by the box's items, in list order.
    void getProfileBoxItems(QList<ProfileBoxItem>& items) const { items = m_items.records(); }
    /// False, and `item` as it was, when there is no such item.
    bool getProfileBoxItemByItemId(const QString& itemId, ProfileBoxItem* item) const;
    int profileBoxItemCount() const { return int(m_items.records().size()); }
    /// Replaces what `images` holds by the box's icons, in list order, each with its data when that is known.
    void buildProfileBoxImageList(QList<ProfileBoxImage>& images) const { images = m_icons.records(); }

private:
    /// What the box held all along is there, or some of it; there are no events of the items and icons themselves.
    virtual void pushFirstReceived() = 0;
    virtual void pushItemAdded(const ProfileBoxItem& item) = 0;
    virtual void pushItemUpdated(const ProfileBoxItem& item) = 0;
    virtual void pushItemRemoved(const ProfileBoxItem& item) = 0;
    virtual void pushImageAdded(const ProfileBoxImage& image) = 0;
    virtual void pushImageUpdated(const ProfileBoxImage& image) = 0;
    virtual void pushImageRemoved(const ProfileBoxImage& image) = 0;
    virtual void pushImageRetrieved(const ProfileBoxImage& image) = 0;

    void handleListChanged();

    const QSharedPointer<zel::ListApiMultiplexer> m_listApi;
    RegistrationHandler* const m_registrationHandler;
    ProfileBoxState m_state = ProfileBoxState::Loading;
    EventQueue m_events;
    BoxList<ProfileBoxItem, &ProfileBoxItem::getItemId> m_items;
    BoxIcons m_icons;
};

} // namespace zelsplib
