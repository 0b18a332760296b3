// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/EcoIdStatus.h>
#include <vx/platform/zel/ImageType.h>
#include <vx/platform/zel/Picture.h>
#include <vx/platform/zel/ProfileBoxItem.h>
#include <vx/platform/zel/RequestError.h>
#include <vx/platform/zel/UserStatus.h>

#include <QtCore/QByteArray>
#include <QtCore/QFuture>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <chrono>
#include <memory>

namespace vx::platform::zel {

class Context;
class RequestsPrivate;

/// Requests with an outcome: what the other classes answer by signals, as futures. Optional, and a library of its own;
/// the other classes may be used beside it.
///
/// Every future ends: with its answer; with a RequestError; or cancelled, by the application or because this object is
/// destroyed. It fails at once when the context is not ready or the request cannot be done; when there is no answer
/// within timeout(); and when access is lost or the context destroyed. Only the waiting ends: what was asked for is not
/// called back, and may be done all the same.
///
/// The service does not say which request it answers. So an answer is known by what it is about, which each request
/// says below, and it counts whoever brought it about: another part of the application, or the user elsewhere.
///
/// Ownership: the application's, and cheap: make it a member or a child of whatever the answers are for. Its futures
/// end with it, cancelled, so that no then() or onFailed() runs on what is half destroyed; onCanceled() does run then.
/// They need no context object, and must not be given one that dies before this does. The application's context is held
/// guarded and may go first.
///
/// Thread: that of the context. Continuations run on it, within the call that ends the future; waiting for a future
/// there waits for ever. They may do anything, including making further requests and destroying this object. A future
/// may be cancelled on any thread; only the one that was returned here, not one of then(), ends the wait.
///
/// \code
/// m_requests.displayPicture(contact.handle())
///     .then([this](const Picture& picture) { show(picture.data); })
///     .onFailed([this](const RequestError& error) { tell(error.errorString()); });
/// \endcode
class Q_DECL_EXPORT Requests : public QObject
{
    Q_OBJECT

public:
    explicit Requests(Context* context, QObject* parent = nullptr);
    ~Requests() override;

    /// How long a request waits for its answer: 30 s at first.
    std::chrono::milliseconds timeout() const;
    /// Sets \a timeout for requests that are made from now on; 0 or less: for as long as it takes.
    void setTimeout(std::chrono::milliseconds timeout);

    QFuture<Picture> displayPicture(const QString& handle);

    QFuture<QString> ecoId(const QString& ppId);
    QFuture<EcoIdStatus::Type> ecoIdStatus(const QString& ecoId);

    QFuture<ProfileBoxItem> addItem(const QString& text, const QString& cookie);
    QFuture<ProfileBoxItem> addItem(const QString& text, int iconId, const QString& cookie);
    QFuture<ProfileBoxItem> addItemWithIcon(const QString& text, int iconId, ImageType::Type type,
                                            const QByteArray& icon, const QString& cookie);
    QFuture<void> removeItem(const QString& itemId);
    QFuture<void> registerIcon(int iconId, ImageType::Type type, const QByteArray& icon);
    QFuture<Picture> retrieveIcon(int iconId);

    QFuture<void> updatePersonalMessage(const QString& personalMessage);
    QFuture<void> updateStatus(UserStatus::Type status, const QString& statusMessage);
    QFuture<void> updateDisplayPicture(ImageType::Type type, const QByteArray& displayPicture);

private:
    friend class RequestsPrivate;
    std::unique_ptr<RequestsPrivate> const d;
};

} // namespace vx::platform::zel
