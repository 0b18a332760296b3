// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quick/ContextObject.h>

#include <vx/platform/zel/ProfileBox.h>

#include <QtCore/QList>
#include <QtCore/QUrl>

namespace zelquick {

/// Requests to the application's box in the user's profile; ProfileBoxModel shows what it holds. The limits are those
/// of the public class.
class ProfileBox : public zelquick::ContextObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QList<int> registeredIcons READ registeredIcons NOTIFY registeredIconsChanged FINAL)
    Q_PROPERTY(int maximumTextLength READ maximumTextLength CONSTANT FINAL)
    Q_PROPERTY(int maximumCookieLength READ maximumCookieLength CONSTANT FINAL)

public:
    explicit ProfileBox(QObject* parent = nullptr);

    QList<int> registeredIcons() const { return m_box ? m_box->registeredIcons() : QList<int>(); }
    int maximumTextLength() const { return zel::ProfileBox::maximumTextLength; }
    int maximumCookieLength() const { return zel::ProfileBox::maximumCookieLength; }

    Q_INVOKABLE bool requestAddItem(const QString& text, int iconId, const QString& cookie);
    Q_INVOKABLE bool requestAddItem(const QString& text, const QString& cookie);
    Q_INVOKABLE bool requestRemoveItem(const QString& itemId);
    Q_INVOKABLE bool requestRemoveAllItems();
    Q_INVOKABLE bool requestRegisterIcon(int iconId, vx::platform::zel::ImageType::Type type, const QByteArray& icon);
    /// The icon in a file; one that is too big for the service is made smaller. False, with a warning, for a file that
    /// cannot be read or is no picture.
    Q_INVOKABLE bool requestRegisterIconFile(int iconId, const QUrl& file);

Q_SIGNALS:
    // As those of the public class.
    void itemAdded(const QString& itemId);
    void itemUpdated(const QString& itemId);
    void itemRemoved(const QString& itemId);
    void iconRegistered(int iconId);
    void registeredIconsChanged();

protected:
    void start(zel::Context* context, QObject* owner) override;
    void forget() override;

private:
    zel::ProfileBox* m_box = nullptr;
};

} // namespace zelquick
