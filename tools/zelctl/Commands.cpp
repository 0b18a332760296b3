// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"

#include "PictureFile.h"
#include "Session.h"

#include <vx/platform/zel/ApplicationPermissions.h>
#include <vx/platform/zel/Contact.h>
#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>
#include <vx/platform/zel/Utils.h>

#include <QtCore/QMetaProperty>

#include <algorithm>
#include <numeric>
#include <type_traits>
#include <utility>

using namespace vx::platform::zel;
using namespace Qt::StringLiterals;

namespace zelctl {

namespace {

/// The properties of these names, between blanks.
template <typename Class>
Record read(const Class& object, const char* names)
{
    const QMetaObject& meta = Class::staticMetaObject;
    Record record;
    for (const QByteArray& name : QByteArray(names).split(' ')) {
        const QMetaProperty property = meta.property(meta.indexOfProperty(name.constData()));
        if constexpr (std::is_base_of_v<QObject, Class>)
            record.add(QString::fromLatin1(name), property.read(&object));
        else
            record.add(QString::fromLatin1(name), property.readOnGadget(&object));
    }
    return record;
}

template <typename Element>
QVariant readAll(const QList<Element>& elements, const char* names)
{
    QList<Record> records;
    for (const Element& element : elements)
        records += read(element, names);
    return QVariant::fromValue(records);
}

constexpr const char* contactMembers = "handle displayName personalMessage status statusMessage ppId "
                                       "applicationVersion platformVersion sdkVersion zelVersion";

Answer request(bool ok)
{
    return {.ok = ok};
}

/// A request with the picture of a file.
template <typename Request>
Answer withPicture(const QString& fileName, Request request)
{
    QString error;
    const auto picture = readPicture(fileName, &error);
    return picture ? Answer{.ok = request(*picture)} : Answer{.failure = error};
}

UserStatus::Type statusOf(const Arguments& arguments)
{
    return arguments.text(0) == "busy"_L1 ? UserStatus::Busy : UserStatus::Available;
}

Answer permissions(Session& session, const Arguments&)
{
    const auto value = [&](Permission::Type permission) {
        return QVariant::fromValue(session.permissions().permissionValue(permission));
    };
    return {Record()
                .add(u"profileUpdates"_s, value(Permission::ProfileUpdatesAllowed))
                .add(u"contactInvitations"_s, value(Permission::ContactInvitationsAllowed))};
}

Answer profile(Session& session, const Arguments&)
{
    return {read(session.profile(), "displayName personalMessage status statusMessage ppId handle applicationVersion "
                                    "zelVersion sdkVersion displayPictureMimeType displayPicture")};
}

Answer contacts(Session& session, const Arguments&)
{
    const ContactService& service = session.contacts();
    return {Record()
                .add(u"valid"_s, service.isValid())
                .add(u"complete"_s, service.isComplete())
                .add(u"count"_s, service.contactCount())
                .add(u"contacts"_s, readAll(service.contacts(), contactMembers))};
}

Answer contact(Session& session, const Arguments& arguments)
{
    const Record record = read(session.contacts().contact(arguments.text(0)), contactMembers);
    return {Record().add(u"contact"_s, QVariant::fromValue(record))};
}

Answer picture(Session& session, const Arguments& arguments)
{
    // Before the request: for a contact without a picture the answer comes at once.
    session.savePictureOf(arguments.text(0), arguments.text(u"-o"_s));
    const bool ok = session.contacts().requestDisplayPicture(arguments.text(0));
    if (!ok)
        session.savePictureOf(arguments.text(0), {});
    return request(ok);
}

Answer box(Session& session, const Arguments&)
{
    QVariantList icons;
    for (const int icon : session.box().registeredIcons())
        icons += icon;
    return {Record()
                .add(u"count"_s, session.box().itemCount())
                .add(u"icons"_s, icons)
                .add(u"items"_s, readAll(session.box().items(), "id text cookie iconId"))};
}

Answer boxAdd(Session& session, const Arguments& arguments)
{
    const QString cookie = arguments.text(u"--cookie"_s);
    return request(arguments.has(u"--icon"_s)
                       ? session.box().requestAddItem(arguments.text(0), arguments.number(u"--icon"_s), cookie)
                       : session.box().requestAddItem(arguments.text(0), cookie));
}

Answer iconGet(Session& session, const Arguments& arguments)
{
    const bool ok = session.box().requestRetrieveIcon(arguments.number(0));
    if (ok)
        session.saveIcon(arguments.number(0), arguments.text(u"-o"_s));
    return request(ok);
}

bool pictureIsSet(Session& session, const Arguments& arguments)
{
    QString error;
    const auto picture = readPicture(arguments.text(0), &error);
    return picture && picture->data == session.profile().displayPicture();
}

std::vector<Command> makeCommands()
{
    using S = Session;
    using A = Arguments;
    return {
        {u"state"_s,
         {},
         u"where the application stands with the service"_s,
         u"state"_s,
         Needs::State,
         [](S& session, const A&) {
             return Answer{stateRecord(session).add(u"ready"_s, session.context().isReady())};
         }},
        {u"register"_s, u"[--silent]"_s, u"register the application"_s, u"register"_s, Needs::State,
         [](S& session, const A& arguments) {
             return request(arguments.has(u"--silent"_s) ? session.context().requestRegisterApplicationSilent()
                                                         : session.context().requestRegisterApplication());
         }},
        {u"permissions"_s, {}, u"what the user allows the application"_s, u"permissions"_s, Needs::Access, permissions},
        {u"profile"_s, {}, u"the user's own profile"_s, u"profile"_s, Needs::Access, profile},
        {u"set-message"_s,
         u"TEXT"_s,
         u"change the personal message"_s,
         u"set-message 'Back at five'"_s,
         Needs::Access,
         [](S& session, const A& a) { return request(session.profile().requestUpdatePersonalMessage(a.text(0))); },
         {.signal = u"UserProfile.personalMessageUpdated"_s,
          .sentence = u"The personal message is \"{0}\"."_s,
          .settled = [](S& session, const A& a) { return session.profile().personalMessage() == a.text(0); }}},
        {u"set-status"_s,
         u"available|busy TEXT"_s,
         u"change the status and its message"_s,
         u"set-status busy 'In a meeting'"_s,
         Needs::Access,
         [](S& session, const A& a) { return request(session.profile().requestUpdateStatus(statusOf(a), a.text(1))); },
         {.signal = u"UserProfile.statusUpdated"_s,
          .sentence = u"The status is {0}, \"{1}\"."_s,
          .settled =
              [](S& session, const A& a) {
                  return session.profile().status() == statusOf(a) && session.profile().statusMessage() == a.text(1);
              }}},
        {u"set-picture"_s,
         u"FILE"_s,
         u"change the display picture"_s,
         u"set-picture me.png"_s,
         Needs::Access,
         [](S& session, const A& a) {
             return withPicture(a.text(0), [&](const Picture& picture) {
                 return session.profile().requestUpdateDisplayPicture(picture.type, picture.data);
             });
         },
         {.signal = u"UserProfile.displayPictureUpdated"_s,
          .sentence = u"The display picture is {0}."_s,
          .takes = u"a picture has 1 to %1 bytes"_s.arg(UserProfile::maximumPictureSize),
          .settled = pictureIsSet}},
        {u"contacts"_s, {}, u"the contacts who run the application"_s, u"contacts"_s, Needs::Contacts, contacts},
        {u"contact"_s, u"HANDLE"_s, u"one contact"_s, u"contact anna"_s, Needs::Contacts, contact},
        {u"picture"_s,
         u"HANDLE [-o FILE]"_s,
         u"fetch a contact's display picture"_s,
         u"picture anna -o anna.png"_s,
         Needs::Contacts,
         picture,
         {.signal = u"ContactService.displayPictureUpdated"_s,
          .key = u"handle"_s,
          .sentence = u"{imageType}, {displayPictureSize} bytes, SHA-1 {displayPictureSha1}|{0} has no picture."_s}},
        {u"box"_s, {}, u"the items of the profile box, and the icons they may name"_s, u"box"_s, Needs::Access, box},
        {u"box-add"_s,
         u"TEXT [--icon N] [--cookie C]"_s,
         u"add an item to the profile box"_s,
         u"box-add 'Reached level 3' --icon 7"_s,
         Needs::Access,
         boxAdd,
         {.signal = u"ProfileBox.itemAdded"_s,
          .sentence = u"The box has the item {itemId}."_s,
          .takes = u"an item has a text of 1 to %1 characters with at most %2 line breaks, a cookie of at most %3 "
                   "characters, and an icon, if any, that is registered"_s.arg(ProfileBox::maximumTextLength)
                       .arg(ProfileBox::maximumLineBreaks)
                       .arg(ProfileBox::maximumCookieLength)}},
        {u"box-remove"_s,
         u"ID"_s,
         u"remove an item from the profile box"_s,
         u"box-remove item-1"_s,
         Needs::Access,
         [](S& session, const A& a) { return request(session.box().requestRemoveItem(a.text(0))); },
         {.signal = u"ProfileBox.itemRemoved"_s, .key = u"itemId"_s, .sentence = u"The item {0} is gone."_s}},
        {u"box-clear"_s,
         {},
         u"remove all items"_s,
         u"box-clear"_s,
         Needs::Access,
         [](S& session, const A&) { return request(session.box().requestRemoveAllItems()); },
         {.signal = u"ProfileBox.itemRemoved"_s,
          .sentence = u"The box is empty."_s,
          .settled = [](S& session, const A&) { return session.box().itemCount() == 0; }}},
        {u"icon-register"_s,
         u"N FILE"_s,
         u"register an icon for items"_s,
         u"icon-register 7 star.png"_s,
         Needs::Access,
         [](S& session, const A& a) {
             return withPicture(a.text(1), [&](const Picture& icon) {
                 return session.box().requestRegisterIcon(a.number(0), icon.type, icon.data);
             });
         },
         {.signal = u"ProfileBox.iconRegistered"_s,
          .key = u"iconId"_s,
          .sentence = u"The icon {0} is registered."_s,
          .takes = u"an icon has 1 to %1 bytes, an id of 0 or more, and is registered only once"_s.arg(
              ProfileBox::maximumIconSize)}},
        {u"icon-get"_s,
         u"N [-o FILE]"_s,
         u"fetch a registered icon"_s,
         u"icon-get 7 -o star.png"_s,
         Needs::Access,
         iconGet,
         {.signal = u"ProfileBox.iconRetrieved"_s,
          .key = u"iconId"_s,
          .sentence = u"{iconType}, {iconDataSize} bytes, SHA-1 {iconDataSha1}"_s,
          .takes = u"only an icon that is registered can be fetched"_s}},
        {u"eco-id"_s,
         u"PPID"_s,
         u"the eco identifier of a person"_s,
         u"eco-id pp-anna"_s,
         Needs::Access,
         [](S& session, const A& a) { return request(session.utils().requestEcoId(a.text(0))); },
         {.signal = u"Utils.ecoIdUpdated"_s,
          .key = u"ppId"_s,
          .sentence = u"The eco identifier of {0} is \"{ecoId}\".|The service knows no eco identifier of {0}."_s}},
        {u"eco-status"_s,
         u"ECOID"_s,
         u"how the user stands with the owner of an eco identifier"_s,
         u"eco-status eco-pp-anna"_s,
         Needs::Access,
         [](S& session, const A& a) { return request(session.utils().requestEcoIdStatus(a.text(0))); },
         {.signal = u"Utils.ecoIdStatusUpdated"_s,
          .key = u"ecoId"_s,
          .sentence = u"The status of {0} is {status}."_s,
          .takes = u"an eco identifier is not empty"_s}},
        {u"invite"_s,
         u"ECOID NAME MESSAGE"_s,
         u"invite the owner of an eco identifier"_s,
         u"invite eco-stranger 'Robin Vale' 'Shall we be contacts?'"_s,
         Needs::Access,
         [](S& session, const A& a) {
             return request(session.utils().sendContactInvitation(a.text(0), a.text(1), a.text(2)));
         },
         {.sentence = u"The invitation to {0} was handed over."_s,
          .takes = u"no application on this device takes invitations"_s}},
        {u"chat"_s,
         u"ECOID"_s,
         u"open a chat with the owner of an eco identifier"_s,
         u"chat eco-pp-anna"_s,
         Needs::Access,
         [](S& session, const A& a) { return request(session.utils().invokeChat(a.text(0))); },
         {.sentence = u"The chat with {0} was handed over."_s,
          .takes = u"no application on this device takes chats"_s}},
    };
}

/// With so many a word is still known for what was meant.
constexpr int mostSlips = 2;

/// How many letters have to be put in, taken out or replaced to make the one of the other.
int slips(QStringView one, QStringView other)
{
    std::vector<int> row(std::size_t(other.size()) + 1);
    std::iota(row.begin(), row.end(), 0);
    for (const QChar letter : one) {
        int diagonal = std::exchange(row[0], row[0] + 1);
        for (std::size_t i = 1; i < row.size(); ++i) {
            const int replaced = diagonal + (letter == other[qsizetype(i) - 1] ? 0 : 1);
            diagonal = std::exchange(row[i], std::min({row[i] + 1, row[i - 1] + 1, replaced}));
        }
    }
    return row.back();
}

} // namespace

const std::vector<Command>& commands()
{
    static const std::vector<Command> all = makeCommands();
    return all;
}

const Command* findCommand(const QString& name)
{
    const auto found = std::find_if(commands().begin(), commands().end(),
                                    [&name](const Command& command) { return command.name == name; });
    return found == commands().end() ? nullptr : &*found;
}

QString unknownCommand(const QString& name)
{
    QStringList names{u"watch"_s, u"shell"_s, u"help"_s, u"quit"_s};
    for (const Command& command : commands())
        names += command.name;
    names.removeIf([&name](const QString& other) { return qAbs(name.size() - other.size()) > mostSlips; });
    const auto nearest = std::min_element(names.cbegin(), names.cend(), [&name](const QString& a, const QString& b) {
        return slips(name, a) < slips(name, b);
    });
    const QString text = u"there is no command '%1'"_s.arg(name);
    const bool isNear = nearest != names.cend() && slips(name, *nearest) <= mostSlips;
    return isNear ? u"%1, but '%2'"_s.arg(text, *nearest) : text;
}

QString helpOn(const QString& name, const QString& program)
{
    const QString form = program + u"%1\n  %2\n  for example: "_s + program + u"%3"_s;
    if (name == "watch"_L1)
        return form.arg(name, u"register if allowed, and print every signal until interrupted"_s, name);
    if (name == "shell"_L1)
        return form.arg(name, u"take commands from standard input, a line each"_s, u"--json shell"_s);
    const Command* command = findCommand(name);
    if (!command)
        return {};
    const QString usage = (name + u' ' + command->usage).trimmed();
    QString text = form.arg(usage, command->summary, command->example);
    if (!command->outcome.takes.isEmpty())
        text += u"\n  refused or not answered? "_s + command->outcome.takes;
    return text;
}

QString objectionTo(const Command& command, const Arguments& arguments, Session& session)
{
    const QString name = arguments.text(0);
    const QString wanted = parametersOf(command.usage).value(0);
    if (wanted == "HANDLE"_L1 && session.contacts().contact(name).handle().isEmpty())
        return u"no contact with the handle '%1' runs this application; 'zelctl contacts' lists those who do"_s.arg(
            name);
    if (wanted == "ID"_L1 && session.box().item(name).id().isEmpty())
        return u"the profile box has no item '%1'; 'zelctl box' lists those it has"_s.arg(name);
    return {};
}

Record stateRecord(Session& session)
{
    return read(session.context(), "registrationState accessAllowed zelSetup platformVersion");
}

} // namespace zelctl
