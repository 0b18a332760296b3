// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Export.h>
#include <zelcore/Records.h>

#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <memory>
#include <optional>

namespace zelcore {

class SimulatorPrivate;

/// A core service of the messaging service, played on a desktop.
///
/// It serves the publish/subscribe object that the client library opens, and the two targets of the invocation
/// framework, to any number of applications at once. Own profile, pictures, permissions, contacts, profile box and
/// eco identifiers are one world that all applications see; the registration belongs to each application.
///
/// Ownership: whoever makes it owns it; applications may connect and leave as they like, and outlive it. Its folder,
/// when it made one itself, and its sockets go with it.
/// Thread: everything runs on the event loop of the thread it lives on; an application in the same process may share
/// that loop. Not thread-safe.
/// Handlers: a slot may call anything here, spin a nested event loop included, but must not delete the simulator
/// (use deleteLater()).
///
/// What cannot be done is false, with a sentence: in the argument for it, or as a warning of the category "zelcore".
///
/// What may concern one of several applications takes its name, which is its number or its UUID; left out or empty, it
/// means all of them.
///
/// Changes made before start() are what applications find; changes made afterwards are announced to all of them.
///
///     zelcore::Simulator simulator;
///     simulator.addContact(QStringLiteral("Anna"));
///     simulator.start();
///     simulator.exportRoot();          // before the objects of an application in this process are made
///     simulator.execute(QStringLiteral("contact change anna displayName=\"Anna B.\""));
class ZELCORE_EXPORT Simulator : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool running READ isRunning NOTIFY runningChanged)
    Q_PROPERTY(bool away READ isAway NOTIFY awayChanged)
    Q_PROPERTY(int clientCount READ clientCount NOTIFY clientCountChanged)

