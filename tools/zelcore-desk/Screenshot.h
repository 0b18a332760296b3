// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QObject>
#include <QtCore/QTimer>

class QQuickWindow;

namespace zeldesk {

class WireModel;

/// Takes one picture of a window, when nothing has passed on the wire for a while.
class Screenshot : public QObject
{
    Q_OBJECT

public:
    /// The window and the model must outlive it.
    Screenshot(QQuickWindow& window, const WireModel& wire, const QString& file, QObject* parent = nullptr);

Q_SIGNALS:
    void taken(bool isSaved);

private:
    void take();

    QQuickWindow& m_window;
    const QString m_file;
    QTimer m_quiet;
};

} // namespace zeldesk
