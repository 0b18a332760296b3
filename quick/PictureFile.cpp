// SPDX-License-Identifier: Apache-2.0
#include <quick/PictureFile.h>

#include <vx/platform/zel/ImageType.h>

#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtGui/QImageReader>
#include <QtQml/QQmlFile>

using namespace Qt::StringLiterals;
using vx::platform::zel::ImageType;

namespace zelquick {

namespace {

/// Smaller and smaller until it fits; empty if it never does.
QByteArray fitting(const QImage& image, int limit)
{
    for (int length : {512, 384, 256, 192, 128, 64}) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        if (image.scaled(length, length, Qt::KeepAspectRatio, Qt::SmoothTransformation).save(&buffer, "JPG", 85) &&
            bytes.size() <= limit)
            return bytes;
    }
    return {};
}

} // namespace

QByteArray readPicture(const QUrl& file, int limit, QString* problem)
{
    QFile source(QQmlFile::urlToLocalFileOrQrc(file));
    if (!source.open(QIODevice::ReadOnly)) {
        *problem = u"cannot read %1: %2"_s.arg(file.toDisplayString(), source.errorString());
        return {};
    }
    QByteArray bytes = source.peek(limit + 1);
    if (bytes.size() <= limit && ImageType::ofData(bytes) != ImageType::Unsupported)
        return bytes;
    QImageReader reader(&source);
    reader.setAutoTransform(true);
    const QImage image = reader.read();
    bytes = image.isNull() ? QByteArray() : fitting(image, limit);
    if (bytes.isEmpty())
        *problem = u"%1 is no picture that can be read: %2"_s.arg(file.toDisplayString(), reader.errorString());
    return bytes;
}

} // namespace zelquick
