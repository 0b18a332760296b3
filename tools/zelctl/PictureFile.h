// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/ImageType.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <optional>

namespace zelctl {

struct Picture
{
    vx::platform::zel::ImageType::Type type = vx::platform::zel::ImageType::Unsupported;
    QByteArray data;
};

/// Empty, with a sentence in \a error, when the file cannot be read or is no picture.
std::optional<Picture> readPicture(const QString& fileName, QString* error);

/// False, with a sentence in \a error, when the file cannot be written.
bool writePicture(const QString& fileName, const QByteArray& data, QString* error);

} // namespace zelctl
