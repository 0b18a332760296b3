// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/Context.h>
#include <vx/platform/zel/UserProfile.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDebug>

using namespace vx::platform::zel;

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    Context context(QUuid("6f8d2c4e-5b0a-4a37-9d0e-0c8f3f1f2a10")); // one for each application: uuidgen makes it
    if (context.registrationState() == RegistrationState::BlockedByUser)
        return 1; // no service to talk to; standard error says what to do

    // The service speaks first. Registering any earlier is refused, and so is reading the profile before Allowed.
    QObject::connect(&context, &Context::registrationStateUpdated, &app, [&](RegistrationState::Type state) {
        qInfo() << state;
        if (state == RegistrationState::Unregistered) {
            context.requestRegisterApplication();
        } else if (state == RegistrationState::Allowed) {
            qInfo() << "Hello," << UserProfile(&context).displayName();
            app.quit();
        }
    });
    return app.exec();
}
