// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "../Fuzzing.h"

#include <QtCore/QHash>
#include <QtCore/QMetaProperty>
#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QVariant>

#include <cstdio>

/// What a view shows that is bound to an object's properties: each as it was when its signal came last.
class Bindings : public QObject
{
    Q_OBJECT

public:
    Bindings(QObject* object, QObject* context)
        : QObject(object)
        , m_object(object)
        , m_context(context)
    {
        const QMetaObject& type = *object->metaObject();
        const QMetaMethod slot = metaObject()->method(metaObject()->indexOfSlot("refresh()"));
        for (int i = type.propertyOffset(); i < type.propertyCount(); ++i) {
            const QMetaProperty property = type.property(i);
            if (!property.hasNotifySignal())
                continue;
            m_shown.insert(i, property.read(object));
            connect(object, property.notifySignal(), this, slot, Qt::UniqueConnection);
        }
    }

    /// Aborts when a view shows something that is not so any more. Without its context the object shows nothing.
    void requireCurrent(const QByteArrayList& except) const
    {
        for (auto shown = m_shown.begin(); m_context && shown != m_shown.end(); ++shown) {
            const QMetaProperty property = m_object->metaObject()->property(shown.key());
            if (!except.contains(property.name()) && property.read(m_object) != shown.value()) {
                std::fprintf(stderr, "%s: ", property.name());
                require(false, "a property changed and no signal told");
            }
        }
    }

private Q_SLOTS:
    void refresh()
    {
        for (auto shown = m_shown.begin(); shown != m_shown.end(); ++shown) {
            const QMetaProperty property = m_object->metaObject()->property(shown.key());
            if (property.notifySignalIndex() == senderSignalIndex())
                shown.value() = property.read(m_object);
        }
    }

private:
    QObject* const m_object;
    QPointer<QObject> const m_context;
    QHash<int, QVariant> m_shown;
};
