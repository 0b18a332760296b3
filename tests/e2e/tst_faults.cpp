// SPDX-License-Identifier: Apache-2.0
#include <common/FakeClock.h>
#include <common/SeededRandom.h>
#include <common/SlogCapture.h>
#include <common/TestMain.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/ecoid/UtilsDelegate.h>

#include <simulator/RawApplication.h>

#include <iface/ListMirror.h>
#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>
#include <vx/system/ObjectServer.h>
#include <zelcore/Simulator.h>

#include <QtCore/QCryptographicHash>
#include <QtCore/QMetaMethod>
#include <QtCore/QTemporaryDir>
#include <QtTest/QSignalSpy>

using namespace vx::platform::zel;
using namespace Qt::StringLiterals;

namespace {

/// What asking again does not bring back: the service's return does, or the application's next try, or it was nothing
/// but news. All else that is told afterwards is told as ever.
struct Design
{
    const char* records; ///< behind their fault
    const char* extra;   ///< what is told or shown more than ever
    const char* why;
    int count = 0;
} designs[] = {
    {"(lost|missed|cut) < list(Add|Remove|Change) .*", "", "news that nobody asked for is told once"},
    {"away < (requestNewProfileBoxImage|stream|list(Add|Change|Remove)) .*", "",
     "what happened or was asked for just before the service went is lost with it; what there is then is told"},
    {"late < list(Chunk|Change) global", "registrationStateUpdated.*", "of two states, the one that came last counts"},
    {"late < requestNewProfileBoxImage .*", ".*Failed to find pending.*", "the icon is there by then"},
    {"lost > (createProfileBoxItem|requestList(Change|Remove)) .*", "", "nobody waits for it but the application"},
    {"lost > createProfileBoxImage .*", "", "an item cannot name an icon of which the service has not heard"},
    {"(lost|missed) > stream .*", ".*the own picture is given up", "what came in part is refused, not asked for again"},
};

bool matches(const QString& text, const char* pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(QLatin1String(pattern))).match(text).hasMatch();
}

QByteArray picture(int size)
{
    QByteArray data("\x89PNG");
    for (quint32 x = quint32(size); data.size() < size; x = x * 1664525U + 1013904223U)
        data.append(char(x >> 24));
    return data;
}

QString hashOf(const QByteArray& data)
{
    return QString::fromLatin1(QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex());
}

QStringList without(QStringList lines, const QStringList& others)
{
    for (const QString& other : others)
        lines.removeOne(other);
    return lines;
}

template <typename Condition>
void waitFor(Condition condition)
{
    if (!RawApplication::waitFor(condition))
        qFatal("it never came");
}

/// Stands between the two. Marks pass unharmed and uncounted, and are answered here while the service is away.
class Relay : public QObject
{
    const QString m_fault;
    const int m_number;
    vx::system::ObjectServer m_server;

public:
    /// The record of this number on its way (< to the application, > from it) suffers the fault: "lost <".
    Relay(const QString& fault, int number, const QString& serviceRoot)
        : m_fault(fault)
        , m_number(number)
        , service(serviceRoot)
    {
        connect(&m_server, &vx::system::ObjectServer::recordReceived, this,
                [this](int, const QByteArray& record) { pass('>', record); });
        service.heard = [this](const QByteArray& record) { pass('<', record); };
        if (!m_server.listen(u"/pps/services/zelcore/platform"_s, nullptr))
            qFatal("the relay cannot serve");
    }

    void deliver(char way, const QByteArray& record)
    {
        if (way == '>')
            service.sendRecord(record);
        else
            m_server.send(m_server.clients().constLast(), record);
    }

