// SPDX-License-Identifier: Apache-2.0
#include <quick/ProfileBox.h>

#include <quick/PictureFile.h>

#include <QtQml/QQmlInfo>

namespace zelquick {

ProfileBox::ProfileBox(QObject* parent)
    : ContextObject(parent)
{
}

bool ProfileBox::requestAddItem(const QString& text, int iconId, const QString& cookie)
{
    return isThere(m_box, "requestAddItem()") && m_box->requestAddItem(text, iconId, cookie);
}

bool ProfileBox::requestAddItem(const QString& text, const QString& cookie)
{
    return isThere(m_box, "requestAddItem()") && m_box->requestAddItem(text, cookie);
}

bool ProfileBox::requestRemoveItem(const QString& itemId)
{
    return isThere(m_box, "requestRemoveItem()") && m_box->requestRemoveItem(itemId);
}

bool ProfileBox::requestRemoveAllItems()
{
    return isThere(m_box, "requestRemoveAllItems()") && m_box->requestRemoveAllItems();
}

bool ProfileBox::requestRegisterIcon(int iconId, zel::ImageType::Type type, const QByteArray& icon)
{
    return isThere(m_box, "requestRegisterIcon()") && m_box->requestRegisterIcon(iconId, type, icon);
}

bool ProfileBox::requestRegisterIconFile(int iconId, const QUrl& file)
{
    if (!isThere(m_box, "requestRegisterIconFile()"))
        return false;
    QString problem;
    const QByteArray bytes = readPicture(file, zel::ProfileBox::maximumIconSize, &problem);
    if (!problem.isEmpty())
        qmlWarning(this) << "requestRegisterIconFile(): " << problem;
    return problem.isEmpty() && m_box->requestRegisterIcon(iconId, zel::ImageType::ofData(bytes), bytes);
}

void ProfileBox::start(zel::Context* context, QObject* owner)
{
    m_box = new zel::ProfileBox(context, owner);
    connect(m_box, &zel::ProfileBox::itemAdded, this, &ProfileBox::itemAdded);
    connect(m_box, &zel::ProfileBox::itemUpdated, this, &ProfileBox::itemUpdated);
    connect(m_box, &zel::ProfileBox::itemRemoved, this, &ProfileBox::itemRemoved);
    connect(m_box, &zel::ProfileBox::iconRegistered, this, &ProfileBox::iconRegistered);
    connect(m_box, &zel::ProfileBox::registeredIconsChanged, this, &ProfileBox::registeredIconsChanged);
    connect(context, &zel::Context::registrationStateUpdated, owner, [this] { Q_EMIT registeredIconsChanged(); });
    Q_EMIT registeredIconsChanged();
}

void ProfileBox::forget()
{
    m_box = nullptr;
    Q_EMIT registeredIconsChanged();
}

} // namespace zelquick
