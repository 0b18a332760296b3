// SPDX-License-Identifier: Apache-2.0
#include "Advice.h"

#include "Record.h"

#include <QtCore/QFile>

#include <cerrno>
#include <cstdlib>
#include <unistd.h>

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
    {RegistrationState::Unknown, "the service has not told yet how things stand, or in words that this "
                                 "library does not know; try again, or look at the service"_L1},
    {RegistrationState::Pending, "a registration is under way; wait for its outcome (zelctl watch)"_L1},
    {RegistrationState::BlockedByUser, "the user blocked this application and must allow it again"_L1},
    {RegistrationState::BlockedByTOV, "the service's operator blocked this application; ask there"_L1},
    {RegistrationState::NoDataConnection, "there is no network; try again when there is"_L1},
    {RegistrationState::UnexpectedError, "the service failed; try again"_L1},
    {RegistrationState::InvalidUuid, "the service does not take this UUID; give another with --uuid"_L1},
    {RegistrationState::TemporaryError, "the service is out of order for a while; try again"_L1},
    {RegistrationState::MaxDownloadsReached, "no more users may run an application with this UUID"_L1},
    {RegistrationState::Expired, "the registration has run out; use a new UUID"_L1},
    {RegistrationState::CancelledByUser, "the user cancelled the registration; ask and try again"_L1},
    {RegistrationState::MaxAppsReached, "the user has too many applications; one must go first"_L1},
    {RegistrationState::ZelDisabled, "the messaging service is switched off; switch it on"_L1},
    {RegistrationState::BlockedEnterprisePerimeter,
     "applications of the work perimeter may not register; run it in the personal one"_L1},
};

} // namespace

QString whyNotRegistered(RegistrationState::Type state)
{
    const QString sentence = u"Not registered, the state is %1"_s.arg(nameOf(QVariant::fromValue(state)));
    for (const Advice& advice : advices) {
        if (advice.state == state)
            return sentence + ": "_L1 + advice.sentence + u'.';
    }
    return sentence + u'.';
}

QString whyNoService()
{
    const QByteArray root = ::secure_getenv("PPS_ROOT");
    const QByteArray object = (root.isEmpty() ? "/pps" : root) + "/services/zelcore/platform";
    const bool isAbsent = ::access(object, F_OK) == 0 || errno == ENOENT || errno == ENOTDIR;
    return u"There is no core service at %1%2. Start zelcore-sim and set PPS_ROOT as it says, or use zelctl --simulate."_s
        .arg(QFile::decodeName(object), isAbsent ? QString() : " ("_L1 + qt_error_string() + u')');
}

} // namespace zelctl
