// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QSharedData>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

namespace zelsplib {

/// A picture and the hash that names it. Shared data; never changed once it is built.
class Avatar : public QSharedData
{
public:
    /// The numbers are those of the services core; the public enumeration begins with one for none of these.
    enum ImageType : int {
        Jpeg = 0,
        Png = 1,
        Gif = 2,
        Bmp = 3,
    };

    Avatar() = default;
    /// The hash is the SHA-1 of the data in lower-case hexadecimal.
    Avatar(ImageType type, const QByteArray& data);
    Avatar(ImageType type, const QByteArray& data, const QString& hash)
        : m_type(type)
        , m_data(data)
        , m_hash(hash)
    {
    }

    /// The type that the first bytes of a picture show, if any.
    static std::optional<ImageType> imageTypeShownBy(const QByteArray& data);

    /// By type.
    static QStringList mimeTypes();

    ImageType getImageType() const { return m_type; }
    QByteArray getData() const { return m_data; }
    QString getHash() const { return m_hash; }
    QString getMimeType() const { return mimeTypes().value(m_type); }

    friend bool operator==(const Avatar& a, const Avatar& b)
    {
        return a.m_type == b.m_type && a.m_hash == b.m_hash && a.m_data == b.m_data;
    }

private:
    ImageType m_type = Jpeg;
    QByteArray m_data;
    QString m_hash;
};

} // namespace zelsplib
