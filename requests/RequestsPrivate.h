// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <requests/Refusals.h>
#include <requests/WaitingList.h>
#include <vx/platform/zel/ApplicationPermissions.h>
#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>
#include <vx/platform/zel/Picture.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/Requests.h>
#include <vx/platform/zel/UserProfile.h>
#include <vx/platform/zel/Utils.h>

#include <QtCore/QMap>
#include <QtCore/QPointer>
#include <QtCore/QThread>

#include <chrono>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

namespace vx::platform::zel {

/// What an item is known by: text, icon, cookie.
using ItemKey = std::tuple<QString, std::optional<int>, QString>;
using StatusKey = std::pair<UserStatus::Type, QString>;

/// What waits for which signal, and the objects that send these.
class RequestsPrivate
{
public:
    RequestsPrivate(Context* givenContext, Requests* requests);

    template <typename Key, typename T, typename Send>
    QFuture<T> ask(WaitingList<Key, T>& list, const Key& key, Send&& send);
    template <typename Key, typename T, typename Send>
    QFuture<T> askBox(WaitingList<Key, T>& list, const Key& key, Send&& send);
    template <typename Key, typename Send, typename IsCurrent>
    QFuture<void> change(WaitingList<Key, void>& list, const Key& value, Send&& send, IsCurrent&& isCurrent);

    UserProfile& profile();
    void makeContacts();
    QString askForPicture(const QString& handle) const;
    QString addItem(const ItemKey& item);
    QString addItemWithIcon(const ItemKey& item, int iconId, ImageType::Type type, const QByteArray& icon);
    void takeItem(const QString& itemId);
    void takeIcon(int iconId);

    std::vector<std::unique_ptr<AnyPromise>> takeAll();
    void loseAccess(const QString& why);

    Requests* const q;
    QPointer<Context> context;
    std::chrono::milliseconds timeout = std::chrono::seconds(30);

    WaitingList<QString, Picture> pictures{QStringLiteral("a contact's picture")};
    WaitingList<QString, QString> ecoIds{QStringLiteral("an eco identifier")};
    WaitingList<QString, EcoIdStatus::Type> ecoIdStates{QStringLiteral("an eco identifier's status")};
    WaitingList<ItemKey, ProfileBoxItem> additions{QStringLiteral("adding an item")};
    WaitingList<QString, void> removals{QStringLiteral("removing an item")};
    WaitingList<int, void> registrations{QStringLiteral("registering an icon")};
    WaitingList<int, Picture> icons{QStringLiteral("an icon")};
    WaitingList<QString, void> messages{QStringLiteral("changing the personal message")};
    WaitingList<StatusKey, void> states{QStringLiteral("changing the status")};
    WaitingList<QByteArray, void> ownPictures{QStringLiteral("changing the display picture")};

    QMap<int, QList<ItemKey>> itemsForIcons; ///< those that are asked for when their icon is there

    ProfileBox box;
    Utils utils;
    // Made when they are needed: without access they would stay empty for their lives, and a contact service has all
    // others announce their list.
    std::unique_ptr<UserProfile> ownProfile;
    std::unique_ptr<ContactService> contacts;
    bool isMakingContacts = false;
};

/// \a send hands the request on and answers why it could not, if so. It may call the application's slots, which may do
/// anything, and answer the request at once.
template <typename Key, typename T, typename Send>
QFuture<T> RequestsPrivate::ask(WaitingList<Key, T>& list, const Key& key, Send&& send)
{
    if (QThread::currentThread() != q->thread())
        return list.failed(RequestError::Refused, QStringLiteral("asked for on another thread than the context's"));
    if (!context || !context->isReady())
        return list.failed(RequestError::NoAccess, QStringLiteral("the context is not ready"));
    const auto place = list.add(key, timeout);
    const QFuture<T> future = list.future(place);
    const QString refusal = send();
    // What is finished is in the list no more, and with Requests the list may be gone.
    if (!future.isFinished() && !refusal.isEmpty())
        list.fail(place, RequestError::Refused, refusal);
    return future;
}

template <typename Key, typename T, typename Send>
QFuture<T> RequestsPrivate::askBox(WaitingList<Key, T>& list, const Key& key, Send&& send)
{
    return ask(list, key, [&] {
        const bool isAllowed = ApplicationPermissions(context).permissionValue(Permission::ProfileUpdatesAllowed) ==
                               PermissionValue::Allowed;
        const QString refusal =
            refusals::unless(isAllowed, QStringLiteral("the user does not allow the application a profile box"));
        return refusal.isEmpty() ? send() : refusal;
    });
}

template <typename Key, typename Send, typename IsCurrent>
QFuture<void> RequestsPrivate::change(WaitingList<Key, void>& list, const Key& value, Send&& send,
                                      IsCurrent&& isCurrent)
{
    return ask(list, value, [&] {
        UserProfile& own = profile();
        const QString refusal = refusals::unless(send(own));
        // A change that changes nothing is not announced. It does change something when another one is on its way.
        if (refusal.isEmpty() && list.size() == 1 && isCurrent(own))
            list.answerAll(value);
        return refusal;
    });
}

} // namespace vx::platform::zel
