// SPDX-License-Identifier: Apache-2.0
#include <splib/profilebox/ProfileBoxManagerBase.h>

#include <splib/JsonFields.h>
#include <splib/RegistrationHandler.h>
#include <splib/profilebox/ProfileBoxJsonAdapters.h>

using namespace Qt::StringLiterals;

namespace zelsplib {

ProfileBoxManagerBase::ProfileBoxManagerBase(const QSharedPointer<zel::ListApiMultiplexer>& listApi,
                                             const QSharedPointer<zel::JsonStream>& jsonStream,
                                             RegistrationHandler* registrationHandler)
    : m_listApi(listApi)
    , m_registrationHandler(registrationHandler)
    , m_items(
          m_events, [this](const ProfileBoxItem& item) { pushItemAdded(item); },
          [this](const ProfileBoxItem& item) { pushItemUpdated(item); },
          [this](const ProfileBoxItem& item) { pushItemRemoved(item); })
    , m_icons(
          jsonStream, m_events, [this](const ProfileBoxImage& image) { pushImageAdded(image); },
          [this](const ProfileBoxImage& image) { pushImageUpdated(image); },
          [this](const ProfileBoxImage& image) { pushImageRemoved(image); },
          [this](const ProfileBoxImage& image) { pushImageRetrieved(image); })
{
}

void ProfileBoxManagerBase::init()
{
    const auto changed = [this] { handleListChanged(); };
    m_icons.start(this, m_listApi, changed);
    m_items.start(m_listApi, QSharedPointer<ProfileBoxItemJsonAdapter>::create(), u"profileBoxItem"_s, changed);
}

void ProfileBoxManagerBase::handleListChanged()
{
    m_items.noteCompleteness();
    m_icons.noteCompleteness();
    if (m_state == ProfileBoxState::Ready)
        return;
    m_events.post([this] { pushFirstReceived(); });
    if (m_items.isComplete() && m_icons.isComplete()) {
        m_state = ProfileBoxState::Ready;
        m_registrationHandler->profileBoxIsReady();
    }
    m_events.deliver();
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
    m_listApi->send(request);
    return true;
}

bool ProfileBoxManagerBase::createProfileBoxImage(int iconId, Avatar::ImageType type, const char* data, unsigned size)
{
    if (const auto refusal = refusalOfIcon(iconId, data, size)) {
        logRefusal(*refusal,
                   *refusal == BoxRefusal::IconHasWrongSize ? QString::number(size) : QString::number(iconId));
        return false;
    }
    m_icons.create(iconId, type, QByteArray(data, static_cast<qsizetype>(size)));
    return true;
}

bool ProfileBoxManagerBase::getProfileBoxItemByItemId(const QString& itemId, ProfileBoxItem* item) const
{
    const ProfileBoxItem* found = m_items.find(itemId);
    if (!found || !item)
        return false;
    *item = *found;
    return true;
}

} // namespace zelsplib
