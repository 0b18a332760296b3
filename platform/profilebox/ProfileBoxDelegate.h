// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <platform/channel/Services.h>
#include <vx/platform/zel/ImageType.h>
#include <vx/platform/zel/ProfileBoxItem.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <boost/optional.hpp>

namespace vx::platform::zel {

/// The profile box for all box objects of the process. Made and owned by the bridge; lives on its thread. A slot of its
/// signals may do anything.
class ProfileBoxDelegate : public QObject
{
    Q_OBJECT

public:
    ProfileBoxDelegate(Services* services, QObject* parent);

    bool addItemRequest(const QString& text, const boost::optional<int>& iconId, const QString& cookie);
    bool removeItemRequest(const QString& itemId);
    bool removeAllItemsRequest();
    ProfileBoxItem item(const QString& itemId) const;
    QList<ProfileBoxItem> items() const;
    int itemCount() const;
    /// The ids of the icons that are registered, in list order.
    QList<int> registeredIcons() const;
    bool iconRegistrationRequest(int iconId, ImageType::Type type, const QByteArray& icon);
    bool iconRetrievalRequest(int iconId) const;

    void notifyReceived();
    void notifyItemAdded(const QString& itemId);
    void notifyItemUpdated(const QString& itemId);
    void notifyItemRemoved(const QString& itemId);
    void notifyIconRegistered(int iconId);
    void notifyIconUpdated(int iconId);
    void notifyIconRemoved(int iconId);
    void notifyIconRetrieved(int iconId, ImageType::Type iconType, const QByteArray& iconData);

Q_SIGNALS:
    /// What the box held all along is there, or some of it.
    void received();
    void itemAdded(QString itemId);
    void itemUpdated(QString itemId);
    void itemRemoved(QString itemId);
    void iconRegistered(int iconId);
    /// These go no further: the public class tells of them by its list of icons alone.
    void iconUpdated(int iconId);
    void iconRemoved(int iconId);
    void iconRetrieved(int iconId, vx::platform::zel::ImageType::Type iconType, QByteArray iconData);

private:
    /// Whether it is known what the box holds.
    bool isLoaded() const;
    void warnOfHiddenBox(const char* where) const;

    Services* const m_services;
};

} // namespace vx::platform::zel
