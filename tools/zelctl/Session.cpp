// SPDX-License-Identifier: Apache-2.0
#include "Session.h"

#include "NameOf.h"
#include "PictureFile.h"

#include <vx/platform/zel/ApplicationPermissions.h>
#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>
#include <vx/platform/zel/Utils.h>

using namespace vx::platform::zel;
using namespace Qt::StringLiterals;

namespace zelctl {

struct Session::Objects
{
    explicit Objects(Context* context)
        : permissions(context)
        , profile(context)
        , contacts(context)
        , box(context)
        , utils(context)
    {
    }

    ApplicationPermissions permissions;
    UserProfile profile;
    ContactService contacts;
    ProfileBox box;
    Utils utils;
};

// A library that opened the object cannot have heard anything before the event loop runs, so it answers Unknown; one
// that could not open it answers BlockedByUser from the start.
Session::Session(const QUuid& uuid, QObject* parent)
    : QObject(parent)
    , m_context(uuid)
    , m_objects(std::make_unique<Objects>(nullptr))
    , m_hasService(m_context.registrationState() != RegistrationState::BlockedByUser)
{
    connect(&m_context, &Context::registrationStateUpdated, this, &Session::registrationStateUpdated);
}

Session::~Session() = default;

ApplicationPermissions& Session::permissions()
{
    return m_objects->permissions;
}

UserProfile& Session::profile()
{
    return m_objects->profile;
}

ContactService& Session::contacts()
{
    return m_objects->contacts;
}

ProfileBox& Session::box()
{
    return m_objects->box;
}

Utils& Session::utils()
{
    return m_objects->utils;
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
    report("Context"_L1, "registrationStateUpdated"_L1, Record().text("state"_L1, nameOf(state)));
    if (state != RegistrationState::Allowed || m_live)
        return;
    m_live = true;
    m_objects = std::make_unique<Objects>(&m_context);
    connectProfile();
    connectContacts();
    connectBox();
    connectUtils();
    Q_EMIT liveObjectsMade();
}

void Session::connectProfile()
{
    const UserProfile* profile = &m_objects->profile;
    connect(profile, &UserProfile::displayNameUpdated, this, [this](const QString& value) {
        report("UserProfile"_L1, "displayNameUpdated"_L1, Record().text("value"_L1, value));
    });
    connect(profile, &UserProfile::personalMessageUpdated, this, [this](const QString& value) {
        report("UserProfile"_L1, "personalMessageUpdated"_L1, Record().text("value"_L1, value));
    });
    connect(profile, &UserProfile::statusUpdated, this, [this](UserStatus::Type status, const QString& message) {
        report("UserProfile"_L1, "statusUpdated"_L1,
               Record().text("status"_L1, nameOf(status)).text("statusMessage"_L1, message));
    });
    connect(profile, &UserProfile::displayPictureUpdated, this, [this](ImageType::Type type, const QByteArray& data) {
        report("UserProfile"_L1, "displayPictureUpdated"_L1,
               Record()
                   .text("displayPictureMimeType"_L1, nameOf(type))
                   .bytes("displayPictureSize"_L1, "displayPictureSha1"_L1, data));
    });
}

void Session::connectContacts()
{
    const ContactService* contacts = &m_objects->contacts;
    const auto reportHandle = [this](QLatin1String signal) {
        return [this, signal](const QString& handle) {
            report("ContactService"_L1, signal, Record().text("handle"_L1, handle));
        };
    };
    connect(contacts, &ContactService::contactListUpdated, this,
            [this] { report("ContactService"_L1, "contactListUpdated"_L1, Record()); });
    connect(contacts, &ContactService::displayPictureUpdated, this,
            [this](const QString& handle, ImageType::Type type, const QByteArray& data) {
                save(m_pictureFiles, handle, data);
                report("ContactService"_L1, "displayPictureUpdated"_L1,
                       Record()
                           .text("handle"_L1, handle)
                           .text("imageType"_L1, nameOf(type))
                           .bytes("displayPictureSize"_L1, "displayPictureSha1"_L1, data));
            });
    connect(contacts, &ContactService::contactUpdated, this, reportHandle("contactUpdated"_L1));
    connect(contacts, &ContactService::applicationEnabled, this, reportHandle("applicationEnabled"_L1));
    connect(contacts, &ContactService::applicationDisabled, this, reportHandle("applicationDisabled"_L1));
}

void Session::connectBox()
{
    const ProfileBox* box = &m_objects->box;
    connect(box, &ProfileBox::itemAdded, this, [this](const QString& itemId) {
        report("ProfileBox"_L1, "itemAdded"_L1, Record().text("itemId"_L1, itemId));
    });
    connect(box, &ProfileBox::itemRemoved, this, [this](const QString& itemId) {
        report("ProfileBox"_L1, "itemRemoved"_L1, Record().text("itemId"_L1, itemId));
    });
    connect(box, &ProfileBox::iconRegistered, this,
            [this](int iconId) { report("ProfileBox"_L1, "iconRegistered"_L1, Record().number("iconId"_L1, iconId)); });
    connect(box, &ProfileBox::iconRetrieved, this, [this](int iconId, ImageType::Type type, const QByteArray& data) {
        save(m_iconFiles, QString::number(iconId), data);
        report("ProfileBox"_L1, "iconRetrieved"_L1,
               Record()
                   .number("iconId"_L1, iconId)
                   .text("iconType"_L1, nameOf(type))
                   .bytes("iconDataSize"_L1, "iconDataSha1"_L1, data));
    });
}

void Session::connectUtils()
{
    const Utils* utils = &m_objects->utils;
    connect(utils, &Utils::ecoIdUpdated, this, [this](const QString& ppId, const QString& ecoId) {
        report("Utils"_L1, "ecoIdUpdated"_L1, Record().text("ppId"_L1, ppId).text("ecoId"_L1, ecoId));
    });
    connect(utils, &Utils::ecoIdStatusUpdated, this, [this](const QString& ecoId, EcoIdStatus::Type status) {
        report("Utils"_L1, "ecoIdStatusUpdated"_L1, Record().text("ecoId"_L1, ecoId).text("status"_L1, nameOf(status)));
    });
}

void Session::report(QLatin1String source, QLatin1String signal, const Record& arguments)
{
    Record record;
    record.text("source"_L1, source).text("signal"_L1, signal);
    record.append(arguments);
    Q_EMIT signalled(record);
}

void Session::save(QHash<QString, QString>& files, const QString& key, const QByteArray& data)
{
    const QString fileName = files.take(key);
    QString error;
    // Nothing to write is no reason to lose what the file holds.
    if (!fileName.isEmpty() && !data.isEmpty() && !writePicture(fileName, data, &error))
        Q_EMIT saveFailed(error);
}

} // namespace zelctl
