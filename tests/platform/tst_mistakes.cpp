// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

#include <vx/platform/zel/ApplicationPermissions.h>
#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>
#include <vx/platform/zel/Utils.h>

#include <QtCore/QThread>

#include <functional>

using namespace vx::platform::zel;

namespace {

QStringList warnings;

void note(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (type == QtWarningMsg && qstrcmp(context.category, "zel.platform") == 0)
        warnings.append(text);
}

/// A mistake, and with what its warning begins, up to the remedy.
struct Mistake
{
    std::function<void()> make;
    const char* warning;
};

} // namespace

/// Every mistake is told once, with class and reason. One process, one bridge: the cases follow an application's life.
class TstMistakes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_before = qInstallMessageHandler(note);
        m_desk.heldBack = QStringList{QStringLiteral("permission")};
        m_desk.permission().insert(QStringLiteral("showAppBox"), true);
        m_desk.lists.insert(QStringLiteral("profileBoxImage"), {ScriptedCore::json(R"({"imageId":"7"})")});
    }
    void cleanupTestCase() { qInstallMessageHandler(m_before); }

    void withoutAContext()
    {
        tell({{[] { UserProfile profile(nullptr); }, "UserProfile: made without a context"},
              {[] { ContactService service(nullptr); }, "ContactService: made without a context"},
              {[] { ApplicationPermissions permissions(nullptr); }, "ApplicationPermissions: made without a context"},
              {[] { ProfileBox(nullptr).requestRemoveAllItems(); },
               "ProfileBox: made without a context|ProfileBox::requestRemoveAllItems: there is no context"},
              {[] { Utils(nullptr).invokeChat(QStringLiteral("e")); },
               "Utils: made without a context|Utils::invokeChat: there is no context"},
              {[this] { whenReady(static_cast<Context*>(nullptr), this, [] {}); }, "whenReady: there is no context"}});
    }

    void beforeTheServiceHasSpoken()
    {
        m_context = std::make_unique<Context>(QUuid::createUuid());
        m_box = std::make_unique<ProfileBox>(m_context.get());
        QVERIFY(m_desk.settle());
        tell({{[this] { m_early = std::make_unique<UserProfile>(m_context.get()); },
               "UserProfile: made before access was allowed"},
              {[this] { ContactService service(m_context.get()); }, "ContactService: made before access was allowed"},
              {[this] { ApplicationPermissions permissions(m_context.get()); },
               "ApplicationPermissions: made before access was allowed"},
              {[this] { m_box->requestAddItem(QStringLiteral("x"), {}); },
               "ProfileBox::requestAddItem: the service has not said yet"},
              {[this] { m_context->requestRegisterApplication(); },
               "Context::requestRegisterApplication: the service has not said yet"},
              {[] { Context({}).requestRegisterApplication(); },
               "Context::requestRegisterApplication: the UUID is null"}});
    }

    void withoutAccess()
    {
        m_desk.heldBack = QStringList{QStringLiteral("platformProfile")};
        m_desk.sendElements(QStringLiteral("listAdd"), QStringLiteral("global"),
                            {ScriptedCore::json(R"({"name":"permission","value":{"registrationState":"Pending"}})")});
        QVERIFY(m_desk.settle());
        tell({{[this] { m_context->requestRegisterApplicationSilent(); },
               "Context::requestRegisterApplication: a registration is under way"},
              {[this] { m_box->requestRemoveItem(QStringLiteral("1")); },
               "ProfileBox::requestRemoveItem: access is not allowed, the registration state is Pending"}});
        m_desk.changeState(QStringLiteral("Success"));
        QVERIFY(m_desk.settle());
        tell({{[this] { UserProfile profile(m_context.get()); }, "UserProfile: made before the context was ready"}});
    }

    void whatIsRefused()
    {
        m_desk.heldBack.clear();
        m_desk.sendElements(QStringLiteral("listAdd"), QStringLiteral("global"),
                            {{QJsonObject{{QStringLiteral("name"), QStringLiteral("platformProfile")},
                                          {QStringLiteral("value"), m_desk.profile()}}}});
        QTRY_VERIFY(m_context->isReady());
        m_desk.changePermission(R"({"showAppBox":true})");
        QVERIFY(m_desk.settle());
        UserProfile profile(m_context.get());
        ContactService contacts(m_context.get());
        Utils utils(m_context.get());
        const auto add = [this](const QString& text, const QString& cookie) { m_box->requestAddItem(text, cookie); };
        const auto icon = [this](int id, const QByteArray& data) {
            m_box->requestRegisterIcon(id, ImageType::Png, data);
        };
        const auto picture = [&](const QByteArray& data) { profile.requestUpdateDisplayPicture(ImageType::Png, data); };
        const QByteArray tooBig(32769, 'x');
        const QString tooLong(70000, u'x');
        QVERIFY(m_box->requestRegisterIcon(8, ImageType::Png, "x"));
        QVERIFY(profile.requestUpdateDisplayPicture(ImageType::Png, "x"));
        tell({{[&] { m_context->requestRegisterApplication(); },
               "Context::requestRegisterApplication: the application is registered already"},
              {[&] { m_early->requestUpdatePersonalMessage({}); },
               "UserProfile::requestUpdatePersonalMessage: made before access was allowed"},
              {[&] { picture({}); }, "UserProfile::requestUpdateDisplayPicture: the picture is empty"},
              {[&] { picture(tooBig); }, "UserProfile::requestUpdateDisplayPicture: the picture is too big"},
              {[&] { picture("y"); }, "UserProfile::requestUpdateDisplayPicture: another picture is under way"},
              {[&] { profile.requestUpdateStatus(UserStatus::Busy, tooLong); },
               "UserProfile::requestUpdateStatus: the message has more than 65536 bytes"},
              {[&] { add({}, {}); }, "ProfileBox::requestAddItem: the text is empty"},
              {[&] { add(QString(101, u'x'), {}); }, "ProfileBox::requestAddItem: the text is too long"},
              {[&] { add(QStringLiteral("\r\n\n"), {}); }, "ProfileBox::requestAddItem: the text has more than two"},
              {[&] { add(QStringLiteral("x"), QString(129, u'x')); }, "ProfileBox::requestAddItem: the cookie is too"},
              {[&] { m_box->requestAddItem(QStringLiteral("x"), -1, {}); },
               "ProfileBox::requestAddItem: the icon id is negative"},
              {[&] { m_box->requestAddItem(QStringLiteral("x"), 9, {}); },
               "ProfileBox::requestAddItem: no icon with this id is registered"},
              {[&] { m_box->requestRemoveItem(QStringLiteral("none")); },
               "ProfileBox::requestRemoveItem: there is no item with this id"},
              {[&] { icon(-1, "x"); }, "ProfileBox::requestRegisterIcon: the icon id is negative"},
              {[&] { icon(1, {}); }, "ProfileBox::requestRegisterIcon: the icon is empty"},
              {[&] { icon(1, tooBig); }, "ProfileBox::requestRegisterIcon: the icon is too big"},
              {[&] { icon(8, "x"); }, "ProfileBox::requestRegisterIcon: an icon with this id is under way"},
              {[&] { icon(7, "x"); }, "ProfileBox::requestRegisterIcon: an icon with this id is registered already"},
              {[&] { m_box->requestRetrieveIcon(9); }, "ProfileBox::requestRetrieveIcon: no icon with this id"},
              {[&] { contacts.requestDisplayPicture(QStringLiteral("nobody")); },
               "ContactService::requestDisplayPicture: no contact has this handle"},
              {[&] { utils.requestEcoIdStatus({}); }, "Utils::requestEcoIdStatus: the identifier is empty"},
              {[&] {
                   const std::unique_ptr<QThread> thread(
                       QThread::create([&] { utils.requestEcoId(QStringLiteral("p")); }));
                   thread->start();
                   thread->wait();
               },
               "Utils::requestEcoId: used from another thread"}});
    }

    void whatIsRightIsSilent()
    {
        UserProfile profile(m_context.get());
        Utils utils(m_context.get());
        QVERIFY(profile.requestUpdatePersonalMessage({}));
        QVERIFY(m_box->requestAddItem(QStringLiteral("x"), 7, {}));
        QVERIFY(m_box->requestAddItem(QStringLiteral("x"), 8, {})); // on its way
        QVERIFY(m_box->requestRetrieveIcon(7));
        QVERIFY(m_box->requestRemoveAllItems());
        QCOMPARE(m_box->registeredIcons(), QList<int>{7});
        tell({});
        m_desk.changePermission(R"({"showAppBox":false})");
        QVERIFY(m_desk.settle());
        tell({{[this] { m_box->requestAddItem(QStringLiteral("x"), {}); },
               "ProfileBox::requestAddItem: the user does not allow"}});
    }

private:
    /// Each is made twice and told once.
    void tell(const QList<Mistake>& mistakes)
    {
        QStringList expected;
        for (int time = 0; time < 2; ++time) {
            for (const Mistake& mistake : mistakes) {
                mistake.make();
                if (time == 0)
                    expected += QString::fromLatin1(mistake.warning).split(u'|');
            }
        }
        for (qsizetype i = 0; i < qMax(expected.size(), warnings.size()); ++i) {
            const QString warning = warnings.value(i);
            QVERIFY2(i < expected.size() && warning.startsWith(expected.at(i)) && warning.contains(u';'),
                     qPrintable(expected.value(i) + QLatin1String(" <-> ") + warning));
        }
        warnings.clear();
    }

    QtMessageHandler m_before = nullptr;
    Desk m_desk;
    std::unique_ptr<Context> m_context;
    std::unique_ptr<ProfileBox> m_box;
    std::unique_ptr<UserProfile> m_early;
};

QTEST_GUILESS_MAIN(TstMistakes)
#include "tst_mistakes.moc"
