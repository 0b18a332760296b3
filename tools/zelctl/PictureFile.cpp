// SPDX-License-Identifier: Apache-2.0
#include "PictureFile.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>

using namespace Qt::StringLiterals;

using vx::platform::zel::ImageType;

namespace zelctl {

namespace {

struct Format
{
    const char* magic;
    int magicSize;
    ImageType::Type type;
    QLatin1String suffixes; // between blanks
};

constexpr Format formats[] = {
    {"\xff\xd8\xff", 3, ImageType::Jpg, " jpg jpeg jpe "_L1},
    {"\x89PNG\r\n\x1a\n", 8, ImageType::Png, " png "_L1},
    {"GIF8", 4, ImageType::Gif, " gif "_L1},
    {"BM", 2, ImageType::Bmp, " bmp dib "_L1},
};

} // namespace

ImageType::Type imageTypeOf(const QByteArray& data, const QString& fileName)
{
    for (const Format& format : formats) {
        if (data.startsWith(QByteArrayView(format.magic, format.magicSize)))
            return format.type;
    }
    const QString suffix = u' ' + QFileInfo(fileName).suffix().toLower() + u' ';
    for (const Format& format : formats) {
        if (suffix.size() > 2 && format.suffixes.contains(suffix))
            return format.type;
    }
    return ImageType::Unsupported;
}

std::optional<Picture> readPicture(const QString& fileName, QString* error)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = u"cannot read %1: %2"_s.arg(fileName, file.errorString());
        return std::nullopt;
    }
    const QByteArray data = file.readAll();
    if (file.error() != QFileDevice::NoError) { // a folder opens and then cannot be read
        *error = u"cannot read %1: %2"_s.arg(fileName, file.errorString());
        return std::nullopt;
    }
    return Picture{imageTypeOf(data, fileName), data};
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
