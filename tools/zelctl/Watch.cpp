// SPDX-License-Identifier: Apache-2.0
#include "Watch.h"

#include "Advice.h"
#include "Output.h"
#include "Session.h"

#include <QtCore/QTimer>

using vx::platform::zel::RegistrationState;
using namespace Qt::StringLiterals;

namespace zelctl {

Watch::Watch(Session& session, Output& output, int timeout, QObject* parent)
    : QObject(parent)
    , m_session(session)
    , m_output(output)
    , m_timeout(timeout)
{
    connect(&m_session, &Session::signalled, this, &Watch::onSignal);
}

void Watch::start()
{
    if (!m_session.hasService()) {
        m_output.diagnostic(whyNoService());
        Q_EMIT finished(1); // nothing can ever come
        return;
    }
    QTimer::singleShot(m_timeout, this, [this] {
        if (!m_heardState)
            m_output.diagnostic(u"The service did not tell the registration state within %1 s; still watching."_s.arg(
                m_timeout / 1000.0));
    });
}

void Watch::onSignal(const Record& record)
{
    m_output.signal(record);
    if (m_heardState)
        return;
    m_heardState = true;
    onFirstState();
}

void Watch::onFirstState()
{
    const RegistrationState::Type state = m_session.context().registrationState();
    if (state == RegistrationState::Allowed || state == RegistrationState::Pending)
        return;
    if (!m_session.context().requestRegisterApplication())
        m_output.diagnostic(whyNotRegistered(m_session.context().registrationState()));
}

void Watch::quit()
{
    Q_EMIT finished(0);
}

} // namespace zelctl
