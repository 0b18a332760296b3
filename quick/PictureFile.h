// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QUrl>

namespace zelquick {

/// The bytes of the picture in \a file, of at most \a limit: one that is bigger becomes a JPEG that is not. Empty, with
/// a sentence in \a problem, when it cannot be read or is no picture.
QByteArray readPicture(const QUrl& file, int limit, QString* problem);

} // namespace zelquick
