// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quick/ContextObject.h>

#include <vx/platform/zel/Utils.h>

#include <optional>

namespace zelquick {

/// A person as the messaging application knows them, which chats and invitations go by: looks up the eco identifier and
/// how the user stands with its owner, as soon as both context and ppId are there and whenever access is won back.
class EcoContact : public zelquick::ContextObject
{
    Q_OBJECT
    QML_ELEMENT
    /// Who it is, as "ppId" of a contact.
    Q_PROPERTY(QString ppId READ ppId WRITE setPpId NOTIFY ppIdChanged FINAL)
    /// Empty until the service has told it, when it knows none, and without access.
    Q_PROPERTY(QString ecoId READ ecoId NOTIFY ecoIdChanged FINAL)
    /// How the user stands with the person; Unknown also until the service has told it.
    Q_PROPERTY(vx::platform::zel::EcoIdStatus::Type status READ status NOTIFY statusChanged FINAL)
    /// Whether the service has said that the person is neither a contact nor invited, and nothing was done about it
    /// since.
    Q_PROPERTY(bool invitable READ isInvitable NOTIFY statusChanged FINAL)

public:
    explicit EcoContact(QObject* parent = nullptr);

    QString ppId() const { return m_ppId; }
    void setPpId(const QString& ppId);
    QString ecoId() const { return m_ecoId; }
    zel::EcoIdStatus::Type status() const { return m_status.value_or(zel::EcoIdStatus::Unknown); }
    bool isInvitable() const { return !m_isInvited && m_status == zel::EcoIdStatus::Unknown; }

    /// Hands an invitation over, as sendContactInvitation() of Utils does. What the user makes of it there is not told:
    /// the person is not invitable until the next lookUp(). False without an ecoId.
    Q_INVOKABLE bool invite(const QString& displayName, const QString& message);
    /// Opens a chat, as invokeChat() of Utils does. False without an ecoId.
    Q_INVOKABLE bool chat();
    /// Forgets what was told and asks anew, if context and ppId are there: as when the user comes back to a page.
    Q_INVOKABLE void lookUp();

Q_SIGNALS:
    void ppIdChanged();
    void ecoIdChanged();
    void statusChanged();

protected:
    void start(zel::Context* context, QObject* owner) override;
    void forget() override;

private:
    QString m_ppId;
    QString m_ecoId;
    std::optional<zel::EcoIdStatus::Type> m_status; // once it was told
    bool m_isInvited = false;                       // since it was asked for
    zel::Utils* m_utils = nullptr;
};

} // namespace zelquick
