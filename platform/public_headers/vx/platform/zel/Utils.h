// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/EcoIdStatus.h>
#include <iface/Export.h>

#include <QtCore/QObject>
#include <QtCore/QString>

#include <memory>

namespace vx::platform::zel {

class Context;
class UtilsPrivate;

/// Looks up eco identifiers and hands invitations and chats to the messaging application.
///
/// Works while the context gives access, whenever it was made; without access every request answers false and nothing
/// is sent. The context is held guarded and may go first. Answers name what was asked for and nothing more: each Utils
/// hears the answers to the requests of all.
///
/// sendContactInvitation() and invokeChat() wait until the other application has taken the request or has not for two
/// seconds; the event loop stands still meanwhile.
///
/// Thread: that of the context. In a slot anything may be done, including destroying this object.
class ZEL_EXPORT Utils : public QObject
{
    Q_OBJECT

public:
    /// Looks up what \a context gives access to; \a parent may own this object.
    explicit Utils(Context* context, QObject* parent = nullptr);
    ~Utils() override;

    bool requestEcoId(const QString& ppId);
    /// False for an empty \a ecoId; the others take any text.
    bool requestEcoIdStatus(const QString& ecoId);
    bool sendContactInvitation(const QString& ecoId, const QString& displayName, const QString& message);
    bool invokeChat(const QString& ecoId);

Q_SIGNALS:
    /// The answer to requestEcoId(): \a ecoId belongs to \a ppId. An empty one: the service knows none.
    void ecoIdUpdated(const QString& ppId, const QString& ecoId);
    /// The answer to requestEcoIdStatus(): \a status is how the user stands with the owner of \a ecoId.
    void ecoIdStatusUpdated(const QString& ecoId, vx::platform::zel::EcoIdStatus::Type status);

private:
    friend class UtilsPrivate;
    std::unique_ptr<UtilsPrivate> const d;
};

} // namespace vx::platform::zel
