// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/ImageType.h>

#include <platform/context/HelperUtils.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QStringList>

using namespace Qt::StringLiterals;

namespace vx::platform::zel {

namespace {

/// The one that files are given first.
QStringList suffixesOf(ImageType::Type type)
{
    switch (type) {
    case ImageType::Jpg:
        return {u"jpg"_s, u"jpeg"_s, u"jpe"_s};
    case ImageType::Png:
        return {u"png"_s};
    case ImageType::Gif:
        return {u"gif"_s};
    case ImageType::Bmp:
        return {u"bmp"_s, u"dib"_s};
    case ImageType::Unsupported:
        break;
    }
    return {};
}

} // namespace

/// The format that the first bytes of \a data show; Unsupported when they show none of these.
ImageType::Type ImageType::ofData(const QByteArray& data)
{
    const auto type = zelsplib::Avatar::imageTypeShownBy(data);
    return type ? HelperUtils::pictureTypeForAvatar(*type) : Unsupported;
}

/// The format of the file that is called \a fileName, by what its first bytes show, else what its suffix says, in
/// capitals or not; else Unsupported. Of a file that cannot be read the suffix.
ImageType::Type ImageType::ofFile(const QString& fileName)
{
    QFile file(fileName);
    constexpr qsizetype enough = 16;
    const Type shown = file.open(QIODevice::ReadOnly) ? ofData(file.read(enough)) : Unsupported;
    if (shown != Unsupported)
        return shown;
    const QString said = QFileInfo(fileName).suffix().toLower();
    for (const Type type : {Jpg, Png, Gif, Bmp}) {
        if (suffixesOf(type).contains(said))
            return type;
    }
    return Unsupported;
}

/// What \a type is called on the network, such as "image/png"; empty for Unsupported.
QString ImageType::mimeType(Type type)
{
    return type == Unsupported ? QString() : HelperUtils::imageTypeToString(type);
}

/// What the name of a file of this \a type ends with, such as "png", without a dot; empty for Unsupported.
QString ImageType::suffix(Type type)
{
    return suffixesOf(type).value(0);
}

} // namespace vx::platform::zel
