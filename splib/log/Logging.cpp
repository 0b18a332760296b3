// SPDX-License-Identifier: Apache-2.0
#include <splib/log/Logging.h>

#include <slog/slog.h>

namespace zelsplib::logging {

bool LogString(int severity, const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    return slogf(device::logOpcode, severity, "%s", utf8.constData()) != -1;
}

QString detail::fillLogTemplate(const QString& prefix, const char* text, const QString* values, std::size_t count)
{
    const QString line = QString::fromUtf8(text);
    switch (count) {
    case 1:
        return prefix + line.arg(values[0]);
    case 2:
        return prefix + line.arg(values[0], values[1]);
    case 3:
        return prefix + line.arg(values[0], values[1], values[2]);
    default:
        return prefix + line;
    }
}

} // namespace zelsplib::logging
