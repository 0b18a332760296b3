// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zel/JsonPipe.h>

#include <QtCore/QString>

namespace zelsplib {

/// Asks the core service for a user's picture, the own one included, on the stream that its id names.
void sendAvatarRequest(zel::JsonPipe& pipe, const QString& userId, const QString& streamId);

} // namespace zelsplib
