// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Script.h"

#include <vx/platform/zel/RegistrationState.h>

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QSet>
#include <QtCore/QString>

#include <array>
#include <functional>
#include <memory>

namespace vx::platform::zel {
class ApplicationPermissions;
class ContactService;
class Context;
class ProfileBox;
class UserProfile;
class Utils;
} // namespace vx::platform::zel

/// An application that has every public class twice, and slots that do whatever the input says.
class Application : public QObject
{
    Q_OBJECT

public:
    /// `nested` runs the steps that arrive in an event loop within a slot.
    explicit Application(std::function<void()> nested);
    ~Application() override;

    /// The slots that are called from now on take these, a byte a slot.
    void armSlots(QByteArrayView bytes) { m_armed += bytes.toByteArray(); }
    void request(Line line);
    /// Destroys one object or makes it again.
    void replace(Line line);
    void readEverything() const;
    /// Aborts unless all that the application is shown agrees. For when nothing is under way.
    void requireConsistency() const;
    /// Aborts unless new objects show what Core::announceEverything() tells.
    void requireEverything();
    /// From now on the slots do nothing.
    void disarmSlots() { m_armed.clear(); }

private:
    static constexpr int objectCount = 12;

    void make(int number);
    template <typename Class>
    void follow(Class* object, int number);
    void followContacts();
    void misbehave(int number);
    template <typename Class>
    Class* get(int number) const;
    void requestOfBox(char what, Line& line, vx::platform::zel::ProfileBox& box);
    void requestOfProfile(char what, Line& line, vx::platform::zel::UserProfile& profile);
    void requestOfUtils(char what, Line& line, vx::platform::zel::Utils& utils);

    std::function<void()> const m_nested;
    std::array<std::unique_ptr<QObject>, objectCount> m_objects;
    QByteArray m_armed;
    QSet<QString> m_handles; ///< of contacts, by what the signals told
    vx::platform::zel::RegistrationState::Type m_told = vx::platform::zel::RegistrationState::Unknown;
};
