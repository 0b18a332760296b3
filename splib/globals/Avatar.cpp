// SPDX-License-Identifier: Apache-2.0
#include <splib/globals/Avatar.h>

#include <QtCore/QCryptographicHash>

using namespace Qt::StringLiterals;

namespace zelsplib {

Avatar::Avatar(ImageType type, const QByteArray& data)
    : Avatar(type, data, QString::fromLatin1(QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex()))
{
}

Avatar::Avatar(ImageType type, const QByteArray& data, const QString& hash)
    : m_type(type)
    , m_data(data)
    , m_hash(hash)
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

Avatar::ImageType Avatar::imageTypeOf(const QByteArray& data)
{
    return imageTypeShownBy(data).value_or(Jpeg);
}

QString Avatar::getMimeType() const
{
    switch (m_type) {
    case Jpeg:
        return u"image/jpeg"_s;
    case Png:
        return u"image/png"_s;
    case Gif:
        return u"image/gif"_s;
    case Bmp:
        return u"image/bmp"_s;
    }
    return {};
}

} // namespace zelsplib
