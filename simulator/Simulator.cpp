// SPDX-License-Identifier: Apache-2.0
// The public calls, long as the list is: a few lines each, which hand on to where a thing is done.
#include <zelcore/Simulator.h>

#include <simulator/ClientLibrary.h>
#include <simulator/recordings/Anonymiser.h>
#include <simulator/scenarios/Commands.h>
#include <simulator/SimulatorPrivate.h>
#include <simulator/scenarios/Words.h>
#include <simulator/world/People.h>

#include <QtCore/QDir>

using namespace Qt::StringLiterals;

namespace zelcore {

/// What may fail with a sentence; for a caller who has no place for it, it is a warning.
template <typename Attempt>
static bool orWarned(const SimulatorPrivate& simulator, QString* given, Attempt attempt)
{
    QString own;
    const bool done = attempt(given ? given : &own);
    if (!done && !given)
        simulator.warn(own);
    return done;
}

Simulator::Simulator(QObject* parent)
    : QObject(parent)
    , d(std::make_unique<SimulatorPrivate>(this))
{
}

Simulator::~Simulator() = default;

// --- Life -------------------------------------------------------------------------------------------------------

void Simulator::setRoot(const QString& folder)
{
    if (d->running)
        d->refuse(u"the folder cannot change while the service runs"_s);
    else
        d->root = QDir(folder).absolutePath();
}

QString Simulator::root() const
{
    return d->root;
}

bool Simulator::exportRoot(QString* error) const
{
    const QString problem =
        d->root.isEmpty() ? u"no root: call setRoot() or start() first"_s : clientlibrary::freeFor(d->root);
    if (error)
        *error = problem;
    else if (!problem.isEmpty())
        d->warn(problem);
    return problem.isEmpty() && qputenv("PPS_ROOT", QFile::encodeName(d->root));
}

bool Simulator::start(QString* error)
{
    return orWarned(*d, error, [this](QString* problem) { return d->start(problem); });
}

void Simulator::stop()
{
    d->stop();
}

bool Simulator::isRunning() const
{
    return d->running;
}

void Simulator::goAway()
{
    d->goAway();
}

bool Simulator::comeBack(QString* error)
{
    return orWarned(*d, error, [this](QString* problem) { return d->comeBack(problem); });
}

bool Simulator::isAway() const
{
    return d->away;
}

int Simulator::clientCount() const
{
    return int(d->server.clients().size());
}

void Simulator::reset()
{
    d->reset();
}

QList<Client> Simulator::clients() const
{
    QList<Client> clients;
    const auto& sessions = d->service.context().sessions;
    for (const int number : d->server.clients()) {
        const auto found = sessions.find(number);
        const bool isKnown = found != sessions.end();
        clients.append({number, isKnown ? found->second->uuid : QString(), isKnown ? found->second->state : QString(),
                        d->server.processOf(number)});
    }
    return clients;
}

// --- Registration and permissions -------------------------------------------------------------------------------

void Simulator::setRegistrationPolicy(RegistrationPolicy policy, const QString& fixedState, int delay)
{
    if (policy == RegistrationPolicy::Fixed)
        d->lookAt(fixedState);
    d->service.registrar().setPolicy(policy, fixedState, delay);
}

Simulator::RegistrationPolicy Simulator::registrationPolicy() const
{
    return d->service.registrar().policy();
}

QString Simulator::registrationOutcome() const
{
    return d->service.registrar().outcome();
}

int Simulator::registrationDelay() const
{
    return d->service.registrar().delay();
}

bool Simulator::setRegistrationState(const QString& state, const QString& application)
{
    const std::optional<Addressee> whose = d->addressee(application);
    const bool done = whose && d->accepted(d->service.setRegistrationState(state, *whose));
    if (done)
        d->lookAt(state);
    return done;
}

QString Simulator::registrationState(const QString& application) const
{
    const std::optional<Addressee> whose = Addressee::of(application);
    QString problem;
    return whose ? d->service.registrationState(*whose, &problem) : QString();
}

QStringList Simulator::registeredUuids() const
{
    return d->service.registrar().registered();
}

bool Simulator::setRegistered(const QString& uuid, bool registered)
{
    return d->accepted(d->service.registrar().setRegistered(uuid, registered));
}

bool Simulator::rememberRegistrations(const QString& path, QString* error)
{
    return orWarned(*d, error, [&](QString* problem) {
        *problem = d->service.registrar().remember(path);
        return problem->isEmpty();
    });
}

QStringList Simulator::registrationStates()
{
    static const QStringList states{u"Success"_s,
                                    u"Unknown"_s,
                                    u"Unregistered"_s,
                                    u"Pending"_s,
                                    u"BlockedByUser"_s,
                                    u"BlockedByTov"_s,
                                    u"NoDataConnection"_s,
                                    u"UnexpectedError"_s,
                                    u"InvalidUuid"_s,
                                    u"TemporaryError"_s,
                                    u"MaximumUsersReached"_s,
                                    u"Expired"_s,
                                    u"CancelledByUser"_s,
                                    u"MaximumAppsReached"_s,
                                    u"ZelDisabled"_s,
                                    u"BlockedEnterprisePerimeter"_s};
    return states;
}

Permissions Simulator::permissions() const
{
    return d->world.permissions();
}

void Simulator::setPermissions(const Permissions& permissions)
{
    d->world.setPermissions(permissions);
}

// --- The device's own user --------------------------------------------------------------------------------------

Person Simulator::profile() const
{
    return d->world.profile();
}

void Simulator::setProfile(const Person& profile)
{
    Person complete = profile;
    complete.avatarId = d->world.profile().avatarId;
    complete.avatarMimeType = d->world.profile().avatarMimeType;
    d->accepted(d->world.setProfile(complete));
}

void Simulator::setProfilePicture(const QByteArray& data)
{
    d->accepted(d->world.setProfilePicture(data));
}

QByteArray Simulator::picture(const QString& hash) const
{
    return d->world.picture(hash);
}

// --- Contacts ---------------------------------------------------------------------------------------------------

QString Simulator::addContact(const Person& contact, bool installed)
{
    Person complete = contact;
    return d->accepted(d->world.addContact(complete, installed)) ? complete.userId : QString();
}

QString Simulator::addContact(const QString& displayName)
{
    Person contact;
    contact.displayName = displayName;
    return addContact(contact);
}

bool Simulator::generateContacts(int count, quint32 seed)
{
    return d->accepted(addPeople(d->world, count, seed));
}

bool Simulator::changeContact(const Person& contact)
{
    return d->accepted(d->world.changeContact(contact));
}

bool Simulator::removeContact(const QString& handle)
{
    return d->accepted(d->world.removeContact(handle));
}

bool Simulator::installApplication(const QString& handle)
{
    return d->accepted(d->world.setInstalled(handle, true));
}

bool Simulator::uninstallApplication(const QString& handle)
{
    return d->accepted(d->world.setInstalled(handle, false));
}

bool Simulator::setContactPicture(const QString& handle, const QByteArray& data)
{
    return d->accepted(d->world.setContactPicture(handle, data));
}

Person Simulator::contact(const QString& handle) const
{
    QString problem;
    const Person* person = d->world.findContact(handle, &problem);
    return person ? *person : Person();
}

QList<Person> Simulator::contacts() const
{
    QList<Person> people;
    for (const QString& userId : d->world.installed())
        people.append(*d->world.contact(userId));
    return people;
}

int Simulator::contactCount() const
{
    return int(d->world.everybody().size());
}

QStringList Simulator::contactIds() const
{
    return d->world.everybody();
}

bool Simulator::hasApplication(const QString& handle) const
{
    QString problem;
    const Person* person = d->world.findContact(handle, &problem);
    return person && d->world.isInstalled(person->userId);
}

bool Simulator::sendInvitation(const QString& handle)
{
    return d->accepted(d->invite(handle));
}

void Simulator::setActivity(Activity activity, double perSecond, quint32 seed)
{
    d->activity.set(activity, perSecond, seed);
}

// --- Profile box ------------------------------------------------------------------------------------------------

/// That of one application, or the common one; \a change takes its owner, and answers why not.
template <typename Change>
static bool changeBox(SimulatorPrivate& simulator, const QString& application, Change change)
{
    const std::optional<Addressee> whose = simulator.addressee(application);
    if (!whose)
        return false;
    QString problem;
    const QString owner = simulator.boxOwner(*whose, &problem);
    return simulator.accepted(problem.isEmpty() ? change(owner) : problem);
}

static const Box& boxOf(const SimulatorPrivate& simulator, const QString& application)
{
    QString problem;
    return simulator.world.box(simulator.boxOwner(Addressee::of(application).value_or(Addressee()), &problem));
}

QList<BoxItem> Simulator::boxItems(const QString& application) const
{
    return boxOf(*d, application).items();
}

QList<BoxIcon> Simulator::boxIcons(const QString& application) const
{
    return boxOf(*d, application).icons();
}

QString Simulator::addBoxItem(const BoxItem& item, const QString& application)
{
    BoxItem added = item;
    const bool done =
        changeBox(*d, application, [&](const QString& owner) { return d->world.addBoxItem(added, owner); });
    return done ? added.id : QString();
}

QString Simulator::addBoxItem(const QString& text, const QString& cookie, const QString& iconId)
{
    return addBoxItem(BoxItem{QString(), text, cookie, iconId});
}

bool Simulator::changeBoxItem(const BoxItem& item, const QString& application)
{
    return changeBox(*d, application, [&](const QString& owner) { return d->world.changeBoxItem(item, owner); });
}

bool Simulator::removeBoxItem(const QString& itemId, const QString& application)
{
    return changeBox(*d, application, [&](const QString& owner) { return d->world.removeBoxItem(itemId, owner); });
}

bool Simulator::clearBox(const QString& application)
{
    return changeBox(*d, application, [&](const QString& owner) { return d->world.clearBox(owner), QString(); });
}

void Simulator::setBoxLimit(int items)
{
    d->world.setBoxLimit(items);
}

int Simulator::boxLimit() const
{
    return d->world.box().limit();
}

bool Simulator::addBoxIcon(int iconId, const QByteArray& data, const QString& application)
{
    return changeBox(*d, application,
                     [&](const QString& owner) { return d->world.addBoxIcon(QString::number(iconId), data, owner); });
}

bool Simulator::removeBoxIcon(int iconId, const QString& application)
{
    return changeBox(*d, application,
                     [&](const QString& owner) { return d->world.removeBoxIcon(QString::number(iconId), owner); });
}

// --- Eco identifiers --------------------------------------------------------------------------------------------

QString Simulator::ecoId(const QString& ppId) const
{
    return d->world.ecoId(ppId);
}

QString Simulator::ecoIdStatus(const QString& ecoId) const
{
    return d->world.ecoIdStatus(ecoId);
}

void Simulator::setEcoId(const QString& ppId, const QString& ecoId)
{
    d->world.setEcoId(ppId, ecoId);
}

void Simulator::setEcoIdStatus(const QString& ecoId, const QString& status)
{
    d->accepted(d->world.setEcoIdStatus(ecoId, status));
}

// --- Trouble and curiosity --------------------------------------------------------------------------------------

bool Simulator::injectFault(Fault fault, int amount, const QString& type, const QString& application,
                            WireRecord::Direction direction)
{
    const std::optional<Addressee> whose = d->addressee(application);
    if (whose)
        d->way(direction).addFault(fault, amount, type, *whose);
    return whose.has_value();
}

bool Simulator::setLatency(WireRecord::Direction direction, int milliseconds, const QString& application)
{
    const std::optional<Addressee> whose = d->addressee(application);
    if (whose)
        d->way(direction).setLatency(milliseconds, *whose);
    return whose.has_value();
}

int Simulator::latency(WireRecord::Direction direction, const QString& application) const
{
    return d->way(direction).latencyOf(Addressee::of(application).value_or(Addressee()));
}

bool Simulator::refuseNext(const QString& type, const QString& reason, const QString& application)
{
    const std::optional<Addressee> whose = d->addressee(application);
    if (whose)
        d->service.refuseNext(type, reason, *whose);
    return whose.has_value();
}

void Simulator::setReading(bool reading)
{
    d->server.setReading(reading);
}

bool Simulator::isReading() const
{
    return d->server.isReading();
}

bool Simulator::setTargetState(const QString& target, TargetState state)
{
    return d->accepted(d->targets.setState(target, state));
}

Simulator::TargetState Simulator::targetState(const QString& target) const
{
    return d->targets.state(target);
}

void Simulator::sendMessage(const QString& type, const QJsonObject& body)
{
    d->service.sendMessage(type, body, Addressee());
}

void Simulator::sendRecord(const QByteArray& record)
{
    d->service.sendRecord(record, Addressee());
}

// --- Commands and scenarios -------------------------------------------------------------------------------------

bool Simulator::execute(const QString& commandLine, QString* reply)
{
    return orWarned(*d, reply, [&](QString* answer) { return Commands(*d).run(commandLine, answer); });
}

QString Simulator::commandHelp()
{
    return Commands::help();
}

QStringList Simulator::commandNames()
{
    return Commands::names();
}

std::optional<QStringList> Simulator::splitWords(const QString& line, QString* error)
{
    QString problem;
    return zelcore::splitWords(line, error ? error : &problem);
}

bool Simulator::loadScenario(const QString& scenario, QString* error)
{
    return orWarned(*d, error, [&](QString* problem) { return d->load(scenario, problem); });
}

QStringList Simulator::scenarioNames()
{
    return Scenario::names();
}

// --- Recordings -------------------------------------------------------------------------------------------------

bool Simulator::record(const QString& path, QString* error)
{
    return orWarned(*d, error, [&](QString* problem) { return d->record(path, problem); });
}

void Simulator::stopRecording()
{
    d->recorder.close();
}

bool Simulator::isRecording() const
{
    return d->recorder.isOpen();
}

bool Simulator::anonymise(const QString& from, const QString& to, QString* error)
{
    QString own;
    QString& problem = error ? *error : own;
    problem.clear();
    const std::optional<Recording> recording = Recording::load(from, &problem);
    if (recording)
        problem = Anonymiser().anonymised(*recording).save(to);
    return problem.isEmpty();
}

bool Simulator::replay(const QString& path, QString* error, ReplayPace pace, int patience)
{
    return orWarned(*d, error, [&](QString* problem) { return d->startReplay(path, problem, pace, patience); });
}

bool Simulator::isReplaying() const
{
    return d->replay != nullptr;
}

bool Simulator::isReplayFinished() const
{
    return d->replay && d->replay->isFinished();
}

QString Simulator::replayAwaits() const
{
    return d->replay ? d->replay->awaits() : QString();
}

QStringList Simulator::replayDifferences() const
{
    return d->replay ? d->replay->differences() : QStringList();
}

// --- The timeline of a scenario ---------------------------------------------------------------------------------

void Simulator::setTimelinePaused(bool paused)
{
    d->timeline.setPaused(paused);
}

bool Simulator::isTimelinePaused() const
{
    return d->timeline.isPaused();
}

bool Simulator::stepTimeline(QString* error)
{
    const QString problem = d->timeline.step();
    if (error)
        *error = problem;
    return problem.isEmpty();
}

int Simulator::runTimelineUntil(int time)
{
    return d->timeline.runUntil(time);
}

int Simulator::timelineTime() const
{
    return d->timeline.time();
}

} // namespace zelcore
