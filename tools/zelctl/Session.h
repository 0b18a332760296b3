// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Record.h"

#include <vx/platform/zel/ApplicationPermissions.h>
#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>
#include <vx/platform/zel/Utils.h>

#include <QtCore/QHash>
#include <QtCore/QMetaMethod>
#include <QtCore/QObject>

#include <memory>

namespace zelctl {

/// The application that zelctl is: the context, and the public objects as an application makes them.
///
/// Until the first Allowed the objects are ones made too early, which answer their defaults and refuse requests.
/// In the slot of that signal they give way to live ones: references from the accessors do not outlive it.
class Session : public QObject
{
    Q_OBJECT

public:
    explicit Session(const QUuid& uuid, QObject* parent = nullptr);

    /// Whether there was a core service when the library started. It stays so for the life of the process.
    bool hasService() const { return m_hasService; }

    vx::platform::zel::Context& context() { return m_context; }
    vx::platform::zel::ApplicationPermissions& permissions() { return m_objects->permissions; }
    vx::platform::zel::UserProfile& profile() { return m_objects->profile; }
    vx::platform::zel::ContactService& contacts() { return m_objects->contacts; }
    vx::platform::zel::ProfileBox& box() { return m_objects->box; }
    vx::platform::zel::Utils& utils() { return m_objects->utils; }

    /// The next picture that arrives for this contact goes to \a fileName too; to no file when that is empty.
    void savePictureOf(const QString& handle, const QString& fileName);
    void saveIcon(int iconId, const QString& fileName);

Q_SIGNALS:
    /// Any signal of any public object, in the order in which they came. Pictures have been saved before.
    void signalled(const zelctl::Record& record);
    /// The live objects are there; after the Allowed that made them has been reported by signalled().
    void liveObjectsMade();
    /// A picture was written.
    void saved(const QString& sentence);
    void saveFailed(const QString& sentence);

private:
    struct Objects
    {
        vx::platform::zel::Context* const context;
        vx::platform::zel::ApplicationPermissions permissions{context};
        vx::platform::zel::UserProfile profile{context};
        vx::platform::zel::ContactService contacts{context};
        vx::platform::zel::ProfileBox box{context};
        vx::platform::zel::Utils utils{context};
    };

    void registrationStateUpdated(vx::platform::zel::RegistrationState::Type state);
    void makeLiveObjects();
    /// Reports every emission of a signal under the names that its class gives it and its arguments.
    template <typename Class, typename... Args>
    void relay(const Class& object, void (Class::*signal)(Args...));
    void report(const QMetaMethod& signal, const QVariantList& arguments);
    void save(QHash<QString, QString>& files, const QString& key, const QByteArray& data);

    vx::platform::zel::Context m_context;
    std::unique_ptr<Objects> m_objects;
    QHash<QString, QString> m_pictureFiles; // handle to file name
    QHash<QString, QString> m_iconFiles;    // icon id to file name
    const bool m_hasService;
    bool m_live = false;
};

} // namespace zelctl