    RawApplication service; ///< as it sees this
    QMap<char, int> passed; ///< by way
    QString victim;         ///< behind its fault
    QByteArray late;
    bool isAway = false;
    QSet<QString> lists; ///< of which the service has told since it is there
    std::function<void()> passing = [] {};

private:
    void pass(char way, QByteArray record)
    {
        static const QRegularExpression form(u"\"(\\w+)\":\\{(?:.*\"type\":\"(\\w+)\")?"_s);
        const auto words = form.match(QString::fromUtf8(record));
        if (words.captured(1).startsWith("requestEcoId"_L1))
            return isAway ? deliver('<', "@platform\n" + record.replace("EcoId\"", "EcoIdResponse\""))
                          : deliver(way, record);
        if (isAway)
            return;
        if (way == '<')
            lists.insert(words.captured(2));
        passing();
        const bool isVictim = passed[way]++ == m_number && m_fault.endsWith(QLatin1Char(way));
        const QString fault = isVictim ? m_fault.section(u' ', 0, 0) : QString();
        if (isVictim)
            victim = m_fault + u' ' + words.captured(1) + u' ' + words.captured(2);
        isAway = fault == "away"_L1;
        if (fault == "late"_L1)
            late = record;
        else if (fault != "lost"_L1 && fault != "missed"_L1)
            deliver(way, fault == "cut"_L1 ? record.left(record.size() / 2) : record);
        if (fault == "doubled"_L1)
            deliver(way, record);
    }
};

/// An application that does as the guide says, from its start on.
class Session
{
public:
    Session(const QString& fault, int number)
        : m_isMissed(fault.startsWith("missed"_L1))
    {
        service.generateContacts(200, 3);
        for (const zelcore::Person& person : service.contacts())
            m_people += person.handle;
        for (const int index : {0, 1}) // one picture, and more than one message of it
            service.setContactPicture(m_people.at(index), picture(20000));
        service.addBoxIcon(1, picture(20001));
        service.addBoxItem(u"first"_s, u"c"_s, u"1"_s);
        service.addBoxItem(u"second"_s);
        service.execute(u"contact add Later installed=off"_s);
        if (!service.start())
            qFatal("the service cannot start");
        relay = std::make_unique<Relay>(fault, number, service.root());
        m_context = std::make_unique<Context>(QUuid(u"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b"_s));
        m_box = std::make_unique<ProfileBox>(m_context.get());
        follow(*m_context);
        follow(*m_box);
        QObject::connect(m_context.get(), &Context::registrationStateUpdated, relay.get(), [this](auto state) {
            if (state == RegistrationState::Unregistered)
                m_context->requestRegisterApplication();
        });
        whenReady(m_context.get(), relay.get(), [this] {
            follow(*(m_contacts = std::make_unique<ContactService>(m_context.get())));
            follow(*(m_profile = std::make_unique<UserProfile>(m_context.get())));
            QObject::connect(m_contacts.get(), &ContactService::displayPictureUpdated, relay.get(),
                             [this](auto handle, auto, auto data) { m_pictures[handle] = hashOf(data); });
        });
        QObject::connect(ServiceBridge::instance()->utils(), &UtilsDelegate::ecoIdUpdated, relay.get(),
                         [this](const QString& mark) { m_mark = mark.toInt(); });
        m_mirror.emplace(Services::getServices()->contacts()->contactList());
    }
    ~Session() { FakeClock::uninstall(); }

