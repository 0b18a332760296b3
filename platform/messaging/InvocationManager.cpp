// SPDX-License-Identifier: Apache-2.0
#include <platform/messaging/InvocationManager.h>

#include <splib/JsonFields.h>
#include <vx/system/InvokeManager.h>
#include <vx/system/InvokeRequest.h>

using namespace Qt::StringLiterals;

namespace vx::platform::zel {

static bool invoke(const QString& target, const QString& action, const QSharedPointer<::zel::JsonWriter>& message)
{
    vx::system::InvokeRequest request;
    request.setTarget(target);
    request.setAction(action);
    request.setMimeType(u"application/vnd.socialplatform.data"_s);
    request.setData(message->toString().toUtf8());
    return vx::system::InvokeManager().invoke(request);
}

bool InvocationManager::sendContactInvitation(const QString& ecoId, const QString& displayName,
                                              const QString& message) const
{
    return invoke(
        u"sys.socialplatform"_s, u"vx.action.INVITEZEL"_s,
        zelsplib::makeRequest("contactInvitation", "ecoid", ecoId, "display_name", displayName, "invite_msg", message));
}

bool InvocationManager::invokeChat(const QString& ecoId) const
{
    return invoke(u"sys.zel.chathandler"_s, u"vx.action.ZELCHAT"_s,
                  zelsplib::makeRequest("contactChat", "ecoid", ecoId));
}

} // namespace vx::platform::zel
