// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/channel/Retries.h>
#include <splib/channel/StreamRequests.h>
#include <splib/globals/Avatar.h>
#include <splib/profilebox/BoxList.h>
#include <splib/profilebox/BoxRefusal.h>
#include <splib/profilebox/ProfileBoxImage.h>

#include <zel/JsonStream.h>
#include <zel/JsonStreamFunctorAdapter.h>

#include <QtCore/QHash>
#include <QtCore/QSharedDataPointer>
#include <QtCore/QSharedPointer>

#include <memory>
#include <optional>

namespace zelsplib {

/// The icons of the box: those that are listed, those on their way to the service, and the data that was asked for.
///
/// A member of the manager, which owns what listens to the pipe.
class BoxIcons : public BoxList<ProfileBoxImage, &ProfileBoxImage::getImageId>
{
public:
    BoxIcons(const QSharedPointer<zel::JsonStream>& stream, EventQueue& events, Event added, Event updated,
             Event removed, Event retrieved);

    /// Starts to mirror the list and to answer the service. See BoxList::start().
    void start(QObject* owner, const QSharedPointer<zel::ListApiMultiplexer>& multiplexer,
               const std::function<void()>& changed);

    /// Announces an icon, and again until the service has asked for its bytes or listed it.
    void create(int iconId, Avatar::ImageType type, const QByteArray& data);
    std::optional<BoxRefusal> refusalOf(int iconId, const char* data, unsigned size) const;
    /// Whether an icon is listed or on its way.
    bool isKnown(const QString& imageId) const { return m_pending.contains(imageId) || isListed(imageId); }

    /// Asks for an icon's data, and again until it comes as an event.
    void retrieve(int iconId);

private:
    ProfileBoxImage completed(const ProfileBoxImage& listed) const override;
    void settle(const ProfileBoxImage& image) override;
    bool mayAdd(int index) const override;

    void send(const QString& imageId) const;
    void sendRetrieval(const QString& imageId, const QString& streamId) const;
    void sendBytes(const QString& imageId, const QString& streamId);
    void listIsSentAnew();
    void handleData(const QString& streamId, const QByteArray& bytes);
    QString retrievalOf(const QString& streamId, const QString& hash) const;

    const QSharedPointer<zel::JsonStream> m_stream;
    EventQueue& m_events;
    const Event m_retrieved;
    QHash<QString, QSharedDataPointer<Avatar>> m_pending; ///< announced but not listed yet, by icon id
    Retries m_announcements;     ///< of the pending icons whose bytes the service has not asked for yet
    StreamRequests m_retrievals; ///< of the data of icons, by icon id
    std::unique_ptr<zel::JsonStreamFunctorAdapter> m_data;
};

} // namespace zelsplib
