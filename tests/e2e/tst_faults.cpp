// SPDX-License-Identifier: Apache-2.0
#include <common/BothSides.h>
#include <common/FakeClock.h>
#include <common/Heard.h>
#include <common/SlogCapture.h>
#include <common/TestMain.h>

#include <iface/ListMirror.h>
#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>
#include <vx/system/ObjectServer.h>
#include <zelcore/Simulator.h>

#include <QtCore/QCryptographicHash>
#include <QtCore/QTemporaryDir>

using namespace bothsides;
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

/// What the service does by itself, in this order. Where the fault is that something is missed the first is left out,
/// since a picture that comes while another one is on its way is told in its place, and the next three come while the
/// contacts are loaded.
const QStringList changes{
    u"picture 20004; contact picture friend00002 20005"_s,
    u"profile displayName=Robin; contact change friend00010 displayName=Other; contact add Zoe; contact install later"_s,
    u"contact picture friend00020 20005; contact uninstall friend00030; contact remove friend00031"_s,
    u"box add 'from elsewhere'; box remove item-2; box icon 9 100; box icon 1 none"_s,
    u"state NoDataConnection"_s,
    u"state Success"_s,
};
constexpr int loaded = 4;

bool matches(const QString& text, const char* pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(QLatin1String(pattern))).match(text).hasMatch();
}