public:
    /// What becomes of a registration request.
    enum class RegistrationPolicy {
        Automatic, ///< "Pending", then "Success"; a silent request, or one of a UUID that the service has registered
                   ///< before, goes straight to "Success".
        Manual,    ///< "Pending" until setRegistrationState(); a silent request changes nothing by itself.
        Fixed      ///< As Automatic, but ends in the state given with the policy.
    };
    Q_ENUM(RegistrationPolicy)

    /// What befalls one message on its way.
    enum class Fault {
        Drop,      ///< It is never sent.
        Delay,     ///< It is sent `amount` milliseconds later; the messages after it overtake it.
        Duplicate, ///< It is sent twice.
        Truncate,  ///< Only the first `amount` bytes of the record are sent.
        Garble     ///< Some of its bytes are replaced; its length stays.
    };
    Q_ENUM(Fault)

    /// How an invocation target meets requests.
    enum class TargetState {
        Taking,   ///< It takes anything.
        Refusing, ///< It is there, and refuses every connection.
        Missing   ///< It is not there.
    };
    Q_ENUM(TargetState)

    /// What setActivity() keeps doing.
    enum class Activity {
        Changes,     ///< Somebody in the list gets another message, status or picture.
        Installs,    ///< Somebody starts to run the application: a contact without it, or somebody new.
        Uninstalls,  ///< Somebody in the list stops running it.
        Invitations, ///< Somebody in the list sends a connection invitation.
        Mixed        ///< All of these; seven in ten are changes.
    };
    Q_ENUM(Activity)

    /// How replay() keeps time.
    enum class ReplayPace {
        AtOnce, ///< What an application heard follows as soon as all has come that it had sent before.
        AsThen  ///< ... and as long after it as then.
    };
    Q_ENUM(ReplayPace)

    /// Serves nothing before start(). \a parent owns it if there is one.
    explicit Simulator(QObject* parent = nullptr);
    ~Simulator() override;

    // --- Life -------------------------------------------------------------------------------------------------

    /// Makes \a folder the one below which the sockets are made; what applications need as PPS_ROOT. Refused while it
    /// runs.
    void setRoot(const QString& folder);
    /// Empty before start() unless setRoot() was called: start() then makes a private temporary folder.
    QString root() const;
    /// Sets the environment variable PPS_ROOT of this process to root(), where an application that begins finds it. A
    /// process whose library was connected to another folder begins anew. False, with a sentence in \a error, without
    /// a root, and when it is too late: an application of this process has a Context that is connected elsewhere.
    bool exportRoot(QString* error = nullptr) const;

    /// Serves. False, with a sentence in \a error, when the folder cannot be made, when another service lives there,
    /// and, with PPS_ROOT set to root() already, when it is too late as for exportRoot().
    bool start(QString* error = nullptr);
    /// Closes everything; the world stays as it is, start() serves it again.
    void stop();
    /// From start() to stop(), also while it is away.
    bool isRunning() const;

    /// Goes away as a service that ends does: connections drop, and the object is gone until comeBack().
    void goAway();
    /// Returns. An application that was connected before keeps its registration when its library reconnects (it is
    /// known by its process), and is told permission, profile, lists and records anew. False, with a sentence in
    /// \a error if wanted, when it does not run or the object cannot be made; true when it is not away.
    bool comeBack(QString* error = nullptr);
    /// From goAway() to comeBack(), reset() or stop().
    bool isAway() const;

    /// Everything as in a new simulator: world, registrations, faults, targets, timeline, recorded parts to be played;
    /// folder and pause of the timeline stay, and a recording goes on. One that runs drops its connections;
    /// applications that connect again are new to it. For the time between two cases of a test.
    void reset();

    /// How many applications are connected.
    int clientCount() const;
    /// In the order in which they came. While a recording is played, only their numbers and processes are known.
    QList<Client> clients() const;

    // --- Registration and permissions ---------------------------------------------------------------------------

    /// Makes \a policy what becomes of requests. \a fixedState counts for RegistrationPolicy::Fixed; \a delay
    /// milliseconds pass between "Pending" and the outcome, none when it is below 0. A state that applications do not
    /// know is warned of, as by setRegistrationState().
    void setRegistrationPolicy(RegistrationPolicy policy, const QString& fixedState = QString(), int delay = 0);
    /// RegistrationPolicy::Automatic in the beginning.
    RegistrationPolicy registrationPolicy() const;
    /// The state that a request ends in: "Success", or the one given with RegistrationPolicy::Fixed.
    QString registrationOutcome() const;
    /// The milliseconds between "Pending" and the outcome; 0 in the beginning.
    int registrationDelay() const;
    /// Makes \a state that of \a application, or of every connected one, and then also the one in which new ones begin
    /// ("Unregistered" if nothing is set), and forgets who of them was registered before. False when an application is
    /// named that is not there.
    /// States are called as on the wire: see registrationStates(), of which "Success" is what applications read as
    /// Allowed. Any other text is sent as well, with a warning.
    bool setRegistrationState(const QString& state, const QString& application = QString());
    /// The state of \a application; of several, that of the one that connected last. The beginning state where all are
    /// meant and none is there; empty where one is named that is not.
    QString registrationState(const QString& application = QString()) const;
    /// The states that applications know, as they stand on the wire, in the order of their values: "Success", which
    /// they read as Allowed, "Unknown", "Unregistered", ...
    static QStringList registrationStates();

    /// The UUIDs that were registered once: they are registered at once when they ask again.
    QStringList registeredUuids() const;
    /// Adds \a uuid to registeredUuids() if \a registered is true, takes it away if not; no application is told. False
    /// when it is no UUID.
    bool setRegistered(const QString& uuid, bool registered);
    /// Takes such UUIDs from the file \a path, one a line, if it is there, and keeps them in it from now on, so that
    /// they outlive the process. A file with anything else in it is refused, with the line in \a error if wanted.
    bool rememberRegistrations(const QString& path, QString* error = nullptr);

    /// What the user allows: everything in the beginning.
    Permissions permissions() const;
    /// Makes \a permissions what the user allows, to all applications alike.
    void setPermissions(const Permissions& permissions);

    // --- The device's own user ----------------------------------------------------------------------------------

    /// The own user's record; a made-up person with a picture in the beginning.
    Person profile() const;
    /// Replaces the profile by \a profile but for the picture, which is set by setProfilePicture(). Refused when it is
    /// too long for a message.
    void setProfile(const Person& profile);
    /// An empty \a data takes the picture away; more than 32768 bytes are refused. The MIME type is taken from the
    /// first bytes.
    void setProfilePicture(const QByteArray& data);
    /// The bytes of any picture or icon that the service knows, by \a hash as lower-case hexadecimal SHA-1; empty when
    /// it knows none.
    QByteArray picture(const QString& hash) const;

    // --- Contacts: known by their handle, or by their user id ---------------------------------------------------

    /// Adds \a contact who runs the application (\a installed) or does not yet. Missing ids are made from the handle,
    /// a missing handle from the display name. The user id of the new contact; empty, with a line in the log, when
    /// the handle or user id is taken or the record is too long for a message.
    QString addContact(const Person& contact, bool installed = true);
    /// Adds a contact of this \a displayName who runs the application, with the ids made from it.
    QString addContact(const QString& displayName);
    /// Adds \a count made-up people, the same ones for the same \a seed, with names in many scripts. False, and nobody
    /// is added, if there were more than a million people then.
    bool generateContacts(int count, quint32 seed);
    /// Makes \a contact the record under its user id and announces the members that differ. False when nobody has
    /// this user id, another has the handle, or the record is too long for a message.
    bool changeContact(const Person& contact);
    /// Removes the contact \a handle altogether, from the list too. False when there is none.
    bool removeContact(const QString& handle);
    /// The contact \a handle starts to run the application and joins the list that applications see. False when there
    /// is none, or it runs it already.
    bool installApplication(const QString& handle);
    /// The contact \a handle stops running the application and leaves the list. False when there is none, or it does
    /// not run it.
    bool uninstallApplication(const QString& handle);
    /// Makes \a data the picture of the contact \a handle as setProfilePicture() does. False when there is none, or
    /// with more than 32768 bytes.
    bool setContactPicture(const QString& handle, const QByteArray& data);
    /// The record of the contact \a handle as it is; a default one when there is none.
    Person contact(const QString& handle) const;
    /// Those who run the application, in the order of the list.
    QList<Person> contacts() const;
    /// All of them, also those without the application.
    int contactCount() const;
    /// The user ids of all of them, in the order in which they were added.
    QStringList contactIds() const;
    /// Whether the contact \a handle runs the application; false when there is none.
    bool hasApplication(const QString& handle) const;
    /// Tells applications that the contact \a handle sent a connection invitation. False when there is none.
    bool sendInvitation(const QString& handle);
    /// Keeps doing \a activity while it runs, \a perSecond times a second, at random but the same for the same \a seed
    /// and world; 0 stops it.
    void setActivity(Activity activity, double perSecond, quint32 seed = 1);

    // --- Profile box: the common one, or an application's own ---------------------------------------------------

    // The first call that is to change the box of one application gives it a box of its own, which begins as the common
    // one is; it stays with the UUID. An application that is named by its number must be connected and have told its
    // UUID; such a call is false if not.

    /// The items in the box that \a application sees, in the order in which they were added.
    QList<BoxItem> boxItems(const QString& application = QString()) const;
    /// The icons in the box that \a application sees, in the order in which they were registered.
    QList<BoxIcon> boxIcons(const QString& application = QString()) const;
    /// Adds \a item to the box of \a application under a new id. That id; empty when the item is refused as an
    /// application's would be: beyond the bounds of BoxItem, without such an icon, or beyond boxLimit().
    QString addBoxItem(const BoxItem& item, const QString& application = QString());
    /// Adds an item of \a text and \a cookie with the icon \a iconId, if it is not empty, to the common box.
    QString addBoxItem(const QString& text, const QString& cookie = QString(), const QString& iconId = QString());
    /// Replaces the item with the id of \a item in the box of \a application by it. False when there is none, when it
    /// is beyond the bounds of BoxItem, or without such an icon.
    bool changeBoxItem(const BoxItem& item, const QString& application = QString());
    /// Removes the item \a itemId from the box of \a application. False when there is none.
    bool removeBoxItem(const QString& itemId, const QString& application = QString());
    /// Removes all items from the box of \a application; icons stay.
    bool clearBox(const QString& application = QString());
    /// The box, and every application's own, takes so many \a items and no more, whoever adds them; as many as come
    /// when it is below 0, as in the beginning.
    void setBoxLimit(int items);
    /// How many items the box takes; below 0 as many as come.
    int boxLimit() const;
    /// Registers \a data as the icon \a iconId of the box of \a application. False when the id is below 0 or taken, or
    /// the data are not 1 to 32768 bytes.
    bool addBoxIcon(int iconId, const QByteArray& data, const QString& application = QString());
    /// Removes the icon \a iconId from the box of \a application; items go on naming it. False when there is none.
    bool removeBoxIcon(int iconId, const QString& application = QString());

    // --- Eco identifiers ----------------------------------------------------------------------------------------

    /// Makes \a ecoId what "requestEcoId" answers for \a ppId from now on, whoever that is. Contacts and the own user
    /// have one from the start.
    void setEcoId(const QString& ppId, const QString& ecoId);
    /// What "requestEcoId" answers for \a ppId now; empty for a stranger who was given none.
    QString ecoId(const QString& ppId) const;
    /// What "requestEcoIdStatus" answers for \a ecoId now; "Unknown" where nothing else is known.
    QString ecoIdStatus(const QString& ecoId) const;
    /// Makes \a status that of \a ecoId whatever the contacts say: "Unknown", "ContactExists" or
    /// "PendingContactExists"; another is refused. Contacts exist by themselves, and an invitation that reaches the
    /// invocation target makes its identifier pending, until its owner is a contact.
    void setEcoIdStatus(const QString& ecoId, const QString& status);

    // --- Trouble and curiosity ----------------------------------------------------------------------------------

    /// The next message of \a application in \a direction suffers \a fault by \a amount where Fault speaks of one; with
    /// \a type set, the next one of that message type. Faults queue up, each for one message. What an application sends
    /// suffers it on its way to the service; recordPassed() has told it by then. False when the name is neither a
    /// number nor a UUID.
    bool injectFault(Fault fault, int amount = 0, const QString& type = QString(),
                     const QString& application = QString(),
                     WireRecord::Direction direction = WireRecord::Direction::ToApplication);
    /// Every record in \a direction of \a application takes so many \a milliseconds on its way, and none overtakes
    /// another; 0 or less ends it. What was set last for an application counts. False when the name is neither a number
    /// nor a UUID.
    bool setLatency(WireRecord::Direction direction, int milliseconds, const QString& application = QString());
    /// What the records of \a application take in \a direction now, in milliseconds; with an empty name, those of any
    /// for which nothing else was set.
    int latency(WireRecord::Direction direction, const QString& application = QString()) const;
    /// The next request of \a type from \a application is refused although nothing is wrong with it:
    /// "requestListChange" (a change of the profile, which is answered with \a reason), "createProfileBoxItem",
    /// "createProfileBoxImage" or any other. False as for injectFault().
    bool refuseNext(const QString& type, const QString& reason = QString(), const QString& application = QString());
    /// Reads from now on if \a reading is true. A service that does not read leaves what applications send in their
    /// sockets, until those are full, and does not notice who goes.
    void setReading(bool reading);
    /// Whether it reads, as in the beginning.
    bool isReading() const;
    /// Makes \a state how \a target meets requests: "sys.socialplatform" or "sys.zel.chathandler". False for another
    /// one, and when its socket cannot be made.
    bool setTargetState(const QString& target, TargetState state);
    /// How \a target meets requests; TargetState::Taking in the beginning.
    TargetState targetState(const QString& target) const;
    /// Sends one message of \a type with \a body to every application, whatever it says.
    void sendMessage(const QString& type, const QJsonObject& body);
    /// Sends \a record to every application as it is, framing and all.
    void sendRecord(const QByteArray& record);

    // --- Commands and scenarios ---------------------------------------------------------------------------------

    /// Runs \a commandLine of the command language that zelcore-sim takes on standard input ("help" describes it).
    /// False, with a sentence in \a reply, for a line that is not a command or cannot be done. An empty line does
    /// nothing.
    bool execute(const QString& commandLine, QString* reply = nullptr);
    /// The description of all commands.
    static QString commandHelp();
    /// What commands begin with, as "contact add".
    static QStringList commandNames();
    /// Cuts \a line into words as a shell does, for programs with a command language of their own: blanks separate,
    /// '...' is literal, within "..." a backslash escapes the quote and itself and makes n and t a line break and a
    /// tab, elsewhere it makes the next character an ordinary one. Empty, with a sentence in \a error, when a quote is
    /// not closed or the line ends in a backslash.
    static std::optional<QStringList> splitWords(const QString& line, QString* error = nullptr);

    /// Takes the world and the timeline of a scenario file. \a scenario is a path or the name of one that ships with
    /// the library (scenarioNames()). The timeline starts with start(), or at once when running. All or nothing: every
    /// command that the file stands for is tried on a copy of the world first, those of the timeline in the order of
    /// their times; a faulty file changes nothing and leaves a sentence in \a error that says where and why.
    bool loadScenario(const QString& scenario, QString* error = nullptr);
    /// The scenarios that ship with the library, sorted.
    static QStringList scenarioNames();

    // --- Recordings ---------------------------------------------------------------------------------------------

    /// Writes every record of both directions into the new file \a path from now on, until stop(), as JSON Lines: a
    /// header, then a line for each, with its time and application. A line is out of the process when the next record
    /// passes, so that a crash loses nothing. Begin it before the applications. What is in it is personal: names,
    /// messages, pictures; the file is for the user alone, and anonymise() makes another that may be given away. False,
    /// with a sentence in \a error if wanted, when the file is there already or cannot be written.
    bool record(const QString& path, QString* error = nullptr);
    /// Ends the recording, if there is one; stop() does, too.
    void stopRecording();
    /// Whether records are being written; no longer when a line could not be.
    bool isRecording() const;
    /// Makes the new file \a to of the recording \a from, with everything personal replaced: the same text by the same
    /// other one, a picture by another of its size. It replays; what applications say then themselves is compared by
    /// its form alone. False, with a sentence in \a error if wanted, when \a from cannot be read or \a to not be made.
    static bool anonymise(const QString& from, const QString& to, QString* error = nullptr);

    /// Plays the service's side of the recording \a path for the applications that come from now on, in place of the
    /// world, until reset(), and keeps time by \a pace as it does. Applications take the parts of the recorded ones in
    /// the order in which they come. A part is played in its order: what was heard then goes out when everything has
    /// come that those who are here had sent before. Only what may differ each time differs unsaid: UUIDs, cookies,
    /// names of streams that an application chose, times.
    ///
    /// What is missing stops a part until nothing has come and gone for \a patience milliseconds; then it is told and
    /// given up. All or nothing: a file that is damaged or no recording changes nothing and is refused, in \a error
    /// with its name, the line and the member. False, too, while an application is connected.
    ///
    ///     QVERIFY2(service.replay(QStringLiteral("bug.jsonl"), &error), qPrintable(error));
    ///     ContactBrowser browser;
    ///     QTRY_VERIFY2(service.isReplayFinished(), qPrintable(service.replayAwaits()));
    ///     QCOMPARE(service.replayDifferences(), QStringList());
    bool replay(const QString& path, QString* error = nullptr, ReplayPace pace = ReplayPace::AtOnce,
                int patience = 2000);
    /// From replay() to reset(), also when it is finished.
    bool isReplaying() const;
    /// Whether all of it has been played, and all that was sent then has come or was given up.
    bool isReplayFinished() const;
    /// What it waits for, in words; empty when it is finished.
    QString replayAwaits() const;
    /// What applications did otherwise than then, a sentence each: what is missing, another or additional, or came in
    /// another order.
    QStringList replayDifferences() const;

    // --- The timeline of a scenario -----------------------------------------------------------------------------

    /// The timeline stands still if \a paused is true, and goes on from where it stands if not. It runs by the clock,
    /// and so races a test that looks at what comes of it: pause it, before start() or at any time, and take its
    /// entries one by one.
    void setTimelinePaused(bool paused);
    /// Whether it stands still; stepTimeline() and runTimelineUntil() pause it, too.
    bool isTimelinePaused() const;
    /// Pauses, and runs the next entry at once. False, with a sentence in \a error if wanted, when none follows; those
    /// that wait for a registration do not before an application has registered.
    bool stepTimeline(QString* error = nullptr);
    /// Pauses, and runs everything up to \a time, in milliseconds from the start. How many entries that were.
    int runTimelineUntil(int time);
    /// Milliseconds of the timeline from the start; it stands still while it is paused.
    int timelineTime() const;

