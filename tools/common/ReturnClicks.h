// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QObject>

class QQuickWindow;

namespace zeltools {

/// Has Return and Enter do what the space bar does to the button of a window that has the focus, in dialogs, too: Qt's
/// own buttons know the space bar alone. Rows of lists and of menus have their own mind.
class ReturnClicks : public QObject
{
    Q_OBJECT

public:
    /// \a window must outlive it.
    explicit ReturnClicks(QQuickWindow& window, QObject* parent = nullptr);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QQuickWindow& m_window;
};

} // namespace zeltools
