// SPDX-License-Identifier: Apache-2.0
#include <simulator/recordings/Recorder.h>

using namespace Qt::StringLiterals;

namespace zelcore {

QString Recorder::open(const QString& path, const Recording& head)
{
    close();
    m_file.setFileName(path);
    // What is in a recording is personal.
    const QFile::Permissions forTheUser = QFile::ReadOwner | QFile::WriteOwner;
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered, forTheUser))
        return u"%1: %2"_s.arg(path, QFile::exists(path) ? u"is there already"_s : m_file.errorString());
    return writeLine(head.header());
}

QString Recorder::write(const Recording::Entry& entry)
{
    return writeLine(entry.line());
}

QString Recorder::writeLine(const QByteArray& line)
{
    if (m_file.write(line) == line.size())
        return {};
    const bool isCut = m_file.error() == QFileDevice::NoError;
    const QString why = isCut ? u"there is no room for more"_s : m_file.errorString();
    const QString problem = u"%1: %2; the recording ends here"_s.arg(m_file.fileName(), why);
    close();
    return problem;
}

} // namespace zelcore