    /// In steps, after each of which all is to be as it is after that step where nothing goes wrong. What was missed,
    /// though, shows in the end, and the world changes while the contacts are loaded.
    void play(const QList<QStringList>& expected)
    {
        const QList<std::function<void()>> byTheService{
            [this] {
                service.execute(u"profile displayName=Robin"_s);
                service.execute(u"contact change %1 displayName=Other"_s.arg(m_people.at(10)));
                service.addContact(u"Zoe"_s);
                service.installApplication(u"later"_s);
            },
            [this] {
                // While another one is on its way, that is told in its place.
                if (!m_isMissed)
                    service.setProfilePicture(picture(20004));
                service.setContactPicture(m_people.at(20), picture(20005));
                service.uninstallApplication(m_people.at(30));
                service.removeContact(m_people.at(31));
            },
            [this] {
                service.addBoxItem(u"from elsewhere"_s);
                service.removeBoxItem(service.boxItems().at(1).id);
                service.addBoxIcon(9, picture(100));
                service.removeBoxIcon(1);
            },
        };
        if (m_isMissed) {
            relay->passing = [byTheService, this, i = 0]() mutable {
                if (i < 3 && relay->passed['<'] == 14 + 5 * i)
                    byTheService.at(i++)();
            };
        }
        const QList<std::function<void()>> byTheApplication{
            [] {},
            [this] {
                for (const int index : {0, 1, 20}) { // the last one has none, at first
                    if (!m_contacts->contact(m_people.at(index)).isNull() && (index < 20 || !m_isMissed))
                        m_contacts->requestDisplayPicture(m_people.at(index));
                }
            },
            [this] {
                m_box->requestRegisterIcon(7, ImageType::Png, picture(20002));
                m_box->requestAddItem(u"with icon"_s, 7, u"c"_s);
                m_box->requestAddItem(u"without"_s, u"d"_s);
            },
            [this] {
                for (const int icon : {1, 7}) {
                    if (m_box->registeredIcons().contains(icon))
                        m_box->requestRetrieveIcon(icon);
                }
                m_box->requestRemoveItem(m_box->items().constFirst().id());
            },
            [this] { m_profile->requestUpdatePersonalMessage(u"gone fishing"_s); },
            [this] { m_profile->requestUpdateStatus(UserStatus::Busy, u"busy"_s); },
            [this] { m_profile->requestUpdateDisplayPicture(ImageType::Png, picture(20003)); },
        };
        const auto steps = byTheApplication + byTheService.mid(m_isMissed ? 3 : 0) +
                           QList<std::function<void()>>{
                               [this] { service.setRegistrationState(u"NoDataConnection"_s); },
                               [this] { service.setRegistrationState(u"Success"_s); },
                           };
        for (int i = 0; i < steps.size(); ++i) {
            if (i == 0 || m_contacts)
                steps.at(i)();
            settle();
            toldAfter.append(told());
            const auto isAsExpected = [&] {
                return (m_isMissed || without(expected.value(i), told() + lost).isEmpty()) && differences().isEmpty();
            };
            if ((m_isMissed && i < steps.size() - 1) || recover(isAsExpected))
                continue;
            ++returns;
            relay->isAway = true;
            settle();
            if (!recover(isAsExpected))
                lost += without(expected.value(i), told() + lost);
        }
    }

    /// All signals but those for bindings. Which list the service has sent again is no matter, nor what it calls items.
    QStringList told() const
    {
        QStringList told;
        for (const auto& spy : m_spies) {
            for (const QVariantList& values : *spy) {
                QString line = QString::fromLatin1(spy->signal()).section(u'(', 0, 0);
                for (const QVariant& value : values) {
                    const bool isPicture = value.typeId() == QMetaType::QByteArray;
                    line += u' ' + (isPicture ? hashOf(value.toByteArray()) : value.toString());
                }
                if (line != "contactListResent"_L1)
                    told += line.section("item-"_L1, 0, 0);
            }
        }
        return told;
    }

