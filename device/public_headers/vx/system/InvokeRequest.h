// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#pragma GCC visibility push(default)
namespace vx {
namespace system {

// What one application asks of another: who is to act, what to do, and on which data. A plain value.
class InvokeRequest
{
public:
    QString target() const { return m_target; }
    void setTarget(const QString& target) { m_target = target; }

    QString action() const { return m_action; }
    void setAction(const QString& action) { m_action = action; }

    QString mimeType() const { return m_mimeType; }
    void setMimeType(const QString& mimeType) { m_mimeType = mimeType; }

    // Text in UTF-8; bytes that are not UTF-8 arrive as U+FFFD.
    QByteArray data() const { return m_data; }
    void setData(const QByteArray& data) { m_data = data; }

private:
    QString m_target;
    QString m_action;
    QString m_mimeType;
    QByteArray m_data;
};

} // namespace system
} // namespace vx
#pragma GCC visibility pop
