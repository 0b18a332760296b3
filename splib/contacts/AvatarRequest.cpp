// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/AvatarRequest.h>

#include <splib/log/Logging.h>

#include <zel/JsonWriter.h>

#include <QSharedPointer>

namespace zelsplib {

void sendAvatarRequest(zel::JsonPipe& pipe, const QString& userId, const QString& streamId)
{
    logging::Log<logging::ZELSP_AVATAR_REQUEST_SEND>({}, userId, streamId);
    const auto request =
        QSharedPointer<zel::JsonWriter>::create(QStringLiteral("requestUserAvatar"), QStringLiteral("zel"));
    request->addAttribute(QStringLiteral("userId"), userId);
    request->addAttribute(QStringLiteral("streamId"), streamId);
    pipe.send(request);
}

} // namespace zelsplib
