// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/ImageType.h>
#include <vx/platform/zel/ProfileBoxItem.h>
#include <iface/Export.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <memory>

namespace vx::platform::zel {

class Context;
class ProfileBoxPrivate;

/// The application's box in the user's profile: a few lines of text, each with an icon and a cookie if wanted.
///
/// Works while the context gives access, whenever it was made; without access it answers false, an empty list, an
/// invalid item or 0. What the box holds when it is first received is announced by itemCountChanged() and
/// registeredIconsChanged() alone; it is there when registration completes, except for an application that may not show
/// a box: registration does not wait for it then. All boxes of a process show the same items. The context is held
/// guarded and may go first.
///
/// Requests are answered by the service through the signals. Its rules are the constants below: a text of 1 to 100
/// characters with at most two line breaks, a cookie of at most 128 characters, an icon of 1 to 32768 bytes under an id
/// of 0 or more that is not registered yet.
/// What breaks them is refused: an icon by false, an item only by a line in the log; a warning says why, once. Which
/// icon an item may name is for the service to judge: one that is registered, or on its way. For an item without an
/// icon take the form without the id.
///
/// Thread: that of the context. In a slot anything may be done, including destroying this object.
class ZEL_EXPORT ProfileBox : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int itemCount READ itemCount NOTIFY itemCountChanged)
    Q_PROPERTY(QList<int> registeredIcons READ registeredIcons NOTIFY registeredIconsChanged)

public:
    /// The longest text of an item, in characters as QString::size() counts them: most emoji are two.
    static constexpr int maximumTextLength = 100;
    /// The most line breaks in it; a carriage return and a line feed are two.
    static constexpr int maximumLineBreaks = 2;
    /// The longest cookie of an item, in the same characters.
    static constexpr int maximumCookieLength = 128;
    /// The biggest icon, in bytes.
    static constexpr int maximumIconSize = 32768;

    /// The box of the application that \a context registers; \a parent may own this object.
    explicit ProfileBox(Context* context, QObject* parent = nullptr);
    ~ProfileBox() override;

    bool requestAddItem(const QString& text, int iconId, const QString& cookie);
    bool requestAddItem(const QString& text, const QString& cookie);
    bool requestRemoveItem(const QString& itemId);
    bool requestRemoveAllItems();
    ProfileBoxItem item(const QString& itemId) const;
    QList<ProfileBoxItem> items() const;
    int itemCount() const;
    QList<int> registeredIcons() const;
    bool requestRegisterIcon(int iconId, ImageType::Type type, const QByteArray& icon);
    bool requestRetrieveIcon(int iconId) const;

Q_SIGNALS:
    // Each comes after item() and items() show what it tells, and while access is lost, too, when they answer defaults.

    /// There is a new item, which the service calls \a itemId.
    void itemAdded(QString itemId);
    /// The item \a itemId is gone.
    void itemRemoved(QString itemId);
    /// The service has the icon \a iconId, and items may use it.
    void iconRegistered(int iconId);
    /// The answer to requestRetrieveIcon(): the icon \a iconId has the bytes \a iconData and the format \a iconType
    /// that the first of them show.
    void iconRetrieved(int iconId, vx::platform::zel::ImageType::Type iconType, QByteArray iconData);
    /// The item \a itemId, which was announced before or there from the beginning, has another text, cookie or icon, or
    /// another place among items(). After a list that the service sends again: behind what came and went.
    void itemUpdated(QString itemId);

    /// For bindings: itemCount() is another number than before. After the signal that brought it about, if there is
    /// one.
    void itemCountChanged(QPrivateSignal);
    /// For bindings: registeredIcons() is another list than before, also when an icon is gone or stands in another
    /// place. Like itemCountChanged().
    void registeredIconsChanged(QPrivateSignal);

private:
    friend class ProfileBoxPrivate;
    std::unique_ptr<ProfileBoxPrivate> const d;
};

} // namespace vx::platform::zel
