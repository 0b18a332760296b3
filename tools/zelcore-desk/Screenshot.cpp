// SPDX-License-Identifier: Apache-2.0
#include "Screenshot.h"

#include "WireModel.h"

#include <QtGui/QImage>
#include <QtQuick/QQuickWindow>

#include <chrono>

using namespace std::chrono_literals;

namespace zeldesk {

Screenshot::Screenshot(QQuickWindow& window, const WireModel& wire, const QString& file, QObject* parent)
    : QObject(parent)
    , m_window(window)
    , m_file(file)
{
    m_quiet.setSingleShot(true);
    connect(&m_quiet, &QTimer::timeout, this, &Screenshot::take);
    connect(&wire, &WireModel::countsChanged, this, [this] { m_quiet.start(1s); });
    m_quiet.start(2s);
}

void Screenshot::take()
{
    Q_EMIT taken(m_window.grabWindow().save(m_file));
}

} // namespace zeldesk
