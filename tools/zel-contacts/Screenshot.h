// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>

class QQuickWindow;

/// Saves what a window shows once it has come to rest: it says that it has settled, and has not been drawn for a while.
/// What never comes to rest is given up.
class Screenshot : public QObject
{
    Q_OBJECT

public:
    Screenshot(QQuickWindow* window, const QString& file);

Q_SIGNALS:
    void taken(bool saved);

private:
    void take();

    QQuickWindow* const m_window;
    const QString m_file;
    QTimer m_rest;
};
