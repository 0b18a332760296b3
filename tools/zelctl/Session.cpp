// SPDX-License-Identifier: Apache-2.0
#include "Session.h"

#include "PictureFile.h"

#include <type_traits>

using namespace vx::platform::zel;
using namespace Qt::StringLiterals;

namespace zelctl {

// A library that opened the object cannot have heard anything before the event loop runs, so it answers Unknown; one
// that could not open it answers BlockedByUser from the start.
Session::Session(const QUuid& uuid, QObject* parent)
    : QObject(parent)
    , m_context(uuid)
    , m_objects(new Objects{&m_context})
    , m_hasService(m_context.registrationState() != RegistrationState::BlockedByUser)
{
    connect(&m_context, &Context::registrationStateUpdated, this, &Session::registrationStateUpdated);
}

void Session::savePictureOf(const QString& handle, const QString& fileName)
{
    m_pictureFiles.insert(handle, fileName);
}

void Session::saveIcon(int iconId, const QString& fileName)
{
    m_iconFiles.insert(QString::number(iconId), fileName);
}

void Session::registrationStateUpdated(RegistrationState::Type state)
{
    static const QMetaMethod signal = QMetaMethod::fromSignal(&Context::registrationStateUpdated);
    report(signal, {QVariant::fromValue(state)});
    if (state == RegistrationState::Allowed && !m_live)
        makeLiveObjects();
}

void Session::makeLiveObjects()
{
    m_live = true;
    m_objects.reset(new Objects{&m_context});
    // Pictures are saved before they are reported.
    connect(
        &contacts(), &ContactService::displayPictureUpdated, this,
        [this](const QString& handle, ImageType::Type, const QByteArray& data) { save(m_pictureFiles, handle, data); });
    connect(&box(), &ProfileBox::iconRetrieved, this, [this](int iconId, ImageType::Type, const QByteArray& data) {
        save(m_iconFiles, QString::number(iconId), data);
    });
    relay(profile(), &UserProfile::displayNameUpdated);
    relay(profile(), &UserProfile::personalMessageUpdated);
    relay(profile(), &UserProfile::statusUpdated);
    relay(profile(), &UserProfile::displayPictureUpdated);
    relay(contacts(), &ContactService::contactListUpdated);
    relay(contacts(), &ContactService::contactListResent);
    relay(contacts(), &ContactService::displayPictureUpdated);
    relay(contacts(), &ContactService::contactUpdated);
    relay(contacts(), &ContactService::applicationEnabled);
    relay(contacts(), &ContactService::applicationDisabled);
    relay(box(), &ProfileBox::itemAdded);
    relay(box(), &ProfileBox::itemUpdated);
    relay(box(), &ProfileBox::itemRemoved);
    relay(box(), &ProfileBox::iconRegistered);
    relay(box(), &ProfileBox::iconRetrieved);
    relay(utils(), &Utils::ecoIdUpdated);
    relay(utils(), &Utils::ecoIdStatusUpdated);
    Q_EMIT liveObjectsMade();
}

template <typename Class, typename... Args>
void Session::relay(const Class& object, void (Class::*signal)(Args...))
{
    connect(&object, signal, this, [this, method = QMetaMethod::fromSignal(signal)](const std::decay_t<Args>&... args) {
        report(method, {QVariant::fromValue(args)...});
    });
}

void Session::report(const QMetaMethod& signal, const QVariantList& arguments)
{
    const QString source = QString::fromLatin1(signal.enclosingMetaObject()->className()).section(u':', -1);
    Record record;
    record.add(u"source"_s, source).add(u"signal"_s, QString::fromLatin1(signal.name()));
    const QByteArrayList names = signal.parameterNames();
    for (qsizetype i = 0; i < arguments.size(); ++i)
        record.add(QString::fromLatin1(names.at(i)), arguments.at(i));
    Q_EMIT signalled(record);
}

void Session::save(QHash<QString, QString>& files, const QString& key, const QByteArray& data)
{
    const QString fileName = files.take(key);
    // Nothing to write is no reason to lose what the file holds.
    if (fileName.isEmpty() || data.isEmpty())
        return;
    QString error;
    if (writePicture(fileName, data, &error))
        Q_EMIT saved(u"Wrote %1 bytes to %2."_s.arg(data.size()).arg(fileName));
    else
        Q_EMIT saveFailed(error);
}

} // namespace zelctl
