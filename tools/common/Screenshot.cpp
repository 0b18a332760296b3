// SPDX-License-Identifier: Apache-2.0
#include <common/Screenshot.h>

#include <QtCore/QVariant>
#include <QtGui/QImage>
#include <QtQuick/QQuickWindow>

using namespace Qt::StringLiterals;

namespace zeltools {

Screenshot::Screenshot(QQuickWindow& window, const QString& file, std::chrono::milliseconds rest, QObject* parent)
    : QObject(parent)
    , m_window(window)
    , m_file(file)
{
    m_rest.setInterval(rest);
    connect(&m_rest, &QTimer::timeout, this, &Screenshot::take);
    m_rest.start();
}

void Screenshot::giveUpAfter(std::chrono::milliseconds time)
{
    QTimer::singleShot(time, this, [this] { Q_EMIT taken(u"the window does not come to rest"_s); });
}

void Screenshot::take()
{
    const QVariant settled = m_window.property("settled");
    if (settled.isValid() && !settled.toBool())
        return;
    m_rest.stop();
    const bool isSaved = m_window.grabWindow().save(m_file);
    Q_EMIT taken(isSaved ? QString() : m_file + u" cannot be written"_s);
}

} // namespace zeltools
