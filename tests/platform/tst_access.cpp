// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

#include <common/SlogCapture.h>
#include <vx/platform/zel/ApplicationPermissions.h>

#include <QtCore/QLoggingCategory>
#include <QtTest/QSignalSpy>

#include <unistd.h>

namespace {

// What a public object answers beside its properties, requests included.
QString answersOf(const ApplicationPermissions& permissions)
{
    return words(permissions.permissionValue(Permission::ProfileUpdatesAllowed),
                 permissions.permissionValue(Permission::ContactInvitationsAllowed));
}
QString answersOf(ContactService& service)
{
    const Contact ada = service.contact(u"ada"_s);
    return words(service.contacts().size(), ada.handle(), service.containsContact(ada),
                 service.hasApplication(u"ada"_s), service.requestDisplayPicture(u"ada"_s), service.refresh());
}
QString answersOf(ProfileBox& box)
{
    return words(box.items().size(), box.item(u"item-1"_s).id(), box.requestAddItem(u"x"_s, {}),
                 box.requestAddItem(u"x"_s, 7, {}), box.requestRemoveItem(u"1"_s), box.requestRemoveAllItems(),
                 box.requestRegisterIcon(1, ImageType::Png, "x"), box.requestRetrieveIcon(7));
}
QString answersOf(UserProfile& profile)
{
    return words(profile.requestUpdatePersonalMessage(u"x"_s), profile.requestUpdateStatus(UserStatus::Busy, u"x"_s),
                 profile.requestUpdateDisplayPicture(ImageType::Png, "x"));
}
QString answersOf(Utils& utils)
{
    return words(utils.requestEcoId(u"p"_s), utils.requestEcoIdStatus(u"e"_s),
                 utils.sendContactInvitation(u"e"_s, u"n"_s, u"m"_s), utils.invokeChat(u"e"_s));
}

const QStringList nobody;
const QStringList everybody{u"ApplicationPermissions"_s, u"ContactService"_s, u"ProfileBox"_s, u"UserProfile"_s,
                            u"Utils"_s};
const QStringList requests =
    u"ContactService::refresh ContactService::requestDisplayPicture ProfileBox::requestAddItem "
    "ProfileBox::requestRegisterIcon ProfileBox::requestRemoveAllItems ProfileBox::requestRemoveItem "
    "ProfileBox::requestRetrieveIcon UserProfile::requestUpdateDisplayPicture "
    "UserProfile::requestUpdatePersonalMessage UserProfile::requestUpdateStatus Utils::invokeChat "
    "Utils::requestEcoId Utils::requestEcoIdStatus Utils::sendContactInvitation"_s.split(u' ');

/// One of each class.
class Objects
{
public:
    explicit Objects(Context* context)
        : m_all(context, context, context, context, context)
    {
    }

    /// The names of those that answer anything else than defaults. Whatever warns of it does so once.
    QStringList working()
    {
        QStringList names;
        for (int time = 0; time < 2; ++time)
            std::apply([&](auto&... objects) { (note(objects, names), ...); }, m_all);
        names.removeDuplicates();
        return names;
    }

private:
    template <class Public>
    static void note(Public& object, QStringList& names)
    {
        static const QStringList defaults{{},          u"false"_s,     u"0"_s,          u"200"_s,
                                          u"Denied"_s, u"Available"_s, u"Unsupported"_s};
        for (const QString& answer : (shown(object) + u' ' + answersOf(object)).split(u' ')) {
            if (!defaults.contains(answer.section(u'=', -1)))
                names.append(QString::fromLatin1(Public::staticMetaObject.className()).section(u"::"_s, -1));
        }
    }

    std::tuple<ApplicationPermissions, ContactService, ProfileBox, UserProfile, Utils> m_all;
};

} // namespace

