// SPDX-License-Identifier: Apache-2.0
#include <common/ReturnClicks.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QPointer>
#include <QtGui/QKeyEvent>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>

namespace zeltools {

namespace {

bool isButton(const QQuickItem& item)
{
    return item.inherits("QQuickAbstractButton") && !item.inherits("QQuickItemDelegate") &&
           !item.inherits("QQuickMenuItem");
}

} // namespace

ReturnClicks::ReturnClicks(QQuickWindow& window, QObject* parent)
    : QObject(parent)
    , m_window(window)
{
    window.installEventFilter(this);
}

bool ReturnClicks::eventFilter(QObject*, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return false;
    const auto* const key = static_cast<QKeyEvent*>(event);
    const QPointer<QQuickItem> item = m_window.activeFocusItem();
    const bool isReturn = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
    if (!isReturn || key->isAutoRepeat() || !item || !isButton(*item))
        return false;
    // Both at once: what is clicked may pass the focus on, and a release would click whatever has it then.
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent space(type, Qt::Key_Space, Qt::NoModifier);
        if (item)
            QCoreApplication::sendEvent(item, &space);
    }
    return true;
}

} // namespace zeltools
