// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QObject>

class QQuickWindow;

namespace zeltools {

/// Has Return and Enter do what the space bar does to a button of a window that has the focus: to any that has nothing
/// else in mind with them, those of dialogs among them, of which Qt's own know the space bar alone.
class ReturnClicks : public QObject
{
    Q_OBJECT

public:
    /// \a window must outlive it.
    explicit ReturnClicks(QQuickWindow& window, QObject* parent = nullptr);

    /// For the item to which keys come that nobody took.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QQuickWindow& m_window;
};

} // namespace zeltools
