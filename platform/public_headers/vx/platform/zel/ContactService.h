// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/Contact.h>
#include <vx/platform/zel/ImageType.h>
#include <iface/Export.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <memory>

namespace vx::platform::zel {

class Context;
class ContactServicePrivate;

/// The user's contacts who also have the application, and what happens to them.
///
/// Make it when the context is ready, as whenReady() tells: one that is made without a context, or while it gives no
/// access, answers defaults for its life. The first one starts the following of contacts; all of them show the same
/// contacts. The context is held guarded and may go first.
///
/// What has come by the time it is made is there at once. One that is made when the context becomes ready hears one
/// contactListUpdated() when the list is whole; for one that is made later, when it is whole already, none need follow.
/// So show contacts() right after making it, and again at each contactListUpdated() and at each Allowed; isComplete()
/// says whether these are all. The list is whole when the record of every contact has come: one who is listed and never
/// gets a record with a handle holds it back, though those who are there are shown by a service that is made later.
///
/// Contacts are named by their handle. One whose handle changes is announced under the new one, and stays in contacts()
/// under the old one as well; one who removes the application is announced and stays, too, until the list is read anew.
/// refresh() does that, and so does every further ContactService that is made; nothing that the service sends after the
/// first whole list does. hasApplication() tells meanwhile who has left.
///
/// A service that was away and has come back sends its list again. Single changes since then are not known, so none are
/// announced; contactListResent() is, whether or not anything differs. Whoever is new and has no record yet is
/// announced by applicationEnabled() after that.
///
/// Invitations that contacts send to the user are answered in the messaging application; no signal tells of them.
///
/// Thread: that of the context. In a slot anything may be done, including destroying this object.
class ZEL_EXPORT ContactService : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool valid READ isValid NOTIFY validChanged)
    Q_PROPERTY(bool complete READ isComplete NOTIFY completeChanged)
    Q_PROPERTY(int contactCount READ contactCount NOTIFY contactCountChanged)

public:
    /// The contacts of the user for whom \a context gives access; \a parent may own it.
    explicit ContactService(Context* context, QObject* parent = nullptr);
    ~ContactService() override;

    bool isValid() const;
    bool isComplete() const;
    bool containsContact(const vx::platform::zel::Contact& contact) const;
    bool hasApplication(const QString& handle) const;
    vx::platform::zel::Contact contact(const QString& handle) const;
    QList<vx::platform::zel::Contact> contacts() const;
    int contactCount() const;
    bool requestDisplayPicture(const QString& handle) const;

public Q_SLOTS:
    bool refresh();

Q_SIGNALS:
    // Each but applicationDisabled() comes after contact() and contacts() show what it tells, and while access is lost,
    // too, when they answer defaults.

    /// The list is whole, with the record of every contact, or was read anew by refresh() or because another
    /// ContactService was made. Read contacts() again.
    void contactListUpdated();
    /// The service has sent the whole list again: it was away, as a rule. contacts() are as they were until refresh()
    /// is called, which a slot may do; hasApplication() tells who has left, and so does comparing the two lists.
    void contactListResent();
    /// The answer to requestDisplayPicture(), or a picture that changed: the contact with this \a handle looks like
    /// \a displayPicture, which is of the format \a imageType. An empty picture: the contact has none. It is
    /// the contact's present one; an answer that a change has overtaken is not told.
    void displayPictureUpdated(QString handle, vx::platform::zel::ImageType::Type imageType, QByteArray displayPicture);
    /// The record of the contact with this \a handle changed, perhaps in nothing that Contact shows. After a change of
    /// the handle this is the new one.
    void contactUpdated(QString handle);
    /// A contact installed the application, or someone who has it became a contact: there is one with this \a handle.
    void applicationEnabled(QString handle);
    /// The contact with this \a handle removed the application or is a contact no more. It is still in contacts().
    void applicationDisabled(QString handle);

    /// For bindings to valid: access was lost or won back, which a registration state of the context tells.
    void validChanged(QPrivateSignal);
    /// For bindings to complete: the list has become whole, or access was lost or won back. After what brought it
    /// about.
    void completeChanged(QPrivateSignal);
    /// For bindings to contactCount, which is another number than before. It comes right after what brought that
    /// about: contactListUpdated(), applicationEnabled(), contactUpdated(), or a registration state of the context by
    /// which access was lost or won back.
    void contactCountChanged(QPrivateSignal);

private:
    friend class ContactServicePrivate;
    std::unique_ptr<ContactServicePrivate> const d;
};

} // namespace vx::platform::zel
