// SPDX-License-Identifier: Apache-2.0
// As docs/guide.md has it.
// clang-format off
#include <vx/platform/zel/Contact.h>
#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>
#include <vx/platform/zel/ImageType.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>
#include <vx/platform/zel/Utils.h>

#include <zelcore/Simulator.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDebug>
#include <QtCore/QTimer>
#include <QtTest/QTest>

#include <functional>
#include <utility>

using namespace Qt::StringLiterals;
using namespace vx::platform::zel;

void makeTheOtherObjects();

void registration(QCoreApplication& app)
{
    Context context(QUuid::fromString(u"6f8d2c4e-5b0a-4a37-9d0e-0c8f3f1f2a10"));
    QObject::connect(&context, &Context::registrationStateUpdated, &app, [&](RegistrationState::Type state) {
        if (state == RegistrationState::Unregistered)
            context.requestRegisterApplication();      // asks the user; requestRegisterApplicationSilent() does not
        // Pending comes next, then Allowed or a refusal: see RegistrationState
    });
    whenReady(&context, &app, [&] { makeTheOtherObjects(); });
}

class Page : public QObject
{
public:
    void profile(const QByteArray& bytes)
    {
        auto* profile = new UserProfile(&context, this);
        connect(profile, &UserProfile::statusUpdated, this, [](UserStatus::Type status, const QString& message) {
            qInfo() << status << message;
        });
        profile->requestUpdateStatus(UserStatus::Busy, tr("in a meeting"));
        profile->requestUpdateDisplayPicture(ImageType::Png, bytes);      // one at a time, maximumPictureSize: 32768 bytes
    }

    void follow()
    {
        auto* contacts = new ContactService(&context, this);
        connect(contacts, &ContactService::contactListUpdated, this, [this, contacts] { show(contacts->contacts()); });
        connect(contacts, &ContactService::contactUpdated, this, [this, contacts](const QString& handle) {
            update(contacts->contact(handle));
        });
        connect(contacts, &ContactService::displayPictureUpdated, this, &Page::paint); // handle, format, bytes; none: no picture
        connect(contacts, &ContactService::applicationEnabled, this, &Page::add);      // a contact installed the application
        connect(contacts, &ContactService::applicationDisabled, this, &Page::remove);  // ... or removed it
        show(contacts->contacts());                                                    // what there is already
    }

    void box(const QByteArray& iconBytes)
    {
        auto* box = new ProfileBox(&context, this);
        box->requestRegisterIcon(1, ImageType::Png, iconBytes);              // then iconRegistered(1)
        box->requestAddItem(tr("Reached level 7"), 1, u"level-7"_s);        // then itemAdded(id)
    }

    void identifiers(const Contact& contact, const QString& ecoId, UserProfile* profile)
    {
        auto* utils = new Utils(&context, this);
        connect(utils, &Utils::ecoIdUpdated, this, [utils](const QString& ppId, const QString& found) {
            qInfo() << ppId << "is" << found;
            if (!found.isEmpty())                                                         // empty: the service knows none
                utils->requestEcoIdStatus(found);
        });
        utils->requestEcoId(contact.ppId());
        utils->sendContactInvitation(ecoId, profile->displayName(), tr("Join me"));   // hands over, in the user's name
        utils->invokeChat(ecoId);
    }

    void comeback(ContactService* contacts)
    {
        connect(contacts, &ContactService::contactListResent, this, [this, contacts] {   // the service is back
            const QList<Contact> before = contacts->contacts();
            for (const Contact& contact : before) {
                if (!contacts->hasApplication(contact.handle()))
                    sayGoodbye(contact);                                           // left while it was away
            }
            contacts->refresh();                                                   // contactListUpdated: show contacts()
            for (const auto& request : std::exchange(unanswered, {}))              // whatever your application still waits for
                request();
        });
    }

    void images(const QString& fileName, const QString& handle)
    {
        const ImageType::Type type = ImageType::ofFile(fileName);            // by its first bytes, else by its suffix
        save(u"%1.%2"_s.arg(handle, ImageType::suffix(type)));               // ImageType::ofData(bytes), mimeType(type)
    }

private:
    void show(const QList<Contact>& contacts);
    void update(const Contact& contact);
    void paint(const QString& handle, ImageType::Type type, const QByteArray& picture);
    void add(const QString& handle);
    void remove(const QString& handle);
    void sayGoodbye(const Contact& contact);
    void save(const QString& name);

    Context context{QUuid::createUuid()};
    QList<std::function<void()>> unanswered;
};

void simulated()
{
    zelcore::Simulator service;
    service.addContact(u"Anna"_s);           // and so on; generateContacts(25, 1) makes people up
    QVERIFY(service.start());
    QVERIFY(service.exportRoot());           // before the application's objects are made
    // ... your application registers ...
    service.execute(u"contact change anna personalMessage=\"on holiday\""_s);
}
