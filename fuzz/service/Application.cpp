// SPDX-License-Identifier: Apache-2.0
#include "Application.h"

#include "Bindings.h"

#include <platform/channel/ServiceBridge.h>
#include <platform/contacts/ContactServiceDelegate.h>
#include <vx/platform/zel/ApplicationPermissions.h>
#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>
#include <vx/platform/zel/Utils.h>

#include <QtCore/QUuid>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

using namespace vx::platform::zel;

namespace {

// The kinds of objects, in the order in which they are made. Of each there are two, one after the other.
enum Kind { ContextKind, ProfileKind, PermissionsKind, ServiceKind, BoxKind, UtilsKind };

constexpr int firstOf(Kind kind)
{
    return 2 * kind;
}

const QByteArray& picture()
{
    static const QByteArray bytes("GIF89a\0\0picture", 15);
    return bytes;
}

QString textOf(char key)
{
    if (key >= 'a' && key <= 'h')
        return QString(QLatin1Char(key));
    switch (key) {
    case 'L':
        return QString(300, u'x');
    case 'n':
        return u"a\nb\r\n"_s;
    case '<':
        return QString(QChar(0xd800)) + u'x' + QChar(0);
    case 'z':
        return u"é😀\t\"\\%1%n"_s;
    default:
        return key >= '0' && key <= '9' ? QString(QLatin1Char(key)) : QString();
    }
}

void read(const Context& context)
{
    require(context.isAccessAllowed() == (context.registrationState() == RegistrationState::Allowed), "access");
    require(context.platformVersion() == 200, "version");
    context.isZelSetup();
}

void read(const ApplicationPermissions& permissions)
{
    for (int i = 0; i < 4; ++i)
        permissions.permissionValue(static_cast<Permission::Type>(i));
}

void read(const UserProfile& profile)
{
    for (int i = 0; i < UserProfile::staticMetaObject.propertyCount(); ++i)
        require(UserProfile::staticMetaObject.property(i).read(&profile).isValid(), "a property of the profile");
}

void read(const ContactService& service)
{
    const QList<Contact> contacts = service.contacts();
    require(service.contactCount() == contacts.size(), "as many contacts as are counted");
    for (const Contact& contact : contacts) {
        require(service.containsContact(contact), "every contact is contained");
        require(service.contact(contact.handle()) == contact, "every contact is found");
        require(!contact.handle().isEmpty(), "every contact has a handle");
        for (int i = 0; i < Contact::staticMetaObject.propertyCount(); ++i)
            require(Contact::staticMetaObject.property(i).readOnGadget(&contact).isValid(), "a property of a contact");
    }
    const auto inOrder = [](const Contact& a, const Contact& b) { return a.handle() < b.handle(); };
    require(std::adjacent_find(contacts.begin(), contacts.end(), std::not_fn(inOrder)) == contacts.end(),
            "contacts are in the order of their handles");
}

void read(const ProfileBox& box)
{
    const QList<ProfileBoxItem> items = box.items();
    require(box.itemCount() == items.size(), "as many items as are counted");
    for (const ProfileBoxItem& item : items) {
        require(box.item(item.id()).id() == item.id(), "every item is found");
        for (int i = 0; i < ProfileBoxItem::staticMetaObject.propertyCount(); ++i)
            require(ProfileBoxItem::staticMetaObject.property(i).readOnGadget(&item).isValid(),
                    "a property of an item");
    }
}

} // namespace

Application::Application(std::function<void()> nested)
    : m_nested(std::move(nested))
{
    followContacts();
    for (int number = 0; number < objectCount; ++number)
        make(number);
}

Application::~Application()
{
    m_armed.clear();
    for (auto object = m_objects.rbegin(); object != m_objects.rend(); ++object)
        object->reset();
}

template <typename Class>
Class* Application::get(int number) const
{
    return static_cast<Class*>(m_objects[static_cast<size_t>(number)].get());
}

void Application::make(int number)
{
    std::unique_ptr<QObject>& object = m_objects[static_cast<size_t>(number)];
    const QPointer<Context> context = get<Context>(number % 2);
    object.reset(); // it may have been made meanwhile, in a slot of what this one announces
    const auto keep = [&](auto* made) {
        object.reset(made);
        new Bindings(made, number / 2 == ContextKind ? static_cast<QObject*>(made) : context.data());
        follow(made, number);
    };
    switch (number / 2) {
    case ContextKind:
        // The second has no UUID, which is refused.
        return keep(new Context(number == 0 ? QUuid(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11) : QUuid()));
    case ProfileKind:
        return keep(new UserProfile(context));
    case PermissionsKind:
        object = std::make_unique<ApplicationPermissions>(context);
        return;
    case ServiceKind:
        return keep(new ContactService(context));
    case BoxKind:
        return keep(new ProfileBox(context));
    default:
        return keep(new Utils(context));
    }
}

