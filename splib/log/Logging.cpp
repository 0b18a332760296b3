// SPDX-License-Identifier: Apache-2.0
#include <splib/log/Logging.h>

#include <slog/slog.h>

namespace zelsplib::logging {

bool LogString(int severity, const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    return slogf(device::logOpcode, severity, "%s", utf8.constData()) != -1;
}

} // namespace zelsplib::logging
