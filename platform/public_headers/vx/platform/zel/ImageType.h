// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore/QObject>

namespace vx::platform::zel {

/// The format of a picture or an icon. A holder for the enumeration; never instantiated.
class ZEL_EXPORT ImageType
{
    Q_GADGET

public:
    /// The formats.
    enum Type : int {
        Unsupported = 0, ///< Not known. A picture that is set with this type travels as a JPEG.
        Jpg = 1,         ///< "image/jpeg"
        Png = 2,         ///< "image/png"
        Gif = 3,         ///< "image/gif"
        Bmp = 4,         ///< "image/bmp"
    };
    Q_ENUM(Type)

    ImageType() = delete;
};

} // namespace vx::platform::zel
