// SPDX-License-Identifier: Apache-2.0
#include "Screenshot.h"

#include <QtCore/QVariant>
#include <QtGui/QImage>
#include <QtQuick/QQuickWindow>

#include <chrono>

using namespace std::chrono_literals;

Screenshot::Screenshot(QQuickWindow* window, const QString& file)
    : QObject(window)
    , m_window(window)
    , m_file(file)
{
    m_rest.setInterval(400ms);
    connect(&m_rest, &QTimer::timeout, this, &Screenshot::take);
    connect(window, &QQuickWindow::afterRendering, &m_rest, qOverload<>(&QTimer::start), Qt::QueuedConnection);
    m_rest.start();
    QTimer::singleShot(20s, this, [this] { Q_EMIT taken(false); });
}

void Screenshot::take()
{
    if (!m_window->property("settled").toBool())
        return;
    m_rest.stop();
    Q_EMIT taken(m_window->grabWindow().save(m_file));
}
