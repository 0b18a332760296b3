// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

#include <vx/platform/zel/ProfileBox.h>

using namespace vx::platform::zel;

/// One process, one bridge: the cases build on each other.
class TstProfileBox : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void holdsAllowedBackUntilTheBoxIsThere()
    {
        m_context = std::make_unique<Context>(QUuid::createUuid());
        m_box = std::make_unique<ProfileBox>(m_context.get());
        QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
        QSignalSpy added(m_box.get(), &ProfileBox::itemAdded);
        QSignalSpy counts(m_box.get(), SIGNAL(itemCountChanged()));
        const QStringList lists{QStringLiteral("profileBoxItem"), QStringLiteral("profileBoxImage")};
        m_desk.lists.insert(
            lists.at(0), {item(QStringLiteral("1"), QStringLiteral("one"), QStringLiteral("7"), QStringLiteral("c1")),
                          item(QStringLiteral("2"), QStringLiteral("two")),
                          item(QStringLiteral("3"), QStringLiteral("three"), QStringLiteral("no number"))});
        m_desk.heldBack = lists;
        QVERIFY(m_desk.settle());
        m_desk.changePermission(R"({"showAppBox":true,"registrationState":"Success"})");
        QVERIFY(m_desk.settle());
        m_desk.sendList(lists.at(0));
        QVERIFY(m_desk.settle());
        QCOMPARE(states.size(), 1); // Unregistered, at first
        m_desk.sendList(lists.at(1));
        QTRY_COMPARE(states.size(), 2);
        QCOMPARE(states.at(1).at(0).value<RegistrationState::Type>(), RegistrationState::Allowed);
        m_desk.heldBack.clear();
        QCOMPARE(added.size(), 0);
        QCOMPARE(counts.size(), 1); // what a binding has to know all the same
    }

    void showsWhatTheBoxHeldBefore()
    {
        QCOMPARE(m_box->itemCount(), 3);
        QCOMPARE(idsOf(m_box->items()), QStringList({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")}));
        const ProfileBoxItem first = m_box->item(QStringLiteral("1"));
        QCOMPARE(first.id(), QStringLiteral("1"));
        QCOMPARE(first.text(), QStringLiteral("one"));
        QCOMPARE(first.cookie(), QStringLiteral("c1"));
        QCOMPARE(first.iconId(), 7);
        QCOMPARE(first, m_box->items().at(0));
        QCOMPARE(m_box->item(QStringLiteral("2")).iconId(), -1);
        QCOMPARE(m_box->item(QStringLiteral("3")).iconId(), 0);
        QCOMPARE(m_box->item(QStringLiteral("none")), ProfileBoxItem());
    }

    void announcesItemsAsTheyComeAndGo()
    {
        ProfileBox second(m_context.get());
        QStringList order;
        QObject owner;
        connect(m_box.get(), &ProfileBox::itemAdded, &owner, [&](const QString& id) {
            order += QStringLiteral("+%1 of %2").arg(id).arg(m_box->itemCount());
            QCOMPARE(m_box->item(id).id(), id);
        });
        connect(m_box.get(), &ProfileBox::itemRemoved, &owner, [&](const QString& id) {
            order += QStringLiteral("-%1 of %2").arg(id).arg(m_box->itemCount());
            QCOMPARE(m_box->item(id), ProfileBoxItem());
        });
        QSignalSpy others(&second, &ProfileBox::itemAdded);
        QSignalSpy counts(m_box.get(), SIGNAL(itemCountChanged()));
        sendItems(QStringLiteral("listAdd"), {item(QStringLiteral("4"), QStringLiteral("four"))});
        sendItems(QStringLiteral("listRemove"),
                  {ScriptedCore::json(R"({"itemId":"2"})"), ScriptedCore::json(R"({"itemId":"9"})")});
        QVERIFY(m_desk.settle());
        QCOMPARE(order, QStringList({QStringLiteral("+4 of 4"), QStringLiteral("-2 of 3")}));
        QCOMPARE(others.size(), 1);
        QCOMPARE(counts.size(), 2);
    }

    void asksForTheRemovalOfItems()
    {
        const auto removal = [](const char* id) {
            return QByteArray("{\"requestListRemove\":{\"elements\":[{\"itemId\":\"") + id +
                   "\"}],\"type\":\"profileBoxItem\"}}";
        };
        QVERIFY(m_box->requestRemoveItem(QStringLiteral("3")));
        QCOMPARE(m_desk.core.nextMessage(), removal("3"));
        QCOMPARE(m_box->itemCount(), 3); // the service decides

        QVERIFY(m_box->requestRemoveAllItems());
        for (const char* id : {"1", "3", "4"}) // one by one, in their order
            QCOMPARE(m_desk.core.nextMessage(), removal(id));
        for (const char* id : {"1", "3", "4"})
            sendItems(QStringLiteral("listRemove"), {item(QString::fromLatin1(id), QString())});
        QTRY_COMPARE(m_box->itemCount(), 0);
        QVERIFY(m_box->requestRemoveAllItems());
        QVERIFY(m_desk.nothingWritten());
    }

    void retrievesAnIcon()
    {
        QSignalSpy retrieved(m_box.get(), &ProfileBox::iconRetrieved);
        const std::pair<QByteArray, ImageType::Type> icons[] = {{"\x89PNG\r\n\x1a\n and more", ImageType::Png},
                                                                {"GIF89a and more", ImageType::Gif},
                                                                {"BM and more", ImageType::Bmp},
                                                                {"\xff\xd8\xff and more", ImageType::Jpg},
                                                                {"nothing that shows", ImageType::Jpg}};
        for (const auto& [data, type] : icons) {
            retrieved.clear();
            QVERIFY(m_box->requestRetrieveIcon(7));
            const auto request =
                ScriptedCore::json(m_desk.core.nextMessage()).value(QLatin1String("requestProfileBoxImage"));
            QCOMPARE(request[QLatin1String("imageId")].toString(), QStringLiteral("7"));
            m_desk.sendStream(request[QLatin1String("streamId")].toString(), data);
            QTRY_COMPARE(retrieved.size(), 1);
            QCOMPARE(retrieved.at(0).at(0).toInt(), 7);
            QCOMPARE(retrieved.at(0).at(1).value<ImageType::Type>(), type);
            QCOMPARE(retrieved.at(0).at(2).toByteArray(), data);
        }
    }

private:
    static QJsonObject item(const QString& id, const QString& text, const QString& icon = {},
                            const QString& cookie = {})
    {
        return {{QStringLiteral("itemId"), id},
                {QStringLiteral("text"), text},
                {QStringLiteral("imageId"), icon},
                {QStringLiteral("cookie"), cookie}};
    }
    static QStringList idsOf(const QList<ProfileBoxItem>& items)
    {
        QStringList ids;
        for (const ProfileBoxItem& one : items)
            ids.append(one.id());
        return ids;
    }
    void sendItems(const QString& message, const QJsonArray& elements)
    {
        m_desk.sendElements(message, QStringLiteral("profileBoxItem"), elements);
    }

    Desk m_desk;
    std::unique_ptr<Context> m_context;
    std::unique_ptr<ProfileBox> m_box;
};

QTEST_GUILESS_MAIN(TstProfileBox)
#include "tst_profilebox.moc"
