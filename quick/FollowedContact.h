// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quick/ContextObject.h>

#include <vx/platform/zel/Contact.h>

#include <QtCore/QUrl>

namespace vx::platform::zel {
class ContactService;
}

namespace zelquick {

/// One contact, as he or she is now: for a page about somebody. Any number may follow contacts at little cost.
class FollowedContact : public zelquick::ContextObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString handle READ handle WRITE setHandle NOTIFY handleChanged FINAL)
    /// A null one when there is none of this handle, and without access.
    Q_PROPERTY(vx::platform::zel::Contact contact READ contact NOTIFY contactChanged FINAL)
    /// Whether the contact has the application. One who has removed it, or goes by another handle, may be known still.
    Q_PROPERTY(bool present READ isPresent NOTIFY contactChanged FINAL)
    /// The display picture, for an Image.
    Q_PROPERTY(QUrl picture READ picture NOTIFY pictureChanged FINAL)

public:
    explicit FollowedContact(QObject* parent = nullptr);

    QString handle() const { return m_handle; }
    void setHandle(const QString& handle);
    zel::Contact contact() const;
    bool isPresent() const;
    QUrl picture() const;

Q_SIGNALS:
    void handleChanged();
    void contactChanged();
    void pictureChanged();

protected:
    void start(zel::Context* context, QObject* owner) override;
    void forget() override;

private:
    QString m_handle;
    zel::ContactService* m_contacts = nullptr; // the context's
};

} // namespace zelquick
