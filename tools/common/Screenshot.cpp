// SPDX-License-Identifier: Apache-2.0
#include <common/Screenshot.h>

#include <QtCore/QVariant>
#include <QtGui/QImage>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace zeltools {

namespace {

/// Whether \a item, or one within, is an image that is seen in \a frame and has not come yet.
bool awaitsPicture(const QQuickItem& item, const QRectF& frame)
{
    constexpr int loading = 2; // Image.Loading
    if (!item.isVisible())
        return false;
    if (item.inherits("QQuickImageBase") && item.property("status").toInt() == loading &&
        item.mapRectToScene(item.boundingRect()).intersects(frame))
        return true;
    const QList<QQuickItem*> children = item.childItems();
    return std::any_of(children.cbegin(), children.cend(),
                       [&](const QQuickItem* child) { return awaitsPicture(*child, frame); });
}

} // namespace

Screenshot::Screenshot(QQuickWindow& window, const QString& file, std::chrono::milliseconds rest, QObject* parent)
    : QObject(parent)
    , m_window(window)
    , m_file(file)
{
    m_rest.setInterval(rest);
    connect(&m_rest, &QTimer::timeout, this, &Screenshot::takeWhenAtRest);
    m_rest.start();
}

void Screenshot::giveUpAfter(std::chrono::milliseconds time)
{
    QTimer::singleShot(time, this, [this] {
        if (isSettled())
            take();
        else
            Q_EMIT taken(u"the window does not come to rest"_s);
    });
}

bool Screenshot::isSettled() const
{
    const QVariant settled = m_window.property("settled");
    return !settled.isValid() || settled.toBool();
}

void Screenshot::takeWhenAtRest()
{
    if (isSettled() && !awaitsPicture(*m_window.contentItem(), QRectF(QPointF(), m_window.size())))
        take();
}

void Screenshot::take()
{
    const bool isSaved = m_window.grabWindow().save(m_file);
    Q_EMIT taken(isSaved ? QString() : m_file + u" cannot be written"_s);
}

} // namespace zeltools
