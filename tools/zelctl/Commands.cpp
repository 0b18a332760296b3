// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"

#include "NameOf.h"
#include "Objections.h"
#include "PictureFile.h"
#include "Session.h"

#include <vx/platform/zel/ApplicationPermissions.h>
#include <vx/platform/zel/Contact.h>
#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>
#include <vx/platform/zel/Utils.h>

#include <algorithm>

using namespace vx::platform::zel;
using namespace Qt::StringLiterals;

namespace zelctl {

namespace {

Answer request(bool ok)
{
    return {{}, ok, {}};
}

Answer failure(const QString& sentence)
{
    return {{}, {}, sentence};
}

UserStatus::Type statusOf(const QString& word)
{
    return word == "busy"_L1 ? UserStatus::Busy : UserStatus::Available;
}

// --- What is told ------------------------------------------------------------------------------------------------

Answer state(Session& session, const Arguments&)
{
    return {stateRecord(session), {}, {}};
}

Answer permissions(Session& session, const Arguments&)
{
    const auto value = [&session](Permission::Type permission) {
        return nameOf(session.permissions().permissionValue(permission));
    };
    Record record;
    record.text("profileUpdates"_L1, value(Permission::ProfileUpdatesAllowed));
    record.text("contactInvitations"_L1, value(Permission::ContactInvitationsAllowed));
    return {record, {}, {}};
}

Answer profile(Session& session, const Arguments&)
{
    const UserProfile& own = session.profile();
    Record record;
    record.text("displayName"_L1, own.displayName())
        .text("personalMessage"_L1, own.personalMessage())
        .text("status"_L1, nameOf(own.status()))
        .text("statusMessage"_L1, own.statusMessage())
        .text("ppId"_L1, own.ppId())
        .text("handle"_L1, own.handle())
        .text("applicationVersion"_L1, own.applicationVersion())
        .number("zelVersion"_L1, own.zelVersion())
        .number("sdkVersion"_L1, own.sdkVersion())
        .text("displayPictureMimeType"_L1, nameOf(own.displayPictureMimeType()))
        .bytes("displayPictureSize"_L1, "displayPictureSha1"_L1, own.displayPicture());
    return {record, {}, {}};
}

Record contactRecord(const Contact& contact)
{
    Record record;
    record.text("handle"_L1, contact.handle())
        .text("displayName"_L1, contact.displayName())
        .text("personalMessage"_L1, contact.personalMessage())
        .text("status"_L1, nameOf(contact.status()))
        .text("statusMessage"_L1, contact.statusMessage())
        .text("ppId"_L1, contact.ppId())
        .text("applicationVersion"_L1, contact.applicationVersion())
        .number("platformVersion"_L1, contact.platformVersion())
        .number("sdkVersion"_L1, contact.sdkVersion())
        .number("zelVersion"_L1, contact.zelVersion());
    return record;
}

Answer contacts(Session& session, const Arguments&)
{
    const ContactService& service = session.contacts();
    QList<Record> list;
    for (const Contact& one : service.contacts())
        list += contactRecord(one);
    Record record;
    record.flag("valid"_L1, service.isValid()).number("count"_L1, service.contactCount()).list("contacts"_L1, list);
    return {record, {}, {}};
}

Answer contact(Session& session, const Arguments& arguments)
{
    return {Record().record("contact"_L1, contactRecord(session.contacts().contact(arguments.text(0)))), {}, {}};
}

Answer box(Session& session, const Arguments&)
{
    QList<Record> list;
    for (const ProfileBoxItem& item : session.box().items()) {
        list += Record()
                    .text("id"_L1, item.id())
                    .text("text"_L1, item.text())
                    .text("cookie"_L1, item.cookie())
                    .number("iconId"_L1, item.iconId());
    }
    return {Record().number("count"_L1, session.box().itemCount()).list("items"_L1, list), {}, {}};
}

// --- What is asked for -------------------------------------------------------------------------------------------

Answer registerApplication(Session& session, const Arguments& arguments)
{
    return request(arguments.has("--silent"_L1) ? session.context().requestRegisterApplicationSilent()
                                                : session.context().requestRegisterApplication());
}

Answer setMessage(Session& session, const Arguments& arguments)
{
    return request(session.profile().requestUpdatePersonalMessage(arguments.text(0)));
}

bool messageIsSet(Session& session, const Arguments& arguments)
{
    return session.profile().personalMessage() == arguments.text(0);
}

Answer setStatus(Session& session, const Arguments& arguments)
{
    return request(session.profile().requestUpdateStatus(statusOf(arguments.text(0)), arguments.text(1)));
}

bool statusIsSet(Session& session, const Arguments& arguments)
{
    return session.profile().status() == statusOf(arguments.text(0)) &&
           session.profile().statusMessage() == arguments.text(1);
}

Answer setPicture(Session& session, const Arguments& arguments)
{
    QString error;
    const auto picture = readPicture(arguments.text(0), &error);
    if (!picture)
        return failure(error);
    return request(session.profile().requestUpdateDisplayPicture(picture->type, picture->data));
}

bool pictureIsSet(Session& session, const Arguments& arguments)
{
    QString error;
    const auto picture = readPicture(arguments.text(0), &error);
    return picture && !picture->data.isEmpty() && picture->data == session.profile().displayPicture();
}

Answer contactPicture(Session& session, const Arguments& arguments)
{
    const bool ok = session.contacts().requestDisplayPicture(arguments.text(0));
    if (ok && arguments.has("-o"_L1))
        session.savePictureOf(arguments.text(0), arguments.text("-o"_L1));
    return request(ok);
}

Answer boxAdd(Session& session, const Arguments& arguments)
{
    const QString cookie = arguments.text("--cookie"_L1);
    if (arguments.has("--icon"_L1))
        return request(session.box().requestAddItem(arguments.text(0), arguments.number("--icon"_L1), cookie));
    return request(session.box().requestAddItem(arguments.text(0), cookie));
}

Answer boxRemove(Session& session, const Arguments& arguments)
{
    return request(session.box().requestRemoveItem(arguments.text(0)));
}

Answer boxClear(Session& session, const Arguments&)
{
    return request(session.box().requestRemoveAllItems());
}

bool boxIsEmpty(Session& session, const Arguments&)
{
    return session.box().itemCount() == 0;
}

Answer iconRegister(Session& session, const Arguments& arguments)
{
    QString error;
    const auto icon = readPicture(arguments.text(1), &error);
    if (!icon)
        return failure(error);
    return request(session.box().requestRegisterIcon(arguments.number(0), icon->type, icon->data));
}

Answer iconGet(Session& session, const Arguments& arguments)
{
    const bool ok = session.box().requestRetrieveIcon(arguments.number(0));
    if (ok && arguments.has("-o"_L1))
        session.saveIcon(arguments.number(0), arguments.text("-o"_L1));
    return request(ok);
}

Answer ecoId(Session& session, const Arguments& arguments)
{
    return request(session.utils().requestEcoId(arguments.text(0)));
}

Answer ecoStatus(Session& session, const Arguments& arguments)
{
    return request(session.utils().requestEcoIdStatus(arguments.text(0)));
}

Answer invite(Session& session, const Arguments& arguments)
{
    return request(session.utils().sendContactInvitation(arguments.text(0), arguments.text(1), arguments.text(2)));
}

Answer chat(Session& session, const Arguments& arguments)
{
    return request(session.utils().invokeChat(arguments.text(0)));
}

const Option outputOption{"-o"_L1, Parameter{"FILE"_L1}};

std::vector<Command> makeCommands()
{
    const Parameter handle{"HANDLE"_L1};
    const Parameter file{"FILE"_L1};
    const Parameter number{"N"_L1, Parameter::Number};
    const Parameter ecoIdWord{"ECOID"_L1};
    return {
        {"state"_L1, "where the application stands with the service"_L1, Needs::State, {}, state},
        {"register"_L1, "register the application"_L1, Needs::State, {{}, {{"--silent"_L1, {}}}}, registerApplication},
        {"permissions"_L1, "what the user allows the application"_L1, Needs::Access, {}, permissions},
        {"profile"_L1, "the user's own profile"_L1, Needs::Access, {}, profile},
        {"set-message"_L1,
         "change the personal message"_L1,
         Needs::Access,
         {{{"TEXT"_L1}}, {}},
         setMessage,
         {.source = "UserProfile"_L1,
          .signal = "personalMessageUpdated"_L1,
          .sentence = "The personal message is \"{0}\"."_L1,
          .settled = messageIsSet}},
        {"set-status"_L1,
         "change the status and its message"_L1,
         Needs::Access,
         {{{"STATUS"_L1, Parameter::UserStatus}, {"TEXT"_L1}}, {}},
         setStatus,
         {.source = "UserProfile"_L1,
          .signal = "statusUpdated"_L1,
          .sentence = "The status is {0}, \"{1}\"."_L1,
          .settled = statusIsSet}},
        {"set-picture"_L1,
         "change the display picture"_L1,
         Needs::Access,
         {{file}, {}},
         setPicture,
         {.source = "UserProfile"_L1,
          .signal = "displayPictureUpdated"_L1,
          .sentence = "The display picture is {0}."_L1,
          .refused = "a picture has 1 to 32768 bytes"_L1,
          .settled = pictureIsSet}},
        {"contacts"_L1, "the contacts who run the application"_L1, Needs::Contacts, {}, contacts},
        {"contact"_L1,
         "one contact"_L1,
         Needs::Contacts,
         {{handle}, {}},
         contact,
         {.objection = objectToUnknownContact}},
        {"picture"_L1,
         "fetch a contact's display picture"_L1,
         Needs::Contacts,
         {{handle}, {outputOption}},
         contactPicture,
         {.source = "ContactService"_L1,
          .signal = "displayPictureUpdated"_L1,
          .key = "handle"_L1,
          .sentence = "{imageType}, {displayPictureSize} bytes, SHA-1 {displayPictureSha1}"_L1,
          .objection = objectToUnknownContact}},
        {"box"_L1, "the items of the profile box"_L1, Needs::Access, {}, box},
        {"box-add"_L1,
         "add an item to the profile box"_L1,
         Needs::Access,
         {{{"TEXT"_L1}}, {{"--icon"_L1, number}, {"--cookie"_L1, Parameter{"C"_L1}}}},
         boxAdd,
         {.source = "ProfileBox"_L1,
          .signal = "itemAdded"_L1,
          .sentence = "The box has the item {itemId}."_L1,
          .objection = objectToItem}},
        {"box-remove"_L1,
         "remove an item from the profile box"_L1,
         Needs::Access,
         {{{"ID"_L1}}, {}},
         boxRemove,
         {.source = "ProfileBox"_L1,
          .signal = "itemRemoved"_L1,
          .key = "itemId"_L1,
          .sentence = "The item {0} is gone."_L1,
          .objection = objectToUnknownItem}},
        {"box-clear"_L1,
         "remove all items"_L1,
         Needs::Access,
         {},
         boxClear,
         {.source = "ProfileBox"_L1,
          .signal = "itemRemoved"_L1,
          .sentence = "The box is empty."_L1,
          .settled = boxIsEmpty,
          .untilSettled = true}},
        {"icon-register"_L1,
         "register an icon for items"_L1,
         Needs::Access,
         {{number, file}, {}},
         iconRegister,
         {.source = "ProfileBox"_L1,
          .signal = "iconRegistered"_L1,
          .key = "iconId"_L1,
          .sentence = "The icon {0} is registered."_L1,
          .refused = "an icon has 1 to 32768 bytes, an id of 0 or more, and is registered only once"_L1}},
        {"icon-get"_L1,
         "fetch a registered icon"_L1,
         Needs::Access,
         {{number}, {outputOption}},
         iconGet,
         {.source = "ProfileBox"_L1,
          .signal = "iconRetrieved"_L1,
          .key = "iconId"_L1,
          .sentence = "{iconType}, {iconDataSize} bytes, SHA-1 {iconDataSha1}"_L1}},
        {"eco-id"_L1,
         "the eco identifier of a person"_L1,
         Needs::Access,
         {{{"PPID"_L1}}, {}},
         ecoId,
         {.source = "Utils"_L1,
          .signal = "ecoIdUpdated"_L1,
          .key = "ppId"_L1,
          .sentence = "The eco identifier of {0} is \"{ecoId}\"."_L1}},
        {"eco-status"_L1,
         "how the user stands with the owner of an eco identifier"_L1,
         Needs::Access,
         {{ecoIdWord}, {}},
         ecoStatus,
         {.source = "Utils"_L1,
          .signal = "ecoIdStatusUpdated"_L1,
          .key = "ecoId"_L1,
          .sentence = "The status of {0} is {status}."_L1,
          .refused = "an eco identifier is not empty"_L1}},
        {"invite"_L1,
         "invite the owner of an eco identifier"_L1,
         Needs::Access,
         {{ecoIdWord, {"NAME"_L1}, {"MESSAGE"_L1}}, {}},
         invite,
         {.sentence = "The invitation to {0} was handed over."_L1,
          .refused = "no application on this device takes invitations"_L1}},
        {"chat"_L1,
         "open a chat with the owner of an eco identifier"_L1,
         Needs::Access,
         {{ecoIdWord}, {}},
         chat,
         {.sentence = "The chat with {0} was handed over."_L1,
          .refused = "no application on this device takes chats"_L1}},
    };
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

Record stateRecord(Session& session)
{
    const Context& context = session.context();
    Record record;
    record.text("registrationState"_L1, nameOf(context.registrationState()))
        .flag("accessAllowed"_L1, context.isAccessAllowed())
        .flag("zelSetup"_L1, context.isZelSetup())
        .number("platformVersion"_L1, context.platformVersion());
    return record;
}

} // namespace zelctl
