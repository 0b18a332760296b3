// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ApplicationModel.h"
#include "BoxModel.h"
#include "ContactFilter.h"
#include "ContactModel.h"
#include "PersonModel.h"
#include "Service.h"
#include "Timeline.h"
#include "Weather.h"
#include "WireModel.h"

#include <common/ServiceOptions.h>

namespace zeldesk {

/// All that the window shows of one simulator, who must outlive it.
class Desk : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The program makes it.")
    Q_PROPERTY(zeldesk::Service* service READ service CONSTANT FINAL)
    Q_PROPERTY(zeldesk::Timeline* timeline READ timeline CONSTANT FINAL)
    Q_PROPERTY(zeldesk::Weather* weather READ weather CONSTANT FINAL)
    Q_PROPERTY(zeldesk::WireModel* wire READ wire CONSTANT FINAL)
    Q_PROPERTY(zeldesk::ApplicationModel* applications READ applications CONSTANT FINAL)
    Q_PROPERTY(zeldesk::PersonModel* user READ user CONSTANT FINAL)
    Q_PROPERTY(zeldesk::ContactModel* contacts READ contacts CONSTANT FINAL)
    Q_PROPERTY(zeldesk::ContactFilter* shownContacts READ shownContacts CONSTANT FINAL)
    /// The contact that is looked at.
    Q_PROPERTY(zeldesk::PersonModel* contact READ contact CONSTANT FINAL)
    Q_PROPERTY(zeldesk::BoxModel* box READ box CONSTANT FINAL)

public:
    explicit Desk(zelcore::Simulator& simulator, QObject* parent = nullptr)
        : QObject(parent)
        , m_simulator(simulator)
        , m_service(simulator)
        , m_timeline(simulator, m_service)
        , m_weather(simulator, m_service)
        , m_wire(simulator)
        , m_applications(simulator)
        , m_user(simulator)
        , m_contacts(simulator)
        , m_shownContacts(m_contacts)
        , m_contact(simulator)
        , m_box(simulator)
    {
    }

    /// Has the simulator begin with what \a options ask for, and shows that. False, as theirs, when it cannot be.
    bool begin(const zeltools::ServiceOptions& options, QString* problem);

    Service* service() { return &m_service; }
    Timeline* timeline() { return &m_timeline; }
    Weather* weather() { return &m_weather; }
    WireModel* wire() { return &m_wire; }
    ApplicationModel* applications() { return &m_applications; }
    PersonModel* user() { return &m_user; }
    ContactModel* contacts() { return &m_contacts; }
    ContactFilter* shownContacts() { return &m_shownContacts; }
    PersonModel* contact() { return &m_contact; }
    BoxModel* box() { return &m_box; }

private:
    zelcore::Simulator& m_simulator;
    Service m_service;
    Timeline m_timeline;
    Weather m_weather;
    WireModel m_wire;
    ApplicationModel m_applications;
    PersonModel m_user;
    ContactModel m_contacts;
    ContactFilter m_shownContacts;
    PersonModel m_contact;
    BoxModel m_box;
};

} // namespace zeldesk
