// SPDX-License-Identifier: Apache-2.0
#include <platform/messaging/InvocationManager.h>

#include <vx/system/InvokeManager.h>
#include <vx/system/InvokeRequest.h>
#include <zel/JsonWriter.h>

namespace vx::platform::zel {

static bool invoke(const QString& target, const QString& action, ::zel::JsonWriter& message)
{
    vx::system::InvokeRequest request;
    request.setTarget(target);
    request.setAction(action);
    request.setMimeType(QStringLiteral("application/vnd.socialplatform.data"));
    request.setData(message.toString().toUtf8());
    return vx::system::InvokeManager().invoke(request);
}

bool InvocationManager::sendContactInvitation(const QString& ecoId, const QString& displayName,
                                              const QString& message) const
{
    ::zel::JsonWriter writer(QStringLiteral("contactInvitation"), QStringLiteral("zel"));
    writer.addAttribute(QStringLiteral("ecoid"), ecoId);
    writer.addAttribute(QStringLiteral("display_name"), displayName);
    writer.addAttribute(QStringLiteral("invite_msg"), message);
    return invoke(QStringLiteral("sys.socialplatform"), QStringLiteral("vx.action.INVITEZEL"), writer);
}

bool InvocationManager::invokeChat(const QString& ecoId) const
{
    ::zel::JsonWriter writer(QStringLiteral("contactChat"), QStringLiteral("zel"));
    writer.addAttribute(QStringLiteral("ecoid"), ecoId);
    return invoke(QStringLiteral("sys.zel.chathandler"), QStringLiteral("vx.action.ZELCHAT"), writer);
}

} // namespace vx::platform::zel
