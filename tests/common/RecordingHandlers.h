// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/RegistrationHandler.h>
#include <splib/contacts/PlatformContact.h>
#include <splib/profilebox/ProfileBoxImage.h>
#include <splib/profilebox/ProfileBoxItem.h>

#include <QtCore/QStringList>

#include <functional>
#include <utility>

/// What the handlers below have heard, a line for each event. Shared by all handlers of one test.
///
/// The manager's own handlers are made by the manager, so a test gives them this afterwards. An expected line may be
/// met with an action (`on`), which runs inside the event, once.
class EventLog
{
public:
    void add(const QString& line)
    {
        m_lines.append(line);
        if (m_trigger == line)
            std::exchange(m_action, [] {})();
    }

    void on(const QString& line, std::function<void()> action)
    {
        m_trigger = line;
        m_action = std::move(action);
    }

    /// What has been heard since the last time, in order.
    QStringList take() { return std::exchange(m_lines, {}); }

private:
    QStringList m_lines;
    QString m_trigger;
    std::function<void()> m_action;
};

struct RecordingHandler final : zelsplib::RegistrationHandler
{
    using Contact = zelsplib::PlatformContact;
    using Item = zelsplib::ProfileBoxItem;
    using Image = zelsplib::ProfileBoxImage;

    EventLog* log = nullptr;

    /// A value that is empty shows as a dash.
    void note(const char* event, QStringList values) const
    {
        for (QString& value : values)
            value = value.isEmpty() ? QStringLiteral("-") : value;
        if (log)
            log->add(QString(QLatin1String(event) + u' ' + values.join(u' ')).trimmed());
    }

    void pushPermissionEvent(const QString& code) const { note("state", {code}); }

    void pushPlatformUserProfileDisplayNameChangedEvent(const Contact& c) const
    {
        note("name", {c.getDisplayName(), QString::fromLatin1(c.getAvatarData())});
    }
    void pushPlatformUserProfilePersonalMessageChangedEvent(const Contact& c) const
    {
        note("message", {c.getPersonalMessage()});
    }
    void pushPlatformUserProfileStatusChangedEvent(const Contact& c) const
    {
        note("status", {c.getShowBusy() ? QStringLiteral("busy") : QStringLiteral("available"), c.getStatusMessage()});
    }
    void pushPlatformUserProfileAvatarChangedEvent(const Contact& c) const
    {
        note("picture", {c.getAvatarId(), c.getAvatarMimeType(), QString::fromLatin1(c.getAvatarData())});
    }

    void pushGetPlatformContactListEvent(const QList<Contact>& list) const
    {
        QStringList handles;
        for (const Contact& contact : list)
            handles.append(contact.getHandle());
        note("contacts", handles);
    }
    void pushPlatformContactListResentEvent() const { note("resent", {}); }
    void pushPlatformContactInstallAppEvent(const Contact& c) const { note("install", {c.getHandle()}); }
    void pushPlatformContactUninstallAppEvent(const Contact& c) const { note("uninstall", {c.getHandle()}); }
    void pushPlatformContactUpdateEvent(const Contact& before, const Contact& after) const
    {
        note("update", {after.getHandle(), before.getDisplayName(), after.getDisplayName()});
    }
    void pushPlatformContactInvitationReceivedEvent(const Contact& c) const { note("invitation", {c.getHandle()}); }
    void pushPlatformContactAvatarChangedEvent(const Contact& c) const
    {
        note("picture", {c.getHandle(), c.getAvatarId(), QString::fromLatin1(c.getAvatarData())});
    }

    void pushAddProfileBoxItemEvent(const Item& i) const { note("item added", {i.getItemId(), i.getText()}); }
    void pushUpdateProfileBoxItemEvent(const Item& i) const { note("item updated", {i.getItemId(), i.getText()}); }
    void pushRemoveProfileBoxItemEvent(const Item& i) const { note("item removed", {i.getItemId(), i.getText()}); }
    void pushAddProfileBoxImageEvent(const Image& i) const { note("icon added", {i.getImageId(), data(i)}); }
    void pushUpdateProfileBoxImageEvent(const Image& i) const { note("icon updated", {i.getImageId(), data(i)}); }
    void pushRemoveProfileBoxImageEvent(const Image& i) const { note("icon removed", {i.getImageId(), data(i)}); }
    void pushRetrievedProfileBoxImageEvent(const Image& i) const
    {
        note("icon retrieved", {i.getImageId(), i.getImage()->getMimeType(), data(i)});
    }

    void registered() override { note("gate", {QStringLiteral("registered")}); }
    void userProfileIsReady() override { note("gate", {QStringLiteral("profile")}); }
    void userProfileAvatarIsReady() override { note("gate", {QStringLiteral("picture")}); }
    void profileBoxIsReady() override { note("gate", {QStringLiteral("box")}); }
    void contactsIsReady() override { note("gate", {QStringLiteral("contacts")}); }

    // Nothing is noted of these.
    void pushProfileBoxReceivedEvent() const {}
    void pushEcoIdResponse(const QString&, const QString&) const {}
    void pushEcoIdStatusResponse(const QString&, const QString&) const {}
    bool sendContactInvitation(const QString&, const QString&, const QString&) const { return true; }
    bool invokeChat(const QString&) const { return true; }

private:
    static QString data(const Image& image) { return QString::fromLatin1(image.getImage()->getData()); }
};
