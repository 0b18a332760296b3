// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/AvatarRequest.h>

#include <splib/log/Logging.h>

#include <zel/JsonWriter.h>

#include <QtCore/QSharedPointer>

using namespace Qt::StringLiterals;

namespace zelsplib {

void sendAvatarRequest(zel::JsonPipe& pipe, const QString& userId, const QString& streamId)
{
    logging::Log<logging::ZELSP_AVATAR_REQUEST_SEND>({}, userId, streamId);
    const auto request = QSharedPointer<zel::JsonWriter>::create(u"requestUserAvatar"_s, u"zel"_s);
    request->addAttribute(u"userId"_s, userId);
    request->addAttribute(u"streamId"_s, streamId);
    pipe.send(request);
}

} // namespace zelsplib
