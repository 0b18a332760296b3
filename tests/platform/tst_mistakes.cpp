// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

#include <QtCore/QThread>

#include <functional>

/// Every mistake is told once, with class and reason.
class TstMistakes : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    void registrationsThatHaveToWaitAreTold()
    {
        play(u"request drop requestListElements"_s);
        Context context(m_uuid);
        settle();
        const auto request = [&context] { context.requestRegisterApplicationSilent(); };
        tell({{request, "Context::requestRegisterApplication: the service has not said yet"},
              {[] { Context({}).requestRegisterApplication(); },
               "Context::requestRegisterApplication: the UUID is null"},
              {[&] { whenReady(static_cast<Context*>(nullptr), this, [] {}); }, "whenReady: there is no context"}});
        askAgain();
        QVERIFY(context.requestRegisterApplication());
        const auto requestIn = [&](const QString& state) {
            play(u"state "_s + state);
            request();
        };
        tell({{[&] { requestIn(u"Pending"_s); }, "Context::requestRegisterApplication: a registration is under way"},
              {[&] { requestIn(u"Expired"_s); }, "the registration state is Expired, which does not"},
              {[&] { requestIn(u"Success"_s); }, "the application is registered already"},
              {[] { Context(QUuid::createUuid()).requestRegisterApplication(); },
               "the process is the application 6f8d"}});
    }

    void requestsThatCannotWorkAreToldOnce()
    {
        UserProfile profile(ready());
        ProfileBox box(m_context.get());
        Utils utils(m_context.get());
        const ContactService contacts(m_context.get());
        const auto add = [&](const QString& text, const QString& cookie) { box.requestAddItem(text, cookie); };
        const auto addWithIcon = [&](int icon) { box.requestAddItem(u"x"_s, icon, {}); };
        const auto icon = [&](int id, const QByteArray& data) { box.requestRegisterIcon(id, ImageType::Png, data); };
        const auto picture = [&](const QByteArray& data) { profile.requestUpdateDisplayPicture(ImageType::Png, data); };
        const auto elsewhere = [&] {
            const std::unique_ptr<QThread> thread(QThread::create([&] {
                const UserProfile made(m_context.get());
                utils.requestEcoId(u"p"_s);
                contacts.contactCount();
                m_context->requestRegisterApplicationSilent();
                whenReady(m_context.get(), this, [] {});
            }));
            thread->start();
            thread->wait();
        };
        const QByteArray tooBig(32769, 'x');
        const QString tooLong(70000, u'x');
        // What is right is silent.
        icon(8, "x");
        picture("x");
        addWithIcon(7);
        addWithIcon(8); // on its way
        box.requestRetrieveIcon(7);
        box.requestRemoveAllItems();
        profile.requestUpdatePersonalMessage({});
        QCOMPARE(box.registeredIcons(), QList<int>{7});
        tell({});

        tell({{[&] { picture({}); }, "UserProfile::requestUpdateDisplayPicture: the picture is empty"},
              {[&] { picture(tooBig); }, "UserProfile::requestUpdateDisplayPicture: the picture is too big"},
              {[&] { picture(tooBig.chopped(1)); }, "UserProfile::requestUpdateDisplayPicture: another picture is"},
              {[&] { profile.requestUpdateStatus({}, tooLong); }, "UserProfile::requestUpdateStatus: the message has"},
              {[&] { add({}, {}); }, "ProfileBox::requestAddItem: the text is empty"},
              {[&] { add(QString(101, u'x'), {}); }, "ProfileBox::requestAddItem: the text is too long"},
              {[&] { add(u"\r\n\n"_s, {}); }, "ProfileBox::requestAddItem: the text has more than 2"},
              {[&] { add(u"x"_s, QString(129, u'x')); }, "ProfileBox::requestAddItem: the cookie is too"},
              {[&] { addWithIcon(-1); }, "ProfileBox::requestAddItem: the icon id is negative"},
              {[&] { addWithIcon(0); }, "ProfileBox::requestAddItem: no icon with this id is registered"},
              {[&] { box.requestRemoveItem(u"-"_s); }, "ProfileBox::requestRemoveItem: there is no item with this id"},
              {[&] { icon(-1, "x"); }, "ProfileBox::requestRegisterIcon: the icon id is negative"},
              {[&] { icon(1, ""); }, "ProfileBox::requestRegisterIcon: the icon is empty"},
              {[&] { icon(1, tooBig); }, "ProfileBox::requestRegisterIcon: the icon is too big"},
              {[&] { icon(8, "x"); }, "ProfileBox::requestRegisterIcon: an icon with this id is under way"},
              {[&] { icon(7, "x"); }, "ProfileBox::requestRegisterIcon: an icon with this id is registered already"},
              {[&] { box.requestRetrieveIcon(9); }, "ProfileBox::requestRetrieveIcon: no icon with this id"},
              {[&] { contacts.requestDisplayPicture({}); }, "ContactService::requestDisplayPicture: no contact has"},
              {[&] { utils.requestEcoIdStatus({}); }, "Utils::requestEcoIdStatus: the identifier is empty"},
              {elsewhere, "UserProfile: used from another|Utils: used from another|ContactService: used from "
                          "another|Context: used from another|"
                          "is registered already|whenReady: used from another thread"}});
        play(u"permission showAppBox off"_s);
        tell({{[&] { add(u"x"_s, {}); }, "ProfileBox::requestAddItem: the user does not allow"}});
    }

private:
    /// Mistakes, and with what their warnings begin, up to the remedy. Each is made twice and told once.
    static void tell(const QList<std::pair<std::function<void()>, const char*>>& mistakes)
    {
        QStringList expected;
        for (const auto& [make, warning] : mistakes) {
            make();
            make();
            expected += QString::fromLatin1(warning).split(u'|');
        }
        const QStringList warnings = takeWarnings();
        for (qsizetype i = 0; i < qMax(expected.size(), warnings.size()); ++i) {
            const QString warning = warnings.value(i);
            QVERIFY2(i < expected.size() && warning.contains(expected.at(i)) && warning.contains(u';'),
                     qPrintable(expected.value(i) + u" <-> "_s + warning));
        }
    }
};

ZEL_TEST(TstMistakes)
#include "tst_mistakes.moc"
