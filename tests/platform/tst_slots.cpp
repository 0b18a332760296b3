// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

#include <common/TestMain.h>

#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>
#include <vx/platform/zel/Utils.h>

#include <array>

namespace {

/// A signal of a public object.
struct Signal
{
    std::function<QObject*(Context*)> make;
    std::function<void(QObject*, QObject* receiver, const std::function<void()>& slot)> connectOnce;
    std::function<void(QObject*, Heard&)> note;
};

template <class Public, typename... Arguments>
Signal of(void (Public::*signal)(Arguments...))
{
    return {[](Context* context) -> QObject* {
                if constexpr (std::is_same_v<Public, Context>)
                    return new Context(QUuid::createUuid());
                else
                    return new Public(context);
            },
            [signal](QObject* object, QObject* receiver, const std::function<void()>& slot) {
                QObject::connect(static_cast<Public*>(object), signal, receiver, slot, Qt::SingleShotConnection);
            },
            [signal](QObject* object, Heard& heard) { heard.note(static_cast<Public&>(*object), signal, {}); }};
}

const struct Announcement
{
    const char* name;
    Signal signal;
    const char* message; ///< which has it sent
    const char* body;    ///< with news for %1
    const char* told;    ///< how the new news read where they take the place of the old
    std::array<const char*, 3> news{"old", "new", "newest"};
} announcements[] = {
    {"state",
     of(&Context::registrationStateUpdated),
     "listChange",
     R"({"type":"global","elements":[{"name":"permission","value":{"registrationState":"%1"}}]})",
     "Expired",
     {"Pending", "Expired", "ZelDisabled"}},
    {"own name", of(&UserProfile::displayNameUpdated), "listChange",
     R"({"type":"global","elements":[{"name":"platformProfile","value":{"displayName":"%1"}}]})", "new"},
    {"own message", of(&UserProfile::personalMessageUpdated), "listChange",
     R"({"type":"global","elements":[{"name":"platformProfile","value":{"personalMessage":"%1"}}]})", "new"},
    {"own status", of(&UserProfile::statusUpdated), "listChange",
     R"({"type":"global","elements":[{"name":"platformProfile","value":{"currentStatus":"%1"}}]})", "Available new"},
    {"picture", of(&ContactService::displayPictureUpdated), "listChange",
     R"({"type":"platformUser","elements":[{"userId":"u-ada","handle":"ada","avatarId":"%1","avatarMimeType":"image/gif"}]})",
     "ada Gif new picture"},
    {"contact", of(&ContactService::contactUpdated), "listChange",
     R"({"type":"platformUser","elements":[{"userId":"u-ada","handle":"ada","displayName":"%1"}]})", nullptr},
    {"item", of(&ProfileBox::itemAdded), "listAdd", R"({"type":"profileBoxItem","elements":[{"itemId":"%1"}]})",
     nullptr},
    {"eco identifier", of(&Utils::ecoIdUpdated), "requestEcoIdResponse", R"({"ppid":"p","ecoId":"%1"})", "p new"},
    {"eco status",
     of(&Utils::ecoIdStatusUpdated),
     "requestEcoIdStatusResponse",
     R"({"ecoId":"e","status":"%1"})",
     "e ContactExists",
     {"Unknown", "ContactExists", "Unknown"}},
};

} // namespace

/// What a slot may do, whatever the signal.
class TstSlots : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    // A dialog in a slot of the first object, in which there are other news: the second hears no more of the old ones.
    // The last news end the first.
    void maySpinAnEventLoopAndDestroyTheObjectThatSignals_data()
    {
        QTest::addColumn<int>("row");
        for (int row = 0; row < int(std::size(announcements)); ++row)
            QTest::newRow(announcements[row].name) << row;
    }
    void maySpinAnEventLoopAndDestroyTheObjectThatSignals()
    {
        QFETCH(int, row);
        const Announcement& one = announcements[row];
        auto first = std::unique_ptr<QObject>(one.signal.make(ready()));
        const auto second = std::unique_ptr<QObject>(one.signal.make(m_context.get()));
        Heard heard;
        one.signal.note(second.get(), heard);
        one.signal.connectOnce(first.get(), first.get(), [&] {
            announce(one, one.news[1]);
            QTRY_COMPARE(heard.lines().size(), 1);
        });
        announce(one, one.news[0]);
        QTRY_COMPARE(heard.lines().size(), 2);
        if (one.told)
            QCOMPARE(heard.lines(), QStringList(2, QString::fromLatin1(one.told)));

        one.signal.connectOnce(first.get(), first.get(), [&] { first.reset(); });
        announce(one, one.news[2]);
        QTRY_COMPARE(heard.lines().size(), 3);
        QVERIFY(!first);
    }

private:
    void announce(const Announcement& one, const char* news)
    {
        m_desk->send(QString::fromLatin1(one.message), Desk::json(QByteArray(one.body).replace("%1", news)));
    }
};

ZEL_TEST(TstSlots)
#include "tst_slots.moc"
