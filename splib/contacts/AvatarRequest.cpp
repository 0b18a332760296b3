// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/AvatarRequest.h>

#include <splib/JsonFields.h>
#include <splib/log/Logging.h>

namespace zelsplib {

void sendAvatarRequest(zel::JsonPipe& pipe, const QString& userId, const QString& streamId)
{
    logging::Log<logging::ZELSP_AVATAR_REQUEST_SEND>({}, userId, streamId);
    pipe.send(makeRequest("requestUserAvatar", "userId", userId, "streamId", streamId));
}

} // namespace zelsplib
