// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/services/Session.h>
#include <simulator/world/World.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QStringList>

namespace zelcore {

/// The world as the lists that applications mirror. An element is ready JSON text.
class Lists
{
public:
    static inline const QString global = QStringLiteral("global"); ///< "permission" and "platformProfile", by "name".
    static inline const QString platformContact =
        QStringLiteral("platformContact"); ///< The ids of those who run the application, by "userId".
    static inline const QString platformUser = QStringLiteral("platformUser");       ///< Their records, by "userId".
    static inline const QString profileBoxItem = QStringLiteral("profileBoxItem");   ///< By "itemId".
    static inline const QString profileBoxImage = QStringLiteral("profileBoxImage"); ///< By "imageId".

    static inline const QString permission = QStringLiteral("permission");
    static inline const QString platformProfile = QStringLiteral("platformProfile");

    /// \a world must outlive it.
    explicit Lists(const World& world)
        : m_world(world)
    {
    }

    static const QStringList& all();
    /// The member that tells one element of the list from another; empty for a list that there is not.
    static QString keyMember(const QString& list);

    /// Everything in the list, as an application sees it.
    QList<QByteArray> elements(const QString& list, const Session& session) const;
    /// One element; empty when the list has none of this key.
    QByteArray element(const QString& list, const QString& key, const Session& session) const;
    /// The box that an application sees.
    const Box& box(const Session& session) const;
    /// What the world calls it.
    QString boxOwner(const Session& session) const;

    /// {"MEMBER":"KEY"}: how an element is named where it is not shown.
    static QByteArray keyJson(const QString& list, const QString& key);

private:
    static QByteArray itemJson(const BoxItem& item);
    static QByteArray iconJson(const BoxIcon& icon);
    QByteArray permissionJson(const QString& state) const;
    QByteArray profileJson() const;

    const World& m_world;
};

} // namespace zelcore
