// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

#include <functional>

/// What a slot may do, whatever the signal.
class TstSlots : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    void maySpinAnEventLoopAndDestroyTheObjectThatSignals_data()
    {
        QTest::addColumn<std::function<void()>>("play");
        // A command with news for %1, and how the new ones read where they take the place of the old.
        const auto row = [this](const char* name, auto signal, const QString& command, const QString& told = {},
                                const QString& news = u"old new newest"_s) {
            QTest::newRow(name) << std::function<void()>([=, this] { play(signal, command, told, news.split(u' ')); });
        };
        const auto states = u"Pending Expired ZelDisabled"_s;
        row("state", &Context::registrationStateUpdated, u"state %1"_s, u"Expired"_s, states);
        row("own name", &UserProfile::displayNameUpdated, u"profile displayName %1"_s, u"new"_s);
        row("own message", &UserProfile::personalMessageUpdated, u"profile personalMessage %1"_s, u"new"_s);
        row("own status", &UserProfile::statusUpdated, u"profile statusMessage %1"_s, u"Available new"_s);
        const auto picture = u"contact picture ada %1"_s;
        row("picture", &ContactService::displayPictureUpdated, picture, u"ada Png "_s, u"100 200 300"_s);
        row("contact", &ContactService::contactUpdated, u"contact change ada displayName=%1"_s);
        row("item", &ProfileBox::itemAdded, u"box add %1"_s);
        row("item changed", &ProfileBox::itemUpdated, u"box change item-1 text=%1"_s);
        const auto ecoId = uR"(send requestEcoIdResponse '{"ppid":"p","ecoId":"%1"}')"_s;
        row("eco identifier", &Utils::ecoIdUpdated, ecoId, u"p new"_s);
        row("eco identifier of nobody", &Utils::ecoIdUpdated, u"send requestEcoIdResponse {}"_s, u" "_s);
        const auto status = uR"(send requestEcoIdStatusResponse '{"ecoId":"e","status":"%1"}')"_s;
        row("eco status", &Utils::ecoIdStatusUpdated, status, u"e ContactExists"_s, u"Unknown ContactExists Unknown"_s);
        const auto noWord = u"ContactExists PendingContactInviteExists Unknown"_s; // but an enumerator
        row("no eco status", &Utils::ecoIdStatusUpdated, status, u"e Unknown"_s, noWord);
    }
    void maySpinAnEventLoopAndDestroyTheObjectThatSignals()
    {
        QFETCH(const std::function<void()>, play);
        play();
    }

private:
    // A dialog in a slot of the first object, in which there are other news: the second hears no more of the old ones.
    // The last news end the first.
    template <class Public, typename... Arguments>
    void play(void (Public::*signal)(Arguments...), const QString& command, const QString& told,
              const QStringList& news)
    {
        ready();
        const auto make = [this] {
            if constexpr (std::is_same_v<Public, Context>)
                return std::make_unique<Context>(m_uuid);
            else
                return std::make_unique<Public>(m_context.get());
        };
        auto first = make();
        const auto second = make();
        QStringList heard;
        connect(second.get(), signal, this, [&](const Arguments&... values) { heard.append(words(values...)); });
        const auto announce = [&](const QString& what) {
            QVERIFY(m_service->execute(QString(command).replace(u"%1"_s, what)));
        };
        const auto dialog = [&] {
            announce(news[1]);
            QTRY_COMPARE(heard.size(), 1);
        };
        connect(first.get(), signal, first.get(), dialog, Qt::SingleShotConnection);
        announce(news[0]);
        QTRY_COMPARE(heard.size(), 2);
        QVERIFY2(heard.filter(told).size() == 2 && (told.isEmpty() || heard[0] == heard[1]),
                 qPrintable(heard.join(u'|')));

        connect(
            first.get(), signal, first.get(), [&] { first.reset(); }, Qt::SingleShotConnection);
        announce(news[2]);
        QTRY_COMPARE(heard.size(), 3);
        QVERIFY(!first);
    }
};

ZEL_TEST(TstSlots)
#include "tst_slots.moc"
