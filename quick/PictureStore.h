// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QCache>
#include <QtCore/QHash>
#include <QtCore/QMutex>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QUrl>

#include <functional>
#include <memory>

namespace vx::platform::zel {
class ProfileBox;
class UserProfile;
} // namespace vx::platform::zel

namespace zelquick {

class Context;
class PictureStore;

/// The way to a store from the threads that load images, which may outlive it.
class PictureLink
{
public:
    explicit PictureLink(PictureStore* store)
        : m_store(store)
    {
    }

    /// Calls \a function with the store, which does not go meanwhile. Not at all when it is gone: false.
    bool with(const std::function<void(PictureStore*)>& function);
    void cut();

private:
    QMutex m_mutex;
    PictureStore* m_store;
};

/// The pictures that are shown: the user's own, contacts' and icons of the box. Each is asked for when it is first
/// shown, once however many show it, and kept as the bytes that came, the last shown of them up to a limit.
///
/// Each has an address. When a picture changes that was shown before, its address does, too, which is what makes an
/// image load it anew.
///
/// Thread: that of the context, but for what a PictureLink calls.
class PictureStore : public QObject
{
    Q_OBJECT

public:
    enum class Kind { Own, Contact, Icon };

    /// The most bytes that are kept.
    static constexpr int maximumKept = 4 << 20;

    explicit PictureStore(QObject* parent);
    ~PictureStore() override;

    /// From when \a context is ready there are pictures.
    void setContext(Context* context);
    /// The name of the image provider; each store has one of its own.
    QString provider() const { return m_provider; }
    std::shared_ptr<PictureLink> link() const { return m_link; }
    /// Where images find the picture of the contact, or the icon, \a name.
    QUrl urlOf(Kind kind, const QString& name = QString()) const;

    /// Somebody shows the picture \a key, the path of its address without what changes: answered() follows.
    void ask(const QString& key);
    /// Somebody who asked waits no longer.
    void giveUp(const QString& key);

Q_SIGNALS:
    /// The picture \a key is \a bytes; empty when there is none.
    void answered(const QString& key, const QByteArray& bytes);
    /// urlOf() has another answer for this one.
    void renewed(zelquick::PictureStore::Kind kind, const QString& name);

private:
    void start();
    void request(const QString& key);
    void answer(const QString& key, const QByteArray& bytes);
    void came(Kind kind, const QString& name, const QByteArray& bytes);
    void keep(const QString& key, const QByteArray& bytes);

    const QString m_provider;
    const std::shared_ptr<PictureLink> m_link;
    Context* m_context = nullptr;
    vx::platform::zel::UserProfile* m_profile = nullptr;
    vx::platform::zel::ProfileBox* m_box = nullptr;
    QCache<QString, QByteArray> m_kept{maximumKept};
    QHash<QString, int> m_waiting;  ///< how many wait for it
    QHash<QString, int> m_renewals; ///< of what was ever shown
};

} // namespace zelquick
