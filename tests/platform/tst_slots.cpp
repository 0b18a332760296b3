// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

/// What a slot may do, whatever the signal.
class TstSlots : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    void maySpinAnEventLoopAndDestroyTheObjectThatSignals()
    {
        hearInDialogs(&Context::registrationStateUpdated, u"state %1"_s, u"Expired"_s,
                      u"Pending Expired ZelDisabled"_s);
        hearInDialogs(&UserProfile::displayNameUpdated, u"profile displayName %1"_s, u"new"_s);
        hearInDialogs(&UserProfile::personalMessageUpdated, u"profile personalMessage %1"_s, u"new"_s);
        hearInDialogs(&UserProfile::statusUpdated, u"profile statusMessage %1"_s, u"Available new"_s);
        const auto picture = u"contact picture ada %1"_s;
        hearInDialogs(&ContactService::displayPictureUpdated, picture, u"ada Png "_s, u"100 200 300"_s);
        hearInDialogs(&ContactService::contactUpdated, u"contact change ada displayName=%1"_s);
        hearInDialogs(&ProfileBox::itemAdded, u"box add %1"_s);
        hearInDialogs(&ProfileBox::itemUpdated, u"box change item-1 text=%1"_s);
        const auto ecoId = uR"(send requestEcoIdResponse '{"ppid":"p","ecoId":"%1"}')"_s;
        hearInDialogs(&Utils::ecoIdUpdated, ecoId, u"p new"_s);
        hearInDialogs(&Utils::ecoIdUpdated, u"send requestEcoIdResponse {}"_s, u" "_s);
        const auto status = uR"(send requestEcoIdStatusResponse '{"ecoId":"e","status":"%1"}')"_s;
        hearInDialogs(&Utils::ecoIdStatusUpdated, status, u"e ContactExists"_s, u"Unknown ContactExists Unknown"_s);
        const auto noWord = u"ContactExists PendingContactInviteExists Unknown"_s; // but an enumerator
        hearInDialogs(&Utils::ecoIdStatusUpdated, status, u"e Unknown"_s, noWord);
    }

private:
    // A dialog in a slot of the first object, in which there are other news: the second hears no more of the old ones,
    // which shows in how its news read. The last news end the first. They stand for %1 in the command.
    template <class Public, typename... Arguments>
    void hearInDialogs(void (Public::*signal)(Arguments...), const QString& command, const QString& told = {},
                       const QString& allNews = u"old new newest"_s)
    {
        ready();
        const QStringList news = allNews.split(u' ');
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
