// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>
#include <vx/platform/zel/Utils.h>

#include <array>
#include <functional>

/// What a slot may do, whatever the signal.
class TstSlots : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    void maySpinAnEventLoopAndDestroyTheObjectThatSignals_data();
    void maySpinAnEventLoopAndDestroyTheObjectThatSignals()
    {
        QFETCH(const std::function<void()>, play);
        play();
    }

private:
    using News = std::array<const char*, 3>;

    // A dialog in a slot of the first object, in which there are other news: the second hears no more of the old ones.
    // The last news end the first.
    template <class Public, typename... Arguments>
    void play(void (Public::*signal)(Arguments...), const char* message, const char* body, const char* told,
              const News& news)
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
        const auto announce = [&](const char* what) {
            m_service->send(QString::fromLatin1(message), FakeService::json(QByteArray(body).replace("%1", what)));
        };
        const auto dialog = [&] {
            announce(news[1]);
            QTRY_COMPARE(heard.size(), 1);
        };
        connect(first.get(), signal, first.get(), dialog, Qt::SingleShotConnection);
        announce(news[0]);
        QTRY_COMPARE(heard.size(), 2);
        if (told)
            QCOMPARE(heard, QStringList(2, QString::fromLatin1(told)));

        connect(
            first.get(), signal, first.get(), [&] { first.reset(); }, Qt::SingleShotConnection);
        announce(news[2]);
        QTRY_COMPARE(heard.size(), 3);
        QVERIFY(!first);
    }
};

void TstSlots::maySpinAnEventLoopAndDestroyTheObjectThatSignals_data()
{
    QTest::addColumn<std::function<void()>>("play");
    // A message with news for %1, and how the new ones read where they take the place of the old.
    const auto row = [this](const char* name, auto signal, const char* message, const char* body, const char* told,
                            const News& news = {"old", "new", "newest"}) {
        QTest::newRow(name) << std::function<void()>([=, this] { play(signal, message, body, told, news); });
    };
    row("state", &Context::registrationStateUpdated, "listChange",
        R"({"type":"global","elements":[{"name":"permission","value":{"registrationState":"%1"}}]})", "Expired",
        {"Pending", "Expired", "ZelDisabled"});
    row("own name", &UserProfile::displayNameUpdated, "listChange",
        R"({"type":"global","elements":[{"name":"platformProfile","value":{"displayName":"%1"}}]})", "new");
    row("own message", &UserProfile::personalMessageUpdated, "listChange",
        R"({"type":"global","elements":[{"name":"platformProfile","value":{"personalMessage":"%1"}}]})", "new");
    row("own status", &UserProfile::statusUpdated, "listChange",
        R"({"type":"global","elements":[{"name":"platformProfile","value":{"currentStatus":"%1"}}]})", "Available new");
    row("picture", &ContactService::displayPictureUpdated, "listChange",
        R"({"type":"platformUser","elements":[{"userId":"u-ada","handle":"ada","avatarId":"%1","avatarMimeType":"image/gif"}]})",
        "ada Gif new picture");
    row("contact", &ContactService::contactUpdated, "listChange",
        R"({"type":"platformUser","elements":[{"userId":"u-ada","handle":"ada","displayName":"%1"}]})", nullptr);
    row("item", &ProfileBox::itemAdded, "listAdd", R"({"type":"profileBoxItem","elements":[{"itemId":"%1"}]})",
        nullptr);
    row("eco identifier", &Utils::ecoIdUpdated, "requestEcoIdResponse", R"({"ppid":"p","ecoId":"%1"})", "p new");
    row("eco identifier of nobody", &Utils::ecoIdUpdated, "requestEcoIdResponse", "{}", " ");
    row("eco status", &Utils::ecoIdStatusUpdated, "requestEcoIdStatusResponse", R"({"ecoId":"e","status":"%1"})",
        "e ContactExists", {"Unknown", "ContactExists", "Unknown"});
    row("eco status by an enumerator and no word", &Utils::ecoIdStatusUpdated, "requestEcoIdStatusResponse",
        R"({"ecoId":"e","status":"%1"})", "e Unknown", {"ContactExists", "PendingContactInviteExists", "Unknown"});
}

ZEL_TEST(TstSlots)
#include "tst_slots.moc"
