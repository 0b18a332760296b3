// SPDX-License-Identifier: Apache-2.0
#include "PictureFile.h"

#include <vx/platform/zel/UserProfile.h>

#include <QtCore/QFile>
#include <QtCore/QSaveFile>

using namespace Qt::StringLiterals;

using vx::platform::zel::ImageType;

namespace zelctl {

std::optional<Picture> readPicture(const QString& fileName, QString* error)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = u"cannot read %1: %2"_s.arg(fileName, file.errorString());
        return std::nullopt;
    }
    // Not all of it, which may have no end: what is longer is refused by its length.
    const QByteArray data = file.read(vx::platform::zel::UserProfile::maximumPictureSize + 1);
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
    QSaveFile file(fileName);
    file.setDirectWriteFallback(true); // for targets such as /dev/stdout or folders that take no new files
    if (file.open(QIODevice::WriteOnly) && file.write(data) == data.size() && file.commit())
        return true;
    *error = u"cannot write %1: %2"_s.arg(fileName, file.errorString());
    return false;
}

} // namespace zelctl
