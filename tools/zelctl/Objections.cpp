// SPDX-License-Identifier: Apache-2.0
#include "Objections.h"

#include "Arguments.h"
#include "NameOf.h"
#include "Session.h"

#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/ProfileBox.h>

using namespace vx::platform::zel;
using namespace Qt::StringLiterals;

namespace zelctl {

namespace {

struct Advice
{
    RegistrationState::Type state;
    QLatin1String sentence;
};

constexpr Advice advices[] = {
    {RegistrationState::Unknown, QLatin1String("the service has not told yet how things stand, or in words that this "
                                               "library does not know; try again, or look at the service")},
    {RegistrationState::Pending, QLatin1String("a registration is under way; wait for its outcome (zelctl watch)")},
    {RegistrationState::BlockedByUser, QLatin1String("the user blocked this application and must allow it again")},
    {RegistrationState::BlockedByTOV, QLatin1String("the service's operator blocked this application; ask there")},
    {RegistrationState::NoDataConnection, QLatin1String("there is no network; try again when there is")},
    {RegistrationState::UnexpectedError, QLatin1String("the service failed; try again")},
    {RegistrationState::InvalidUuid, QLatin1String("the service does not take this UUID; give another with --uuid")},
    {RegistrationState::TemporaryError, QLatin1String("the service is out of order for a while; try again")},
    {RegistrationState::MaxDownloadsReached, QLatin1String("no more users may run an application with this UUID")},
    {RegistrationState::Expired, QLatin1String("the registration has run out; use a new UUID")},
    {RegistrationState::CancelledByUser, QLatin1String("the user cancelled the registration; ask and try again")},
    {RegistrationState::MaxAppsReached, QLatin1String("the user has too many applications; one must go first")},
    {RegistrationState::ZelDisabled, QLatin1String("the messaging service is switched off; switch it on")},
    {RegistrationState::BlockedEnterprisePerimeter,
     QLatin1String("applications of the work perimeter may not register; run it in the personal one")},
};

} // namespace

QString objectToUnknownContact(Session& session, const Arguments& arguments)
{
    if (!session.contacts().contact(arguments.text(0)).handle().isEmpty())
        return {};
    return u"no contact with the handle '%1' runs this application; 'zelctl contacts' lists those who do"_s.arg(
        arguments.text(0));
}

QString objectToUnknownItem(Session& session, const Arguments& arguments)
{
    if (!session.box().item(arguments.text(0)).id().isEmpty())
        return {};
    return u"the profile box has no item '%1'; 'zelctl box' lists those it has"_s.arg(arguments.text(0));
}

QString objectToItem(Session&, const Arguments& arguments)
{
    const QString text = arguments.text(0);
    if (text.isEmpty() || text.size() > 100)
        return u"the text of an item has 1 to 100 characters, this one has %1"_s.arg(text.size());
    if (text.count(u'\n') + text.count(u'\r') > 2)
        return u"the text of an item has at most two line breaks"_s;
    if (const qsizetype size = arguments.text("--cookie"_L1).size(); size > 128)
        return u"a cookie has at most 128 characters, this one has %1"_s.arg(size);
    return {};
}

QString whyNotRegistered(RegistrationState::Type state)
{
    const QString sentence = u"Not registered, the state is %1"_s.arg(nameOf(state));
    for (const Advice& advice : advices) {
        if (advice.state == state)
            return sentence + ": "_L1 + advice.sentence + u'.';
    }
    return sentence + u'.';
}

QString whyNoService()
{
    const QString object = u"services/zelcore/platform"_s;
    const QString root = qEnvironmentVariable("PPS_ROOT");
    return u"There is no core service at %1. Start zelcore-sim and set PPS_ROOT as it says, or use zelctl --simulate."_s
        .arg((root.isEmpty() ? u"/pps"_s : root) + u'/' + object);
}

} // namespace zelctl
