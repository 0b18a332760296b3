// SPDX-License-Identifier: Apache-2.0
#include "PictureFile.h"

#include <vx/platform/zel/UserProfile.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>

using namespace Qt::StringLiterals;

using vx::platform::zel::ImageType;

namespace zelctl {

std::optional<Picture> readPicture(const QString& fileName, QString* error)
{
    QFile file(fileName);
    // Not all of it, which may have no end: what is longer is refused by its length.
    const qint64 most = vx::platform::zel::UserProfile::maximumPictureSize + 1;
    const QByteArray data = file.open(QIODevice::ReadOnly) ? file.read(most) : QByteArray();
    if (file.error() != QFileDevice::NoError) { // a folder opens and then cannot be read
        *error = u"cannot read %1: %2"_s.arg(fileName, file.errorString());
        return std::nullopt;
    }
    const ImageType::Type type = ImageType::ofFile(fileName);
    if (type == ImageType::Unsupported) {
        *error = u"%1 is no picture: neither its first bytes nor its suffix are those of JPEG, PNG, GIF or BMP"_s.arg(
            fileName);
        return std::nullopt;
    }
    return Picture{type, data};
}

bool writePicture(const QString& fileName, const QByteArray& data, QString* error)
{
    // What is no file of its own is written where it is, such as /dev/stdout; a file keeps what it has until all is
    // there, if its folder takes new ones.
    const QFileInfo target(fileName);
    const bool inPlace = target.isSymLink() || (target.exists() && !target.isFile());
    QFile open(fileName);
    QSaveFile whole(fileName);
    whole.setDirectWriteFallback(true);
    QFileDevice& file = inPlace ? static_cast<QFileDevice&>(open) : whole;
    if (file.open(QIODevice::WriteOnly) && file.write(data) == data.size() && (inPlace ? open.flush() : whole.commit()))
        return true;
    *error = u"cannot write %1: %2"_s.arg(fileName, file.errorString());
    return false;
}

} // namespace zelctl
