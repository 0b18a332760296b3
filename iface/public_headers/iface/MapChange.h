// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore/QExplicitlySharedDataPointer>
#include <QtCore/QList>
#include <QtCore/QMetaType>
#include <QtCore/QSharedData>

namespace iface {

/// What changed in a map: the keys, or, without content, something that has no known keys. A value.
struct ZEL_EXPORT MapChange
{
    class ZEL_EXPORT MapChangeContentBase : public QSharedData
    {
    public:
        MapChangeContentBase() = default;
        virtual ~MapChangeContentBase();

    private:
        Q_DISABLE_COPY_MOVE(MapChangeContentBase)
    };

    template <class K>
    class MapChangeContent : public MapChangeContentBase
    {
    public:
        explicit MapChangeContent(const QList<K>& changed)
            : keys(changed)
        {
        }
        const QList<K> keys;
    };

    template <class K>
    static MapChange createSingle(const K& key)
    {
        QList<K> keys; // one that is made with its contents does not look whether there is memory for them
        keys.append(key);
        return create(keys);
    }
    template <class K>
    static MapChange create(const QList<K>& keys);

    /// Whether the keys that changed are known.
    bool hasContent() const { return content != nullptr; }
    /// The keys that changed; none if they are not known, or are keys of another type.
    template <class K>
    QList<K> keys() const;

    QExplicitlySharedDataPointer<MapChangeContentBase> content;
};

template <class K>
MapChange MapChange::create(const QList<K>& keys)
{
    MapChange change;
    change.content = QExplicitlySharedDataPointer<MapChangeContentBase>(new MapChangeContent<K>(keys));
    return change;
}

template <class K>
QList<K> MapChange::keys() const
{
    const auto* known = dynamic_cast<const MapChangeContent<K>*>(content.data());
    return known ? known->keys : QList<K>();
}

} // namespace iface

Q_DECLARE_METATYPE(iface::MapChange)