/// Every signal of the object's own ends in misbehave().
template <typename Class>
void Application::follow(Class* object, int number)
{
    const auto connectTo = [&](auto signal) { connect(object, signal, this, [this, number] { misbehave(number); }); };
    if constexpr (std::is_same_v<Class, Context>) {
        connect(object, &Context::registrationStateUpdated, this,
                [this](RegistrationState::Type state) { m_told = state; });
        connectTo(&Context::registrationStateUpdated);
    } else if constexpr (std::is_same_v<Class, UserProfile>) {
        connectTo(&UserProfile::displayNameUpdated);
        connectTo(&UserProfile::personalMessageUpdated);
        connectTo(&UserProfile::statusUpdated);
        connectTo(&UserProfile::displayPictureUpdated);
        connectTo(&UserProfile::profileChanged);
    } else if constexpr (std::is_same_v<Class, ContactService>) {
        connectTo(&ContactService::contactListUpdated);
        connectTo(&ContactService::displayPictureUpdated);
        connectTo(&ContactService::contactUpdated);
        connectTo(&ContactService::applicationEnabled);
        connectTo(&ContactService::applicationDisabled);
        connectTo(&ContactService::validChanged);
        connectTo(&ContactService::contactCountChanged);
    } else if constexpr (std::is_same_v<Class, ProfileBox>) {
        connectTo(&ProfileBox::itemAdded);
        connectTo(&ProfileBox::itemUpdated);
        connectTo(&ProfileBox::itemRemoved);
        connectTo(&ProfileBox::iconRegistered);
        connectTo(&ProfileBox::iconRetrieved);
        connectTo(&ProfileBox::itemCountChanged);
    } else {
        connectTo(&Utils::ecoIdUpdated);
        connectTo(&Utils::ecoIdStatusUpdated);
    }
}

void Application::followContacts()
{
    const auto* const delegate = ServiceBridge::instance()->contactService();
    connect(delegate, &ContactServiceDelegate::contactListUpdated, this, [this, delegate] {
        m_handles.clear();
        const QList<Contact> contacts = delegate->allContacts();
        for (const Contact& contact : contacts)
            m_handles.insert(contact.handle());
    });
    const auto noteHandle = [this](const QString& handle) { m_handles.insert(handle); };
    connect(delegate, &ContactServiceDelegate::contactUpdated, this, noteHandle);
    connect(delegate, &ContactServiceDelegate::applicationEnabled, this, noteHandle);
}

void Application::misbehave(int number)
{
    if (m_armed.isEmpty())
        return;
    const char how = m_armed.front();
    m_armed.remove(0, 1);
    switch (how) {
    case 'g':
        return readEverything();
    case 'n':
        return m_nested();
    case 'd':
        return m_objects[static_cast<size_t>(number)].reset();
    case 'r':
        return make(number);
    case 'C':
        return m_objects[0].reset();
    case 'S':
        return make(firstOf(ServiceKind));
    case 'z':
        for (auto& object : m_objects)
            object.reset();
        return;
    case 'Z':
        for (int i = 0; i < objectCount; ++i)
            make(i);
        return;
    case '.':
        return;
    default:
        const char step[] = {how, how, 'a', 'b', 'c'};
        return request(Line(QByteArrayView(step, sizeof step)));
    }
}

void Application::replace(Line line)
{
    const int number = static_cast<unsigned char>(line.take() - 'a') % objectCount;
    if (line.atEnd())
        make(number);
    else
        m_objects[static_cast<size_t>(number)].reset();
}

void Application::request(Line line)
{
    const char what = line.take();
    const int which = static_cast<unsigned char>(line.take()) % 2;
    if (auto* const context = get<Context>(firstOf(ContextKind) + which); context && (what == 'R' || what == 'Q')) {
        what == 'R' ? context->requestRegisterApplication() : context->requestRegisterApplicationSilent();
    } else if (auto* const service = get<ContactService>(firstOf(ServiceKind) + which); service && what == 'D') {
        service->requestDisplayPicture(textOf(line.take()));
    } else if (auto* const profile = get<UserProfile>(firstOf(ProfileKind) + which);
               profile && QByteArrayView("MSP").contains(what)) {
        requestOfProfile(what, line, *profile);
    } else if (auto* const utils = get<Utils>(firstOf(UtilsKind) + which);
               utils && QByteArrayView("EFVW").contains(what)) {
        requestOfUtils(what, line, *utils);
    } else if (auto* const box = get<ProfileBox>(firstOf(BoxKind) + which)) {
        requestOfBox(what, line, *box);
    }
}

