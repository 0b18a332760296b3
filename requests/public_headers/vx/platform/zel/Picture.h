// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/ImageType.h>

#include <QtCore/QByteArray>

namespace vx::platform::zel {

/// A contact's picture or an icon of the profile box, as it answers a request. A plain value.
struct Picture
{
    ImageType::Type type = ImageType::Unsupported; ///< Of an icon, the one that its first bytes show.
    QByteArray data;                               ///< Empty: a contact without a picture.

    /// Whether both are the same.
    bool operator==(const Picture&) const = default;
};

} // namespace vx::platform::zel