/// How an application gets access, and every public class with and without it, what it answers and of what it warns.
class TstAccess : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    void withoutAServiceItIsBlockedByTheUser()
    {
        play(u"away"_s);
        const SlogCapture log(3);
        QLoggingCategory::setFilterRules(u"zel.platform.debug=true"_s);
        // An application that shows what it is told may use the library to do so.
        static QStringList messages;
        const auto before = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
            const Context context(QUuid::createUuid());
            messages.append(words(context.registrationState(), text));
        });
        Context context(m_uuid);
        qInstallMessageHandler(before);
        QLoggingCategory::setFilterRules({});
        QCOMPARE(messages, QStringList({u"BlockedByUser ZELSP Services not initialized -- Abort "_s,
                                        u"BlockedByUser cannot open %1/services/zelcore/platform: No such file or "
                                        "directory; start the core service, or a simulated one and set PPS_ROOT to its "
                                        "folder, before the application"_s.arg(qEnvironmentVariable("PPS_ROOT"))}));
        m_heard->follow(context);
        QVERIFY(!context.requestRegisterApplication() && !context.requestRegisterApplicationSilent());
        const QString refusal =
            u"2: Error:ZELSPServices::canRegister(), Cannot register since GlobalsManager is null"_s;
        QCOMPARE(log.lines(),
                 QStringList({u"3: can't open pps file at: /pps/services/zelcore/platform, shutting down library"_s,
                              u"3: Failed to initialize ZELSPServices, errno:2"_s, refusal, refusal}));
        QCOMPARE(m_heard->take(), QStringList());
        QVERIFY(!Context({}).requestRegisterApplication()); // an application's own mistake is told all the same
        QCOMPARE(m_heard->take(), QStringList(u"registrationStateUpdated InvalidUuid"_s));
        QCOMPARE(Objects(&context).working(), nobody);
    }

    void saysWhyItCannotOpenItsObject()
    {
        const auto warning = [](const QByteArray& root) {
            qputenv("PPS_ROOT", root);
            if (Context(QUuid::createUuid()).registrationState() != RegistrationState::BlockedByUser)
                return u"it did"_s;
            return ServiceBridge::letGo() ? takeWarnings().join(u'|').section(u": "_s, 1) : u"it stays"_s;
        };
        // Another user's, too deep, with a name that is too long, and nonsense.
        const QByteArray own = qgetenv("PPS_ROOT");
        QVERIFY(QFile::setPermissions(m_service->root(), {}));
        const bool isRoot = ::geteuid() == 0 && ::seteuid(65534) == 0; // nothing is forbidden to root
        const QStringList warnings{warning(own), warning(QByteArray("/x").repeated(2500)),
                                   warning('/' + QByteArray(300, 'x')), warning("n\xf6\n").section(u';', 0, 0)};
        QVERIFY(!isRoot || ::seteuid(0) == 0);
        QVERIFY(QFile::setPermissions(m_service->root(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QCOMPARE(warnings, QStringList({u"Permission denied"_s, u"File name too long"_s, u"File name too long"_s,
                                        u"No such file or directory"_s}));
    }

    void comesAndGoesWithTheRegistration()
    {
        QCOMPARE(Objects(nullptr).working(), nobody);
        QCOMPARE(warned(u"made without a context"_s), everybody);
        QCOMPARE(warned(u"there is no context"_s), requests);

        play(u"request drop requestListElements; request drop requestUserAvatar"_s);
        m_context = std::make_unique<Context>(m_uuid);
        auto own = std::make_unique<Context>(m_uuid);
        Objects early(own.get());
        play(u"state Success"_s);
        QCOMPARE(shown(*own),
                 u"registrationState=Unknown accessAllowed=false ready=false zelSetup=false platformVersion=200"_s);
        QCOMPARE(early.working(), nobody);
        QCOMPARE(warned(u"made before access was allowed"_s),
                 QStringList({u"ApplicationPermissions"_s, u"ContactService"_s, u"UserProfile"_s}));
        QCOMPARE(warned(u"the service has not said yet"_s), requests);
        QCOMPARE(asked(), QByteArrayList());
        askAgain();
        Objects hasty(own.get());
        QCOMPARE(warned(u"made before the context was ready"_s), QStringList{u"UserProfile"_s});
        askAgain();
        ready();
        QCOMPARE(early.working(), QStringList({u"ProfileBox"_s, u"Utils"_s}));
        QCOMPARE(warned(u"made before access was allowed, it refuses"_s).size(), 5);

        Objects timely(own.get());
        QCOMPARE(timely.working(), everybody);
        play(u"state TemporaryError"_s);
        asked();
        QCOMPARE(timely.working(), nobody);
        QCOMPARE(warned(u"access is not allowed, the registration state is TemporaryError"_s), requests);
        QCOMPARE(asked(), QByteArrayList());
        play(u"state Success"_s);
        QCOMPARE(timely.working(), everybody);
        const ApplicationPermissions permissions(own.get());
        play(u"permission zelInvites off"_s);
        QCOMPARE(answersOf(permissions), u"Allowed Denied"_s);
        QCOMPARE(permissions.permissionValue(static_cast<Permission::Type>(3)), PermissionValue::Denied); // is none
        own.reset();
        QCOMPARE(timely.working(), nobody);
    }

    void registersOnlyInStatesThatAllowIt()
    {
        // The words of the service, with + where an application may register, and their states where these have other
        // names. The last are near misses: enumerators that are no words, another case, a blank.
        const QString rows =
            u"Unregistered+,NoDataConnection+,UnexpectedError+,InvalidUuid+,TemporaryError+,CancelledByUser+,"
            "Unknown,Pending,BlockedByUser,Expired,ZelDisabled,BlockedEnterprisePerimeter,BlockedByTov=BlockedByTOV,"
            "MaximumUsersReached=MaxDownloadsReached,MaximumAppsReached=MaxAppsReached,"
            "Allowed=Unknown,BlockedByTOV=Unknown,MaxAppsReached=Unknown,unregistered=Unknown,Success =Unknown"_s;
        const QByteArray request =
            R"({"registrationRequest":{"uuid":"6f8d2c4e-5b0a-4a37-9d0e-0c8f3f1f2a10","silent":false}})";
        const QSignalSpy messages(m_service.get(), &zelcore::Simulator::messageReceived);
        m_context = std::make_unique<Context>(m_uuid);
        settle();
        QCOMPARE(messages.first().last().toByteArray(), R"({"tpaApi":{"apiType":"Qt"}})");
        for (QString row : rows.split(u',')) {
            const bool isAllowed = row.endsWith(u'+');
            row.remove(u'+');
            play(u"state '%1'"_s.arg(row.section(u'=', 0, 0)));
            QCOMPARE(words(m_context->registrationState(), m_context->isAccessAllowed()),
                     row.section(u'=', -1) + u" false"_s);
            QCOMPARE(m_context->requestRegisterApplication(), isAllowed);
            QCOMPARE(m_context->requestRegisterApplicationSilent(), isAllowed);
            QCOMPARE(asked(), isAllowed ? QByteArrayList({request, QByteArray(request).replace("false", "true")})
                                        : QByteArrayList());
        }
    }

    void announcesAStateOnceToEveryContext()
    {
        m_context = std::make_unique<Context>(m_uuid);
        settle();
        m_heard->follow(*m_context);
        const Context second(QUuid::createUuid());
        m_heard->follow(second, [] { return u"second"_s; });
        play(u"state Pending; state Pending; permission zelInvites off; permission zelSetup off"_s);
        const QString told = u"registrationStateUpdated "_s;
        QCOMPARE(m_heard->take(), QStringList({told + u"Pending"_s, told + u"Pending | second"_s}));
        QVERIFY(!m_context->isZelSetup());
        // A UUID that is refused in a slot of the first is no state, of which the second would hear.
        const auto refused = [] { QVERIFY(!Context({}).requestRegisterApplication()); };
        connect(m_context.get(), &Context::registrationStateUpdated, this, refused, Qt::SingleShotConnection);
        play(u"state Expired"_s);
        QCOMPARE(m_heard->lines(), QStringList({told + u"Expired"_s, told + u"InvalidUuid"_s,
                                                told + u"InvalidUuid | second"_s, told + u"Expired | second"_s}));
    }

    void callsWhoeverWaitsWhenItIsReady()
    {
        ready();
        Context later(QUuid::createUuid());
        m_heard->follow(later, [&] { return words(later.isReady()); });
        const auto wait = [this](Context* context, const QObject* receiver, const QString& line) {
            whenReady(context, receiver, [this, line] { m_heard->add(line); });
        };
        wait(&later, this, u"at once"_s);
        play(u"state NoDataConnection; state Pending"_s);
        // The first who hears of it has a dialog open, in which it is over again.
        whenReady(&later, this, [&] {
            play(u"state Pending"_s);
            m_heard->add(u"closed"_s);
        });
        wait(&later, this, u"function"_s);
        whenReady(&later, this, &TstAccess::noteMember);
        wait(&later, std::make_unique<QObject>().get(), u"receiver gone"_s);
        wait(std::make_unique<Context>(m_uuid).get(), this, u"context gone"_s);
        play(u"state Success"_s);
        play(u"state Success"_s);
        const QString told = m_heard->lines().join(u", "_s).remove(u"registrationStateUpdated "_s);
        QCOMPARE(told, u"at once, NoDataConnection | false, readyChanged | false, Pending | false, "
                       "Allowed | true, readyChanged | true, Pending | false, readyChanged | false, closed, "
                       "Allowed | true, readyChanged | true, function, member"_s);
    }

private:
    void noteMember() { m_heard->add(u"member"_s); }
    /// Who warns of this, once each, and of a remedy behind it.
    QStringList warned(const QString& reason)
    {
        m_warnings += takeWarnings();
        QStringList who;
        for (const QString& warning : std::as_const(m_warnings)) {
            if (warning.contains(u": "_s + reason) && warning.contains(u';'))
                who.append(warning.section(u": "_s, 0, 0));
        }
        who.sort();
        return who;
    }

    QStringList m_warnings;
};

ZEL_TEST(TstAccess)
#include "tst_access.moc"
