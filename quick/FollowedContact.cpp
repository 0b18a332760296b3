// SPDX-License-Identifier: Apache-2.0
#include <quick/FollowedContact.h>

#include <quick/PictureStore.h>

#include <vx/platform/zel/ContactService.h>

namespace zelquick {

FollowedContact::FollowedContact(QObject* parent)
    : ContextObject(parent)
{
}

void FollowedContact::setHandle(const QString& handle)
{
    if (handle == m_handle)
        return;
    m_handle = handle;
    Q_EMIT handleChanged();
    Q_EMIT contactChanged();
    Q_EMIT pictureChanged();
}

zel::Contact FollowedContact::contact() const
{
    return m_contacts ? m_contacts->contact(m_handle) : zel::Contact();
}

bool FollowedContact::isPresent() const
{
    return m_contacts && m_contacts->hasApplication(m_handle);
}

QUrl FollowedContact::picture() const
{
    return context() && !m_handle.isEmpty() ? context()->pictures().urlOf(PictureStore::Kind::Contact, m_handle)
                                            : QUrl();
}

void FollowedContact::start(zel::Context* context, QObject* owner)
{
    m_contacts = this->context()->contacts();
    const auto one = [this](const QString& handle) {
        if (handle == m_handle)
            Q_EMIT contactChanged();
    };
    const auto any = [this] { Q_EMIT contactChanged(); };
    connect(m_contacts, &zel::ContactService::contactUpdated, owner, one);
    connect(m_contacts, &zel::ContactService::applicationEnabled, owner, one);
    connect(m_contacts, &zel::ContactService::applicationDisabled, owner, one);
    connect(m_contacts, &zel::ContactService::contactListUpdated, owner, any);
    connect(context, &zel::Context::registrationStateUpdated, owner, any);
    connect(&this->context()->pictures(), &PictureStore::renewed, owner,
            [this](PictureStore::Kind kind, const QString& name) {
                if (kind == PictureStore::Kind::Contact && name == m_handle)
                    Q_EMIT pictureChanged();
            });
    Q_EMIT contactChanged();
}

void FollowedContact::forget()
{
    m_contacts = nullptr;
    Q_EMIT contactChanged();
    Q_EMIT pictureChanged();
}

} // namespace zelquick
