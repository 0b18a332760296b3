// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/Context.h>

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QString>
#include <QtCore/QTimer>
#include <QtQml/QQmlEngine>
#include <QtQml/QQmlParserStatus>
#include <QtQml/qqmlregistration.h>

namespace vx::platform::zel {
class ContactService;
}

namespace zelquick {

namespace zel = vx::platform::zel;

class PictureStore;

/// The first object of an application: it carries the UUID, registers the application if it is told to, and says how
/// that stands. The other types take it as their `context` and may be made together with it.
///
/// The public context is made when the component is complete, and lives as long as this does.
class Context : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT
    Q_PROPERTY(QString uuid READ uuid WRITE setUuid NOTIFY uuidChanged REQUIRED FINAL)
    Q_PROPERTY(Registration registration READ registration WRITE setRegistration NOTIFY registrationChanged FINAL)
    Q_PROPERTY(vx::platform::zel::RegistrationState::Type registrationState READ registrationState NOTIFY
                   registrationStateUpdated FINAL)
    Q_PROPERTY(bool accessAllowed READ isAccessAllowed NOTIFY registrationStateUpdated FINAL)
    Q_PROPERTY(bool ready READ isReady NOTIFY readyChanged FINAL)
    Q_PROPERTY(bool zelSetup READ isZelSetup NOTIFY registrationStateUpdated FINAL)
    Q_PROPERTY(int platformVersion READ platformVersion NOTIFY made FINAL)

public:
    /// Who asks for the registration when the state is Unregistered.
    enum Registration {
        Manual,    ///< the application
        Automatic, ///< this object; the service may ask the user
        Silent,    ///< this object, and nobody is asked
    };
    Q_ENUM(Registration)

    explicit Context(QObject* parent = nullptr);
    ~Context() override;

    QString uuid() const { return m_uuid; }
    void setUuid(const QString& uuid);
    Registration registration() const { return m_registration; }
    void setRegistration(Registration registration);
    zel::RegistrationState::Type registrationState() const;
    bool isAccessAllowed() const { return m_context && m_context->isAccessAllowed(); }
    bool isReady() const { return m_context && m_context->isReady(); }
    bool isZelSetup() const { return m_context && m_context->isZelSetup(); }
    int platformVersion() const;

    Q_INVOKABLE bool requestRegisterApplication();
    Q_INVOKABLE bool requestRegisterApplicationSilent();

    /// Null before the component is complete; made() tells.
    zel::Context* publicContext() const { return m_context; }
    /// One for all who only look at single contacts: each that is made reads the whole list. Null without access before
    /// the context was ready for the first time.
    zel::ContactService* contacts();
    PictureStore& pictures() const { return *m_pictures; }

    void classBegin() override;
    void componentComplete() override;

Q_SIGNALS:
    void uuidChanged();
    void registrationChanged();
    /// As that of the public class.
    void registrationStateUpdated(vx::platform::zel::RegistrationState::Type state);
    void readyChanged();
    /// publicContext() is there.
    void made();

private:
    void registerByItself();
    void stateUpdated(zel::RegistrationState::Type state);

    QString m_uuid;
    Registration m_registration = Manual;
    zel::Context* m_context = nullptr;
    zel::ContactService* m_contacts = nullptr;
    PictureStore* const m_pictures;
    QPointer<QQmlEngine> m_engine; // which has the provider of the pictures
    QTimer m_nextRequest;
};

} // namespace zelquick
