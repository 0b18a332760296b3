// SPDX-License-Identifier: Apache-2.0
#include <simulator/scenarios/ActivityMaker.h>

#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

/// Rates above this many a second do several things at a time.
constexpr double ticksPerSecond = 200;

} // namespace

ActivityMaker::ActivityMaker(World& world, std::function<void(const QString&)> invite, QObject* parent)
    : QObject(parent)
    , m_world(world)
    , m_invite(std::move(invite))
{
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &ActivityMaker::tick);
}

void ActivityMaker::set(Simulator::Activity activity, double perSecond, quint32 seed)
{
    m_activity = activity;
    m_people = PeopleMaker(seed);
    m_due = 0;
    m_perTick = qMax(1.0, perSecond / ticksPerSecond);
    const double pause = perSecond > 0 ? 1000 / qMin(perSecond, ticksPerSecond) : 0;
    m_timer.setInterval(int(qMin<double>(pause, std::numeric_limits<int>::max())));
    setPaused(m_paused);
}

void ActivityMaker::setPaused(bool paused)
{
    m_paused = paused;
    if (m_paused || m_timer.interval() == 0)
        m_timer.stop();
    else
        m_timer.start();
}

void ActivityMaker::tick()
{
    for (m_due += m_perTick; m_due >= 1; m_due -= 1)
        act(m_activity);
}

void ActivityMaker::act(Simulator::Activity activity)
{
    using Activity = Simulator::Activity;
    if (activity == Activity::Mixed) {
        static constexpr Activity others[] = {Activity::Installs, Activity::Uninstalls, Activity::Invitations};
        const int chance = m_people.below(10);
        activity = chance < 3 ? others[chance] : Activity::Changes;
    }
    if (activity == Activity::Installs) {
        install();
        return;
    }
    const QList<QString>& installed = m_world.installed();
    if (installed.isEmpty())
        return;
    const QString userId = installed.at(m_people.below(int(installed.size())));
    if (activity == Activity::Changes)
        change(userId);
    else if (activity == Activity::Uninstalls)
        m_world.setInstalled(userId, false);
    else
        m_invite(userId);
}

void ActivityMaker::change(const QString& userId)
{
    Person person = *m_world.contact(userId);
    switch (m_people.below(4)) {
    case 0:
        person.personalMessage = m_people.message();
        break;
    case 1:
        person.statusMessage = m_people.status();
        break;
    case 2: {
        const QList<QByteArray>& pictures = m_people.pictures();
        person.avatarId = m_world.keepPicture(pictures.at(m_people.below(int(pictures.size()))));
        person.avatarMimeType = u"image/png"_s;
        break;
    }
    default:
        person.showBusy = !person.showBusy;
    }
    m_world.changeContact(person);
}

/// Somebody who knows the user but does not run the application starts to; where there is nobody, somebody new.
void ActivityMaker::install()
{
    const QList<QString>& everybody = m_world.everybody();
    const int count = int(everybody.size());
    const int start = count > 0 ? m_people.below(count) : 0;
    // All but a few run it as a rule: looking at a few of many is enough, and does not grow with their number.
    for (int i = 0; i < qMin(count, 64); ++i) {
        const QString userId = everybody.at((start + i) % count);
        if (!m_world.isInstalled(userId)) {
            m_world.setInstalled(userId, true);
            return;
        }
    }
    Person person = m_people.next(m_world.addedContacts());
    for (const QByteArray& picture : m_people.pictures())
        m_world.keepPicture(picture);
    m_world.addContact(person, true);
}

} // namespace zelcore