    /// In what the application shows another state than the service's.
    QStringList differences() const
    {
        if (!m_context->isReady())
            return service.registrationState() == "Success"_L1 ? QStringList(u"not allowed"_s) : QStringList();
        QStringList here, there;
        const auto add = [](QStringList& list, const auto&... texts) { list += QStringList{texts...}.join(u'|'); };
        const auto addHere = [&](const auto& p) {
            add(here, p.handle(), p.displayName(), p.personalMessage(), p.statusMessage(),
                QString::number(p.status() == UserStatus::Busy));
        };
        addHere(*m_profile);
        add(here, u"own picture"_s, hashOf(m_profile->displayPicture()));
        add(there, u"own picture"_s, service.profile().avatarId);
        for (const Contact& contact : m_contacts->contacts()) {
            if (m_contacts->hasApplication(contact.handle()))
                addHere(contact);
        }
        for (const zelcore::Person& p : QList{service.profile()} + service.contacts())
            add(there, p.handle, p.displayName, p.personalMessage, p.statusMessage, QString::number(p.showBusy));
        for (auto picture = m_pictures.cbegin(); picture != m_pictures.cend(); ++picture) {
            add(here, picture.key(), picture.value());
            add(there, picture.key(), hashOf(service.picture(service.contact(picture.key()).avatarId)));
        }
        for (const ProfileBoxItem& item : m_box->items())
            add(here, item.id(), item.text(), item.cookie(), QString::number(item.iconId()));
        for (const zelcore::BoxItem& item : service.boxItems())
            add(there, item.id, item.text, item.cookie, item.iconId.isEmpty() ? u"-1"_s : item.iconId);
        for (const int icon : m_box->registeredIcons())
            here += QString::number(icon);
        for (const zelcore::BoxIcon& icon : service.boxIcons())
            there += icon.id;
        return without(here, there) + without(there, here) + QStringList(m_mirror->complaint()).filter(u" "_s);
    }

    zelcore::Simulator service;
    const QSharedPointer<FakeClock> clock = FakeClock::install();
    std::unique_ptr<Relay> relay;
    QList<QStringList> toldAfter; ///< each step
    QStringList lost;             ///< never told
    int returns = 0;              ///< that it needed of the service

private:
    /// Until nothing passes any more.
    void settle()
    {
        for (int before = -1; before != relay->passed['<'] + relay->passed['>'];) {
            before = relay->passed['<'] + relay->passed['>'];
            const bool wasAway = relay->isAway;
            QCoreApplication::sendPostedEvents();
            ServiceBridge::instance()->utils()->ecoIdRequest(QString::number(++m_marks));
            waitFor([&] { return m_mark == m_marks || relay->isAway != wasAway; });
            if (relay->isAway != wasAway)
                before = -1;
        }
        const QByteArray late = std::exchange(relay->late, {});
        if (relay->isAway) {
            service.goAway();
            service.comeBack();
            relay->isAway = !relay->service.connectTo(service.root(), "/services/zelcore/platform");
            relay->lists.clear();
            waitFor([this] { return relay->lists.size() == 5; });
            settle();
        } else if (!late.isEmpty()) {
            clock->advance(31000);
            settle();
            relay->deliver('<', late);
            settle();
        }
    }

    /// Within half an hour.
    template <typename Done>
    bool recover(Done done)
    {
        bool isDone = done();
        for (int minute = 0; minute < 30 && !isDone; ++minute, isDone = done()) {
            clock->advance(60000);
            settle();
        }
        return isDone;
    }

    void follow(const QObject& object)
    {
        for (int i = object.metaObject()->methodOffset(); i < object.metaObject()->methodCount(); ++i) {
            const QMetaMethod method = object.metaObject()->method(i);
            if (method.methodType() == QMetaMethod::Signal && !method.name().endsWith("Changed"))
                m_spies.push_back(std::make_unique<QSignalSpy>(&object, method));
        }
    }

    const bool m_isMissed;
    std::unique_ptr<Context> m_context;
    std::unique_ptr<ProfileBox> m_box;
    std::unique_ptr<ContactService> m_contacts;
    std::unique_ptr<UserProfile> m_profile;
    std::vector<std::unique_ptr<QSignalSpy>> m_spies;
    std::optional<iface::ListMirror<zelsplib::PlatformContact>> m_mirror;
    QMap<QString, QString> m_pictures; ///< the hashes of contacts' pictures, by handle
    QStringList m_people;              ///< their handles
    int m_mark = 0;
    int m_marks = 0;
};