Q_SIGNALS:
    /// It serves, or has stopped serving: isRunning() is \a running now.
    void runningChanged(bool running);
    /// reset() is done.
    void worldReset();
    /// It is gone, and all connections with it, or is there again: isAway() is \a away now. Before runningChanged()
    /// when it is stopped while it is away.
    void awayChanged(bool away);
    /// After clientConnected() and clientDisconnected(): \a count applications are connected now.
    void clientCountChanged(int count);
    /// An application has come. They go by numbers that count up from 1; \a client is that of this one.
    void clientConnected(int client);
    /// The application \a client is gone, or its connection was dropped; clients() has it no more.
    void clientDisconnected(int client);
    /// After the answers have been sent. \a uuid is what the application called itself; \a silent says whether the user
    /// was not to be asked.
    void registrationRequested(const QString& uuid, bool silent);
    /// After an application has been told that \a state is its own now, for each of them; once when it is set for new
    /// ones while none is connected.
    void registrationStateChanged(const QString& state);
    // What these tell of is done, and applications have been told, whoever did it: a call, a command, an application.
    /// permissions() is another one.
    void permissionsChanged();
    /// profile() is another one, its picture included.
    void profileChanged();
    /// The contact \a userId was added or removed, runs the application or no longer does, or has another record.
    void contactChanged(const QString& userId);
    /// An item or icon was added or removed, or an item is another.
    void boxChanged();
    /// An application asked \a target of the invocation framework for \a action with \a mimeType as the type
    /// and \a data as the text of the request.
    void invocationReceived(const QString& target, const QString& action, const QString& mimeType,
                            const QByteArray& data);
    /// Every \a record of every application in both directions, and every invocation, as it passes: one that comes
    /// before anything is done about it, one that goes when it has gone, after all faults (what is lost never passes).
    void recordPassed(const zelcore::WireRecord& record);
    /// A record of the application \a client with a message of \a type in it, before anything is done about it. \a json
    /// is the whole text; both are empty when it is not in the form.
    void messageReceived(int client, const QString& type, const QByteArray& json);
    /// A message of \a type on its way to the application \a client as the whole text \a json before faults.
    void messageSent(int client, const QString& type, const QByteArray& json);
    /// One clear \a line about something that was refused; it also goes to Qt's message handler as a warning.
    void refused(const QString& line);
    /// One more of replayDifferences(), where \a sentence stands already.
    void replayDiffered(const QString& sentence);
    /// isReplayFinished() is true now; once for each replay().
    void replayFinished();
    /// The command \a commandLine of the scenario's timeline has run and answered \a reply or was refused with it.
    void commandExecuted(const QString& commandLine, const QString& reply);
    /// The command "quit" was given; what it ends is for the program to say.
    void quitRequested();

private:
    std::unique_ptr<SimulatorPrivate> const d;
};

} // namespace zelcore
