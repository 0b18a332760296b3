// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"

#include "Objections.h"
#include "Requests.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace zelctl {

namespace {

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
          .member = "displayPictureSize"_L1,
          .nothing = "{0} has no picture."_L1,
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
          .unanswered = "is its icon, if it has one, registered?"_L1,
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
          .sentence = "{iconType}, {iconDataSize} bytes, SHA-1 {iconDataSha1}"_L1,
          .unanswered = "is the icon registered?"_L1}},
        {"eco-id"_L1,
         "the eco identifier of a person"_L1,
         Needs::Access,
         {{{"PPID"_L1}}, {}},
         ecoId,
         {.source = "Utils"_L1,
          .signal = "ecoIdUpdated"_L1,
          .key = "ppId"_L1,
          .sentence = "The eco identifier of {0} is \"{ecoId}\"."_L1,
          .member = "ecoId"_L1,
          .nothing = "The service knows no eco identifier of {0}."_L1}},
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

} // namespace zelctl
