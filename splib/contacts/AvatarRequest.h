// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/JsonFields.h>
#include <splib/log/Logging.h>

#include <zel/JsonPipe.h>

namespace zelsplib {

/// Asks the core service for a user's picture, the own one included, on the stream that its id names.
inline void sendAvatarRequest(zel::JsonPipe& pipe, const QString& userId, const QString& streamId)
{
    logging::Log<logging::ZELSP_AVATAR_REQUEST_SEND>({}, userId, streamId);
    pipe.send(makeRequest("requestUserAvatar", "userId", userId, "streamId", streamId));
}

} // namespace zelsplib