QByteArray picture(int size)
{
    return "\x89PNG" + QByteArray(size - 4, 'p');
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

/// The service, an application that does as the guide says from its start on, and what stands between the two: the
/// record of this number on its way (< to the application, > from it) suffers the fault, "lost <". Marks pass unharmed
/// and uncounted, and are answered here while the service is away.
class Session : public QObject
{
public:
    Session(const QString& fault, int number)
        : m_fault(fault)
        , m_number(number)
    {
        command(service, u"generate 200 3; contact picture friend00000 20000; contact picture friend00001 20000; box "
                         "icon 1 20001; box add first c 1; box add second; contact add later installed=off"_s);
        if (!service.start() || !m_server.listen(u"/pps/services/zelcore/platform"_s, nullptr))
            qFatal("the two cannot serve");
        m_core.emplace(service.root()).heard = [this](const QByteArray& record) { pass('<', record); };
        connect(&m_server, &vx::system::ObjectServer::recordReceived, this,
                [this](int, const QByteArray& record) { pass('>', record); });
        m_context = std::make_unique<Context>(QUuid(u"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b"_s));
        m_box = std::make_unique<ProfileBox>(m_context.get());
        m_heard.follow(*m_context);
        m_heard.follow(*m_box);
        connect(m_context.get(), &Context::registrationStateUpdated, this, [this](auto state) {
            if (state == RegistrationState::Unregistered)
                m_context->requestRegisterApplication();
        });
        whenReady(m_context.get(), this, [this] {
            m_heard.follow(*(m_contacts = std::make_unique<ContactService>(m_context.get())));
            m_heard.follow(*(m_profile = std::make_unique<UserProfile>(m_context.get())));
            connect(m_contacts.get(), &ContactService::displayPictureUpdated, this,
                    [this](auto handle, auto, auto data) { m_pictures[handle] = hashOf(data); });
        });
        m_mirror.emplace(Services::getServices()->contacts()->contactList());
    }
    ~Session() { FakeClock::uninstall(); }

    /// In steps, after each of which all is to be as it is after that step where nothing goes wrong. What was missed,
    /// though, shows in the end, and the world changes while the contacts are loaded.
    void play(const QList<QStringList>& expected)
    {
        const auto byTheService = changes.sliced(m_isMissed ? loaded : 0);
        const qsizetype count = m_byTheApplication.size() + byTheService.size();
        for (qsizetype i = 0; i < count; ++i) {
            if (i >= m_byTheApplication.size())
                command(service, byTheService.at(i - m_byTheApplication.size()));
            else if (i == 0 || m_contacts)
                m_byTheApplication.at(i)();
            settle();
            toldAfter.append(told());
            const auto missing = [&] { return without(m_isMissed ? QStringList() : expected.value(i), told() + lost); };
            const auto isAsExpected = [&] { return missing().isEmpty() && differences().isEmpty(); };
            if ((m_isMissed && i < count - 1) || recover(isAsExpected))
                continue;
            ++returns;
            m_isAway = true;
            settle();
            if (!recover(isAsExpected))
                lost += missing();
        }
    }

    /// All signals but those for bindings. Which list the service has sent again is no matter, nor what it calls items.
    QStringList told() const
    {
        static const QRegularExpression noMatter(u"^(\\w+Changed|contactListResent)$|item-.*"_s);
        QStringList told = m_heard.lines();
        told.replaceInStrings(noMatter, QString()).removeAll(QString());
        return told;
    }

    /// In what the application shows another state than the service's.
    QStringList differences() const
    {
        if (!m_context->isReady())
            return service.registrationState() == "Success"_L1 ? QStringList(u"not allowed"_s) : QStringList();
        const auto line = [](const auto&... texts) { return QStringList{texts...}.join(u'|'); };
        const auto lineOf = [line](const auto& p) {
            const QString busy = QString::number(p.status() == UserStatus::Busy);
            return line(p.handle(), p.displayName(), p.personalMessage(), p.statusMessage(), busy);
        };
        QStringList here{lineOf(*m_profile), hashOf(m_profile->displayPicture())};
        QStringList there{service.profile().avatarId};
        for (const Contact& contact : m_contacts->contacts()) {
            if (m_contacts->hasApplication(contact.handle()))
                here += lineOf(contact);
        }
        for (const zelcore::Person& p : QList{service.profile()} + service.contacts())
            there += line(p.handle, p.displayName, p.personalMessage, p.statusMessage, QString::number(p.showBusy));
        for (auto picture = m_pictures.cbegin(); picture != m_pictures.cend(); ++picture) {
            here += line(picture.key(), picture.value());
            there += line(picture.key(), hashOf(service.picture(service.contact(picture.key()).avatarId)));
        }
        for (const ProfileBoxItem& item : m_box->items())
            here += line(item.id(), item.text(), item.cookie(), QString::number(item.iconId()));
        for (const zelcore::BoxItem& item : service.boxItems())
            there += line(item.id, item.text, item.cookie, item.iconId.isEmpty() ? u"-1"_s : item.iconId);
        for (const int icon : m_box->registeredIcons())
            here += QString::number(icon);
        for (const zelcore::BoxIcon& icon : service.boxIcons())
            there += icon.id;
        return without(here, there) + without(there, here) + QStringList(m_mirror->complaint()).filter(u" "_s);
    }

    zelcore::Simulator service;
    QMap<char, int> passed;       ///< by way
    QString victim;               ///< behind its fault
    QList<QStringList> toldAfter; ///< each step
    QStringList lost;             ///< never told
    int returns = 0;              ///< that it needed of the service

private:
    void deliver(char way, const QByteArray& record)
    {
        if (way == '>')
            m_core->send(record);
        else
            m_server.send(m_server.clients().constLast(), record);
    }

    void pass(char way, QByteArray record)
    {
        static const QRegularExpression form(u"\"(\\w+)\":\\{(?:.*\"type\":\"(\\w+)\")?"_s);
        const auto words = form.match(QString::fromUtf8(record));
        if (words.captured(1).startsWith("requestEcoId"_L1))
            return m_isAway && way == '>' ? deliver('<', "@platform\n" + record.replace("EcoId\"", "EcoIdResponse\""))
                                          : deliver(way, record);
        if (m_isAway)
            return;
        if (way == '<')
            m_lists.insert(words.captured(2));
        if (m_isMissed && m_changes < loaded && passed['<'] == 9 + 5 * m_changes)
            command(service, changes[m_changes++]);
        const bool isVictim = passed[way]++ == m_number && m_fault.endsWith(QLatin1Char(way));
        const QString fault = isVictim ? m_fault.section(u' ', 0, 0) : QString();
        if (isVictim)
            victim = m_fault + u' ' + words.captured(1) + u' ' + words.captured(2);
        m_isAway = fault == "away"_L1;
        if (fault == "late"_L1)
            m_late = record;
        else if (fault != "lost"_L1 && fault != "missed"_L1)
            deliver(way, fault == "cut"_L1 ? record.left(record.size() / 2) : record);
        if (fault == "doubled"_L1)
            deliver(way, record);
    }

    /// Until nothing passes any more.
    void settle()
    {
        for (int before = -1; before != passed['<'] + passed['>'];) {
            before = passed['<'] + passed['>'];
            passMark();
        }
        const QByteArray late = std::exchange(m_late, {});
        if (m_isAway) {
            service.goAway();
            service.comeBack();
            m_isAway = !m_core->connectTo(service.root(), "/services/zelcore/platform");
            m_lists.clear();
            if (!RawApplication::waitFor([this] { return m_lists.size() == 5; }))
                qFatal("the service did not return");
            settle();
        } else if (!late.isEmpty()) {
            m_clock->advance(31000);
            settle();
            deliver('<', late);
            settle();
        }
    }

    /// Within half an hour.
    template <typename Done>
    bool recover(Done done)
    {
        for (int minute = 0; minute < 30 && !done(); ++minute) {
            m_clock->advance(60000);
            settle();
        }
        return done();
    }

    const QList<std::function<void()>> m_byTheApplication{
        [] {},
        [this] {
            // The last one has none yet.
            for (const auto& handle : {u"friend00000"_s, u"friend00001"_s, u"friend00002"_s}) {
                if (!m_contacts->contact(handle).isNull())
                    m_contacts->requestDisplayPicture(handle);
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

    const QString m_fault;
    const bool m_isMissed = m_fault.startsWith("missed"_L1);
    const int m_number;
    int m_changes = 1; ///< the next one while loading
    QByteArray m_late;
    bool m_isAway = false;
    QSet<QString> m_lists;             ///< of which the service has told since it is there
    QMap<QString, QString> m_pictures; ///< the hashes of contacts' pictures, by handle
    const QSharedPointer<FakeClock> m_clock = FakeClock::install();
    vx::system::ObjectServer m_server;
    std::optional<RawApplication> m_core; ///< the service as it is seen from between
    std::unique_ptr<Context> m_context;
    std::unique_ptr<ProfileBox> m_box;
    std::unique_ptr<ContactService> m_contacts;
    std::unique_ptr<UserProfile> m_profile;
    Heard m_heard;
    std::optional<iface::ListMirror<zelsplib::PlatformContact>> m_mirror;
};

/// What is shown on standard error, but for what the service says.
QStringList shown;

} // namespace

/// Of a session, each record in turn suffers each fault, and the application is to be as if none had.
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
        qInfo("records: %d and %d", m_records['<'], m_records['>']);
    }

    /// A row that is not needed any more goes.
    void cleanupTestCase()
    {
        for (const Design& design : designs)
            QVERIFY2(m_faults < 8 || design.count > 0, design.records);
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
        for (int number = 0; number < m_records[fault.back().toLatin1()]; ++number)
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
        if (m_told.isEmpty()) {
            m_told = session.toldAfter;
            m_records = session.passed;
        }
        QStringList extra = without(session.told() + log->lines() + std::exchange(shown, {}), m_told.constLast());
        log.reset();
        qInstallMessageHandler(former);
        if (fault == "cut <"_L1) // is worth one line
            extra.removeOne(u"2: Error:PPSManager::getJsonFromPps(): invalid input: 1%"_s);
        int returns = session.returns;
        for (Design& design : designs) {
            if (!matches(session.victim, design.records))
                continue;
            const auto expected = extra.removeIf([&](const QString& line) { return matches(line, design.extra); });
            design.count += returns > 0 || expected > 0;
            returns = qMax(0, returns - 1);
        }
        const QStringList differences = session.differences();
        const int asked = session.passed['>'] - m_records['>'];
        QString text;
        if (!extra.isEmpty() || !differences.isEmpty() || returns > 0 || asked >= 30)
            QDebug(&text) << session.victim << "record" << number << "more is told:" << extra
                          << "the service has otherwise:" << differences << session.returns
                          << "returns, not told:" << session.lost << asked << "messages more";
        return text;
    }

    const QTemporaryDir m_root;
    QList<QStringList> m_told; ///< where nothing goes wrong, after each step
    QMap<char, int> m_records;
    int m_faults = 0; ///< tried so far
};

ZEL_TEST_WITHOUT_APPLICATION(TstFaults)
#include "tst_faults.moc"
