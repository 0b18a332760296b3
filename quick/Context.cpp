// SPDX-License-Identifier: Apache-2.0
#include <quick/Context.h>

#include <quick/PictureProvider.h>
#include <quick/PictureStore.h>

#include <vx/platform/zel/ContactService.h>

#include <QtCore/QUuid>
#include <QtQml/QQmlInfo>

#include <algorithm>
#include <chrono>

using namespace std::chrono_literals;

namespace zelquick {

Context::Context(QObject* parent)
    : QObject(parent)
    , m_pictures(new PictureStore(this))
{
    m_nextRequest.setSingleShot(true);
    m_nextRequest.setInterval(0);
    connect(&m_nextRequest, &QTimer::timeout, this, &Context::registerByItself);
}

Context::~Context()
{
    if (m_engine)
        m_engine->removeImageProvider(m_pictures->provider());
}

void Context::setUuid(const QString& uuid)
{
    if (uuid == m_uuid)
        return;
    if (m_context) {
        qmlWarning(this) << "the uuid stays what it was when the context was made; make another Context";
        return;
    }
    m_uuid = uuid;
    Q_EMIT uuidChanged();
}

void Context::setRegistration(Registration registration)
{
    if (registration == m_registration)
        return;
    m_registration = registration;
    Q_EMIT registrationChanged();
    if (m_context)
        stateUpdated(m_context->registrationState());
}

zel::RegistrationState::Type Context::registrationState() const
{
    return m_context ? m_context->registrationState() : zel::RegistrationState::Unknown;
}

int Context::platformVersion() const
{
    return m_context ? m_context->platformVersion() : 0;
}

bool Context::requestRegisterApplication()
{
    return m_context && m_context->requestRegisterApplication();
}

bool Context::requestRegisterApplicationSilent()
{
    return m_context && m_context->requestRegisterApplicationSilent();
}

zel::ContactService* Context::contacts()
{
    if (!m_contacts && isReady())
        m_contacts = new zel::ContactService(m_context, this);
    return m_contacts;
}

/// Before any image that is made together with this looks for its picture.
void Context::classBegin()
{
    m_engine = qmlEngine(this);
    if (m_engine)
        m_engine->addImageProvider(m_pictures->provider(), new PictureProvider(m_pictures->link()));
}

void Context::componentComplete()
{
    const auto uuid = QUuid::fromString(m_uuid);
    if (uuid.isNull())
        qmlWarning(this) << "the uuid \"" << m_uuid
                         << "\" is none; give it the one of the application (uuidgen makes one)";
    m_context = new zel::Context(uuid, this);
    connect(m_context, &zel::Context::registrationStateUpdated, this, &Context::stateUpdated);
    connect(m_context, &zel::Context::registrationStateUpdated, this, &Context::registrationStateUpdated);
    connect(m_context, &zel::Context::readyChanged, this, &Context::readyChanged);
    m_pictures->setContext(this);
    Q_EMIT made();
    if (const auto state = m_context->registrationState(); state != zel::RegistrationState::Unknown) {
        stateUpdated(state);
        Q_EMIT registrationStateUpdated(state);
    }
    if (isReady())
        Q_EMIT readyChanged();
}

/// Asks at once, and again after a growing while for as long as the service answers that nothing is registered: a
/// request may have been lost with a service that went away, and one that is refused must not become a storm.
void Context::stateUpdated(zel::RegistrationState::Type state)
{
    const bool isToAsk = state == zel::RegistrationState::Unregistered && m_registration != Manual;
    if (isToAsk && !m_nextRequest.isActive())
        m_nextRequest.start();
    else if (!isToAsk)
        m_nextRequest.stop();
    if (!isToAsk && state != zel::RegistrationState::Pending)
        m_nextRequest.setInterval(0);
}

void Context::registerByItself()
{
    m_nextRequest.setInterval(std::clamp<std::chrono::milliseconds>(2 * m_nextRequest.intervalAsDuration(), 1s, 5min));
    if (m_registration == Silent)
        requestRegisterApplicationSilent();
    else
        requestRegisterApplication();
}

} // namespace zelquick
