// SPDX-License-Identifier: Apache-2.0
#include <splib/globals/Avatar.h>

#include <QtCore/QCryptographicHash>

using namespace Qt::StringLiterals;

namespace zelsplib {

Avatar::Avatar(ImageType type, const QByteArray& data)
    : Avatar(type, data, QString::fromLatin1(QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex()))
{
}

std::optional<Avatar::ImageType> Avatar::imageTypeShownBy(const QByteArray& data)
{
    if (data.startsWith("\xff\xd8\xff"))
        return Jpeg;
    if (data.startsWith("\x89PNG\r\n\x1a\n"))
        return Png;
    if (data.startsWith("GIF87a") || data.startsWith("GIF89a"))
        return Gif;
    if (data.startsWith("BM"))
        return Bmp;
    return std::nullopt;
}

QStringList Avatar::mimeTypes()
{
    return {u"image/jpeg"_s, u"image/png"_s, u"image/gif"_s, u"image/bmp"_s};
}

} // namespace zelsplib
