// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>

#include <chrono>

class QQuickWindow;

namespace zeltools {

/// Saves what a window shows once it has come to rest: nothing has stirred for a while, no picture that it shows is
/// being loaded, and its property "settled" is not false, if it has one.
class Screenshot : public QObject
{
    Q_OBJECT

public:
    /// \a window must outlive it; \a rest is how long nothing may stir.
    Screenshot(QQuickWindow& window, const QString& file, std::chrono::milliseconds rest, QObject* parent = nullptr);

    /// Something stirs: it waits anew.
    void stir() { m_rest.start(); }
    /// Waits no longer than that: a window that is settled is taken without the pictures that are still to come, and
    /// of another there is none.
    void giveUpAfter(std::chrono::milliseconds time);

Q_SIGNALS:
    /// With an empty \a problem; else it was not, and that is why.
    void taken(const QString& problem);

private:
    bool isSettled() const;
    void takeWhenAtRest();
    void take();

    QQuickWindow& m_window;
    const QString m_file;
    QTimer m_rest;
};

} // namespace zeltools
