// SPDX-License-Identifier: Apache-2.0
#include "Service.h"

#include <common/Root.h>

#include <QtCore/QDir>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>

using namespace Qt::StringLiterals;

namespace zeldesk {

using zelcore::Simulator;

Service::Service(Simulator& simulator, QObject* parent)
    : QObject(parent)
    , m_simulator(simulator)
{
    connect(&simulator, &Simulator::awayChanged, this, &Service::awayChanged);
    connect(&simulator, &Simulator::permissionsChanged, this, &Service::permissionsChanged);
    connect(&simulator, &Simulator::registrationStateChanged, this, &Service::registrationChanged);
    connect(&simulator, &Simulator::clientCountChanged, this, &Service::registrationChanged);
    connect(&simulator, &Simulator::refused, this, [this](const QString& line) { note(line, true); });
    connect(&simulator, &Simulator::invocationReceived, this,
            [this](const QString& target, const QString& action, const QString&, const QByteArray&) {
                note(u"%1 was invoked: %2"_s.arg(target, action));
            });
    connect(&simulator, &Simulator::commandExecuted, this, [this](const QString& line, const QString&) {
        note(u"scenario: "_s + line);
        Q_EMIT ordersChanged();
    });
    connect(&simulator, &Simulator::worldReset, this, &Service::permissionsChanged);
    connect(&simulator, &Simulator::worldReset, this, &Service::ordersChanged);
    connect(this, &Service::ordersChanged, this, &Service::registrationChanged);
    connect(this, &Service::ordersChanged, this, &Service::recordingChanged);
}

QString Service::exportLine() const
{
    return zeltools::exportLine(m_simulator.root());
}

void Service::setAway(bool away)
{
    QString problem;
    if (away)
        m_simulator.goAway();
    else if (!m_simulator.comeBack(&problem))
        note(problem, true);
    Q_EMIT awayChanged(); // a switch that was moved in vain moves back
}

void Service::setRegistrationState(const QString& state)
{
    m_simulator.setRegistrationState(state);
    Q_EMIT registrationChanged();
}

void Service::setRegistrationPolicy(int policy, const QString& state, int delay)
{
    m_simulator.setRegistrationPolicy(Simulator::RegistrationPolicy(policy), state, delay);
    Q_EMIT registrationChanged();
}

bool Service::execute(const QString& line)
{
    QString reply;
    const bool isDone = m_simulator.execute(line, &reply);
    note(reply.isEmpty() ? line : line + u": "_s + reply, !isDone);
    Q_EMIT ordersChanged();
    return isDone;
}

bool Service::record(const QString& path)
{
    const bool isAtHome = path.startsWith("~/"_L1);
    const QString file = QDir::current().absoluteFilePath(isAtHome ? QDir::homePath() + path.mid(1) : path);
    QString problem;
    const bool isDone = m_simulator.record(file, &problem);
    if (isDone)
        recordsInto(file);
    else
        note(problem, true);
    return isDone;
}

QString Service::newRecording() const
{
    const QDir folder = QDir::current();
    QString name = u"wire.jsonl"_s;
    for (int number = 2; folder.exists(name); ++number)
        name = u"wire-%1.jsonl"_s.arg(number);
    return folder.absoluteFilePath(name);
}

void Service::recordsInto(const QString& path)
{
    note(u"recording into %1; what is in it is personal"_s.arg(path));
    Q_EMIT recordingChanged();
}

void Service::stopRecording()
{
    m_simulator.stopRecording();
    note(u"the recording is complete"_s);
    Q_EMIT recordingChanged();
}

void Service::reset()
{
    m_simulator.reset();
    note(u"a world of its own again"_s);
}

void Service::copyExportLine() const
{
    QGuiApplication::clipboard()->setText(exportLine());
}

void Service::note(const QString& line, bool isComplaint)
{
    m_notices.prepend(line);
    if (m_notices.size() > mostNotices)
        m_notices.removeLast();
    m_isComplaint = isComplaint;
    Q_EMIT noticed();
}

void Service::allow(bool zelcore::Permissions::*permission, bool on)
{
    zelcore::Permissions permissions = m_simulator.permissions();
    permissions.*permission = on;
    m_simulator.setPermissions(permissions);
}

} // namespace zeldesk
