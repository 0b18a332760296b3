// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QException>
#include <QtCore/QObject>
#include <QtCore/QString>

QT_BEGIN_NAMESPACE
class QDebug;
QT_END_NAMESPACE

namespace vx::platform::zel {

/// Why a request of Requests has no answer: what QFuture::onFailed() is given, and QFuture::result() throws.
/// A value; may be read on any thread.
class Q_DECL_EXPORT RequestError : public QException
{
    Q_GADGET

public:
    /// For programs; errorString() says it for people.
    enum Reason : int {
        NoAccess = 1,   ///< The context was not ready when the request was made. Nothing was sent.
        Refused = 2,    ///< What was asked for cannot be done, for the reason in words. Nothing was sent.
        TimedOut = 3,   ///< No answer in time. It may come yet, and what was asked for be done.
        AccessLost = 4, ///< Access was lost, or the context destroyed, before the answer came.
    };
    Q_ENUM(Reason)

    /// One with a \a reason that says \a errorString.
    RequestError(Reason reason, const QString& errorString);
    ~RequestError() override;

    /// Which kind of failure it is.
    Reason reason() const { return m_reason; }
    /// A sentence for whoever reads logs: what was asked for, and why it failed.
    QString errorString() const { return QString::fromUtf8(m_what); }

    /// errorString() in UTF-8.
    const char* what() const noexcept override;
    /// Throws a copy: for QFuture.
    void raise() const override;
    /// A copy, owned by the caller: for QFuture.
    RequestError* clone() const override;

private:
    Reason m_reason;
    QByteArray m_what;
};

/// Writes the name of \a reason to \a debug, without the class: "TimedOut".
Q_DECL_EXPORT QDebug operator<<(QDebug debug, RequestError::Reason reason);

} // namespace vx::platform::zel
