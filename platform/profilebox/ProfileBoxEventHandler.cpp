// SPDX-License-Identifier: Apache-2.0
#include <platform/profilebox/ProfileBoxEventHandler.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/channel/Trace.h>
#include <platform/context/HelperUtils.h>
#include <platform/profilebox/ProfileBoxDelegate.h>

namespace vx::platform::zel {

ProfileBoxDelegate* ProfileBoxEventHandler::delegate() const
{
    return m_bridge ? m_bridge->profileBox() : nullptr;
}

void ProfileBoxEventHandler::pushAddProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const
{
    qCDebug(lcPlatform) << "ProfileBoxEventHandler::pushAddProfileBoxItemEvent";
    if (auto* box = delegate())
        box->notifyItemAdded(item.getItemId());
}

void ProfileBoxEventHandler::pushRemoveProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const
{
    qCDebug(lcPlatform) << "ProfileBoxEventHandler::pushRemoveProfileBoxItemEvent";
    if (auto* box = delegate())
        box->notifyItemRemoved(item.getItemId());
}

void ProfileBoxEventHandler::pushAddProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const
{
    qCDebug(lcPlatform) << "ProfileBoxEventHandler::pushAddProfileBoxImageEvent";
    if (auto* box = delegate())
        box->notifyIconRegistered(image.getImageId().toInt());
}

void ProfileBoxEventHandler::pushRemoveProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const
{
    qCDebug(lcPlatform) << "ProfileBoxEventHandler::pushRemoveProfileBoxImageEvent";
    if (auto* box = delegate())
        box->notifyIconRemoved(image.getImageId().toInt());
}

void ProfileBoxEventHandler::pushRetrievedProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const
{
    qCDebug(lcPlatform) << "ProfileBoxEventHandler::pushRetrievedProfileBoxImageEvent";
    auto* box = delegate();
    if (!box)
        return;
    const auto icon = image.getImage();
    box->notifyIconRetrieved(image.getImageId().toInt(), HelperUtils::pictureTypeForAvatar(icon->getImageType()),
                             icon->getData());
}

} // namespace vx::platform::zel
