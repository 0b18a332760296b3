// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/recordings/Recording.h>

#include <QtCore/QFile>

namespace zelcore {

/// Writes a recording as it happens. Every line has left the process when write() returns, so that a crash keeps it.
class Recorder
{
public:
    /// Makes the file, for the user alone, and writes the header. Empty, or why not.
    QString open(const QString& path, const Recording& head);
    /// Empty, or why not; then the file is closed.
    QString write(const Recording::Entry& entry);

    bool isOpen() const { return m_file.isOpen(); }
    void close() { m_file.close(); }

private:
    QString writeLine(const QByteArray& line);

    QFile m_file;
};

} // namespace zelcore
