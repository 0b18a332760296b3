// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QString>

namespace vx::platform::zel {

/// The format of a picture or an icon, and what it is called elsewhere. A holder for the enumeration; never
/// instantiated. May be used on any thread.
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

    static Type ofData(const QByteArray& data);
    static Type ofFile(const QString& fileName);
    static QString mimeType(Type type);
    static QString suffix(Type type);
};

/// Writes the name of \a type to \a debug, without the class: "Png".
ZEL_EXPORT QDebug operator<<(QDebug debug, ImageType::Type type);

} // namespace vx::platform::zel
