// SPDX-License-Identifier: Apache-2.0
#include <platform/messaging/InvocationManager.h>

#include <vx/system/InvokeManager.h>
#include <vx/system/InvokeRequest.h>
#include <zel/JsonWriter.h>

using namespace Qt::StringLiterals;

namespace vx::platform::zel {

static bool invoke(const QString& target, const QString& action, ::zel::JsonWriter& message)
{
    vx::system::InvokeRequest request;
    request.setTarget(target);
    request.setAction(action);
    request.setMimeType(u"application/vnd.socialplatform.data"_s);
    request.setData(message.toString().toUtf8());
    return vx::system::InvokeManager().invoke(request);
}

bool InvocationManager::sendContactInvitation(const QString& ecoId, const QString& displayName,
                                              const QString& message) const
{
    ::zel::JsonWriter writer(u"contactInvitation"_s, u"zel"_s);
    writer.addAttribute(u"ecoid"_s, ecoId);
    writer.addAttribute(u"display_name"_s, displayName);
    writer.addAttribute(u"invite_msg"_s, message);
    return invoke(u"sys.socialplatform"_s, u"vx.action.INVITEZEL"_s, writer);
}

bool InvocationManager::invokeChat(const QString& ecoId) const
{
    ::zel::JsonWriter writer(u"contactChat"_s, u"zel"_s);
    writer.addAttribute(u"ecoid"_s, ecoId);
    return invoke(u"sys.zel.chathandler"_s, u"vx.action.ZELCHAT"_s, writer);
}

} // namespace vx::platform::zel
