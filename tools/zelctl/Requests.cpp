// SPDX-License-Identifier: Apache-2.0
#include "Requests.h"

#include "Commands.h"
#include "NameOf.h"
#include "PictureFile.h"
#include "Session.h"

#include <vx/platform/zel/ApplicationPermissions.h>
#include <vx/platform/zel/Contact.h>
#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>
#include <vx/platform/zel/Utils.h>

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

} // namespace

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
    // Before the request: for a contact without a picture the answer comes at once.
    session.savePictureOf(arguments.text(0), arguments.text("-o"_L1));
    const bool ok = session.contacts().requestDisplayPicture(arguments.text(0));
    if (!ok)
        session.savePictureOf(arguments.text(0), {});
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
    session.saveIcon(arguments.number(0), arguments.text("-o"_L1));
    const bool ok = session.box().requestRetrieveIcon(arguments.number(0));
    if (!ok)
        session.saveIcon(arguments.number(0), {});
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