/// What is shown on standard error, but for what the service says.
QStringList shown;

} // namespace

/// Of a session, each record in turn suffers each fault, and the application is to be as if none had. ZEL_TEST_FAULTS=n
/// takes every nth record only.
class TstFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("PPS_ROOT", QFile::encodeName(m_root.path()));
        for (const QString& fault : {u"none"_s, u"missed"_s}) {
            const QString wrong = complaint(fault, -1);
            QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
        }
        bool isGiven = false;
        const int given = qEnvironmentVariableIntValue("ZEL_TEST_FAULTS", &isGiven);
        m_every = isGiven ? qMax(1, given) : ZEL_TEST_FAULTS;
        m_first = int(seededRandom().bounded(m_every));
        qInfo("every %d. record, from number %d, of %d and %d", m_every, m_first, m_records['<'], m_records['>']);
    }

    /// A row that is not needed any more goes.
    void cleanupTestCase()
    {
        for (const Design& design : designs)
            QVERIFY2(m_faults < 8 || m_every > 1 || design.count > 0, design.records);
    }

    void recovers_data()
    {
        QTest::addColumn<QString>("fault");
        for (const char* fault : {"lost <", "missed <", "doubled <", "late <", "cut <", "away <", "lost >", "missed >"})
            QTest::addRow("%s", fault) << QString::fromLatin1(fault);
    }
    void recovers()
    {
        QFETCH(const QString, fault);
        ++m_faults;
        QStringList complaints;
        for (int number = m_first; number < m_records[fault.back().toLatin1()]; number += m_every)
            complaints += complaint(fault, number);
        complaints.removeAll(QString());
        QVERIFY2(complaints.isEmpty(), qPrintable(complaints.join(u'\n')));
    }

private:
    /// What is wrong after a session in which this record suffers this fault; empty if nothing is.
    QString complaint(const QString& fault, int number)
    {
        int argumentCount = 0;
        const QCoreApplication application(argumentCount, nullptr);
        std::optional<SlogCapture> log(4);
        const auto former = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, auto& text) {
            if (type > QtDebugMsg && QByteArrayView(context.category) != "zelcore")
                shown.append(text);
        });
        Session session(fault, number);
        session.play(m_told);
        QStringList extra = session.told() + log->lines() + std::exchange(shown, {});
        log.reset();
        qInstallMessageHandler(former);
        if (m_told.isEmpty()) {
            m_told = session.toldAfter;
            m_records = session.relay->passed;
        }
        extra = without(extra, m_told.constLast());
        if (fault == "cut <"_L1) // is worth one line
            extra.removeOne(u"2: Error:PPSManager::getJsonFromPps(): invalid input: 1%"_s);
        int returns = session.returns;
        for (Design& design : designs) {
            if (!matches(session.relay->victim, design.records))
                continue;
            const auto expected = extra.removeIf([&](const QString& line) { return matches(line, design.extra); });
            design.count += returns > 0 || expected > 0;
            returns = qMax(0, returns - 1);
        }
        const int asked = session.relay->passed['>'] - m_records['>'];
        return extra.isEmpty() && session.differences().isEmpty() && returns == 0 && asked < 30
                   ? QString()
                   : u"%1 (record %2): more is told: %3; the service has otherwise: %4; %5 returns, not told: %6; "
                     "%7 messages more"_s.arg(session.relay->victim)
                         .arg(number)
                         .arg(extra.join(u", "_s), session.differences().join(u", "_s))
                         .arg(session.returns)
                         .arg(session.lost.join(u", "_s))
                         .arg(asked);
    }

    const QTemporaryDir m_root;
    QList<QStringList> m_told; ///< where nothing goes wrong, after each step
    QMap<char, int> m_records;
    int m_every = 1;
    int m_faults = 0; ///< tried so far
    int m_first = 0;
};

ZEL_TEST_WITHOUT_APPLICATION(TstFaults)
#include "tst_faults.moc"
