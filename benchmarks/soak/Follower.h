// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>

#include <QtCore/QEventLoop>
#include <QtCore/QObject>
#include <QtCore/QUuid>

#include <functional>
#include <memory>

/// An application that registers and follows its contacts. Each change of one says in the personal message the how many
/// it is, so that it is known whether every one came, once and in order.
class Follower
{
public:
    explicit Follower(const QUuid& application);

    /// Returns once the list is whole, with so many.
    void load(int contacts);
    /// Returns after so many changes more. `seen` is called after each, with its number.
    void follow(int changes, const std::function<void(int number)>& seen);

    /// Changes that came in another order, twice, or not at all.
    int misplaced() const { return m_misplaced; }

private:
    void registrationChanged(vx::platform::zel::RegistrationState::Type state);
    void take(const QString& handle);

    vx::platform::zel::Context m_context;
    std::unique_ptr<vx::platform::zel::ContactService> m_service;
    QEventLoop m_loop;
    std::function<void(int)> m_seen;
    int m_wanted = 0;
    int m_last = 0;
    int m_end = -1;
    int m_misplaced = 0;
};