void Application::requestOfProfile(char what, Line& line, UserProfile& profile)
{
    switch (what) {
    case 'M':
        profile.requestUpdatePersonalMessage(textOf(line.take()));
        return;
    case 'S': {
        const auto status = static_cast<UserStatus::Type>(line.take() & 3);
        profile.requestUpdateStatus(status, textOf(line.take()));
        return;
    }
    default: {
        const char kind = line.take();
        profile.requestUpdateDisplayPicture(static_cast<ImageType::Type>(kind & 7),
                                            kind == 'L' ? QByteArray(32768, 'x') : picture() + line.take());
    }
    }
}

void Application::requestOfUtils(char what, Line& line, Utils& utils)
{
    const QString argument = textOf(line.take());
    switch (what) {
    case 'E':
        utils.requestEcoId(argument);
        return;
    case 'F':
        utils.requestEcoIdStatus(argument);
        return;
    case 'V':
        utils.sendContactInvitation(argument, argument, argument);
        return;
    default:
        utils.invokeChat(argument);
    }
}

void Application::requestOfBox(char what, Line& line, ProfileBox& box)
{
    const char argument = line.take();
    switch (what) {
    case '+':
        box.requestAddItem(textOf(argument), textOf(line.take()));
        return;
    case '*':
        box.requestAddItem(textOf(argument), line.take() - '0', textOf(argument));
        return;
    case '-':
        box.requestRemoveItem(textOf(argument));
        return;
    case '_':
        box.requestRemoveAllItems();
        return;
    case 'I':
        box.requestRegisterIcon(argument - '0', static_cast<ImageType::Type>(line.take() & 7), picture());
        return;
    default:
        box.requestRetrieveIcon(argument == '+' ? 300 : argument - '0');
    }
}

void Application::readEverything() const
{
    for (int which = 0; which < 2; ++which) {
        const auto readIfThere = [&]<typename Class>(Kind kind, const Class*) {
            if (const Class* const object = get<Class>(firstOf(kind) + which))
                read(*object);
        };
        readIfThere(ContextKind, static_cast<Context*>(nullptr));
        readIfThere(ProfileKind, static_cast<UserProfile*>(nullptr));
        readIfThere(PermissionsKind, static_cast<ApplicationPermissions*>(nullptr));
        readIfThere(ServiceKind, static_cast<ContactService*>(nullptr));
        readIfThere(BoxKind, static_cast<ProfileBox*>(nullptr));
    }
}

void Application::requireConsistency() const
{
    readEverything();
    const auto* const delegate = ServiceBridge::instance()->contactService();
    QSet<QString> handles;
    const QList<Contact> contacts = delegate->allContacts();
    for (const Contact& contact : contacts)
        handles.insert(contact.handle());
    require(handles == m_handles, "the contacts are those that were told of");

    const auto services = Services::getServices();
    const QList<zelsplib::PlatformContact> view = services->contacts()->contactList().toList();
    for (const zelsplib::PlatformContact& record : view) {
        require(record.isInitialized(), "a record without a handle is no contact");
        require(services->contacts()->getContact(record.getUri()) == record, "the view shows the records as they are");
    }

    // An Allowed that is held back until all is there shows before it is told.
    const Context* const context = get<Context>(0);
    if (!context || context->registrationState() != m_told)
        return;
    for (const auto& object : m_objects) {
        if (const Bindings* const bindings = object ? object->findChild<Bindings*>() : nullptr)
            bindings->requireCurrent({"zelSetup"});
    }
}

void Application::requireEverything()
{
    for (int number = 0; number < objectCount; ++number)
        make(number);
    require(get<Context>(0)->isAccessAllowed(), "a service that comes back gives access");
    require(get<UserProfile>(firstOf(ProfileKind))->handle() == "my-handle"_L1, "its profile is there");
    const auto* const service = get<ContactService>(firstOf(ServiceKind));
    require(service->isValid() && service->contactCount() == 2, "its contacts are there, and no others");
    for (const char* handle : {"a", "b"})
        require(service->contact(QLatin1String(handle)).displayName() == QLatin1String(handle), "as it tells them");
    const QList<ProfileBoxItem> items = get<ProfileBox>(firstOf(BoxKind))->items();
    require(items.size() == 1 && items.first().text() == "a"_L1, "its item is there, and no others");
}
