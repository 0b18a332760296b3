// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quick/ContextObject.h>

#include <vx/platform/zel/Utils.h>

namespace zelquick {

/// Looks up eco identifiers and hands invitations and chats to the messaging application, as the public class does: the
/// last two wait until it has taken the request, up to two seconds.
class Utils : public zelquick::ContextObject
{
    Q_OBJECT
    QML_ELEMENT

public:
    explicit Utils(QObject* parent = nullptr);

    Q_INVOKABLE bool requestEcoId(const QString& ppId);
    Q_INVOKABLE bool requestEcoIdStatus(const QString& ecoId);
    Q_INVOKABLE bool sendContactInvitation(const QString& ecoId, const QString& displayName, const QString& message);
    Q_INVOKABLE bool invokeChat(const QString& ecoId);

Q_SIGNALS:
    // As those of the public class.
    void ecoIdUpdated(const QString& ppId, const QString& ecoId);
    void ecoIdStatusUpdated(const QString& ecoId, vx::platform::zel::EcoIdStatus::Type status);

protected:
    void start(zel::Context* context, QObject* owner) override;
    void forget() override { m_utils = nullptr; }

private:
    zel::Utils* m_utils = nullptr;
};

} // namespace zelquick
