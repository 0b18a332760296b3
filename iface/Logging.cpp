// SPDX-License-Identifier: Apache-2.0
#include <iface/Logging.h>

#include <QtCore/QDebug>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace iface {

namespace {

struct Settings
{
    LogLevel::Type level = LogLevel::Info;
    LogCategory::Type category = LogCategory::General;
    QRegExp filenameFilter{u"*"_s, Qt::CaseInsensitive, QRegExp::Wildcard};
};

Settings& settings()
{
    static Settings instance;
    return instance;
}

} // namespace

void setLogLevel(LogLevel::Type level)
{
    settings().level = level;
}

void setLogCategory(LogCategory::Type category)
{
    settings().category = category;
}

void setFilenameFilter(QRegExp filter)
{
    if (!filter.isValid())
        return;
    filter.setPatternSyntax(QRegExp::Wildcard);
    filter.setCaseSensitivity(Qt::CaseInsensitive);
    settings().filenameFilter = filter;
}

QString filterFilename(const char* path)
{
    const QString text = QString::fromLocal8Bit(path);
    return text.mid(std::max(text.lastIndexOf(u'/'), text.lastIndexOf(u'\\')) + 1);
}

bool loggingEnabled(const char* file, LogLevel::Type level, LogCategory::Type)
{
    // As a copy, since to match is to write to it: the log may be used from any thread.
    return level >= settings().level && QRegExp(settings().filenameFilter).exactMatch(filterFilename(file));
}

void writeLogLine(const char* file, int line, const QString& message)
{
    qDebug() << filterFilename(file).toLocal8Bit().constData() << "[" << line << "]: " << qUtf8Printable(message);
}

} // namespace iface
