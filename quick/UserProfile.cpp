// SPDX-License-Identifier: Apache-2.0
#include <quick/UserProfile.h>

#include <quick/PictureFile.h>
#include <quick/PictureStore.h>

#include <QtQml/QQmlInfo>

namespace zelquick {

UserProfile::UserProfile(QObject* parent)
    : ContextObject(parent)
{
}

QUrl UserProfile::picture() const
{
    return context() ? context()->pictures().urlOf(PictureStore::Kind::Own) : QUrl();
}

bool UserProfile::requestUpdatePersonalMessage(const QString& personalMessage)
{
    return isThere(m_profile, "requestUpdatePersonalMessage()") &&
           m_profile->requestUpdatePersonalMessage(personalMessage);
}

bool UserProfile::requestUpdateStatus(zel::UserStatus::Type status, const QString& statusMessage)
{
    return isThere(m_profile, "requestUpdateStatus()") && m_profile->requestUpdateStatus(status, statusMessage);
}

bool UserProfile::requestUpdateDisplayPicture(zel::ImageType::Type type, const QByteArray& displayPicture)
{
    return isThere(m_profile, "requestUpdateDisplayPicture()") &&
           m_profile->requestUpdateDisplayPicture(type, displayPicture);
}

bool UserProfile::requestUpdateDisplayPictureFile(const QUrl& file)
{
    if (!isThere(m_profile, "requestUpdateDisplayPictureFile()"))
        return false;
    QString problem;
    const QByteArray bytes = readPicture(file, maximumPictureSize(), &problem);
    if (!problem.isEmpty())
        qmlWarning(this) << "requestUpdateDisplayPictureFile(): " << problem;
    return problem.isEmpty() && m_profile->requestUpdateDisplayPicture(zel::ImageType::ofData(bytes), bytes);
}

void UserProfile::start(zel::Context* context, QObject* owner)
{
    m_profile = new zel::UserProfile(context, owner);
    connect(m_profile, &zel::UserProfile::profileChanged, this, &UserProfile::profileChanged);
    connect(&this->context()->pictures(), &PictureStore::renewed, owner, [this](PictureStore::Kind kind) {
        if (kind == PictureStore::Kind::Own)
            Q_EMIT pictureChanged();
    });
    Q_EMIT profileChanged();
}

void UserProfile::forget()
{
    m_profile = nullptr;
    Q_EMIT profileChanged();
    Q_EMIT pictureChanged();
}

} // namespace zelquick
