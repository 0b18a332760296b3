// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>

#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <memory>

/// The part of an application that is tested here: it registers, and shows who else runs the application.
class ContactBrowser : public QObject
{
    Q_OBJECT

public:
    ContactBrowser()
        : m_context(QUuid(0x6f8d2c4e, 0x5b0a, 0x4a37, 0x9d, 0x0e, 0x0c, 0x8f, 0x3f, 0x1f, 0x2a, 0x10))
    {
        namespace zel = vx::platform::zel;
        connect(&m_context, &zel::Context::registrationStateUpdated, this, [this](zel::RegistrationState::Type state) {
            if (state == zel::RegistrationState::Unregistered)
                m_context.requestRegisterApplication();
        });
        whenReady(&m_context, this, [this] { m_contacts = std::make_unique<zel::ContactService>(&m_context); });
    }

    QStringList names() const
    {
        QStringList names;
        if (m_contacts) {
            const auto contacts = m_contacts->contacts();
            for (const auto& contact : contacts) {
                if (m_contacts->hasApplication(contact.handle())) // who left stays until the list is read anew
                    names.append(contact.displayName());
            }
        }
        names.sort();
        return names;
    }

private:
    vx::platform::zel::Context m_context;
    std::unique_ptr<vx::platform::zel::ContactService> m_contacts;
};
