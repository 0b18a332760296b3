// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quick/Context.h>
#include <quick/PictureStore.h>

#include <vx/platform/zel/RecordListModel.h>

#include <QtCore/QModelIndex>
#include <QtCore/QPointer>

#include <functional>
#include <memory>

namespace zelquick {

/// What a list model for QML has beside that of the floor below: a context of this floor, and a role for the address of
/// each row's picture. Part of its model.
class PictureRole
{
public:
    /// The number of the role.
    static constexpr int role = Qt::DecorationRole;

    /// Rows of \a model have pictures of this \a kind, known by what the property \a name says. \a give hands a context
    /// to the model.
    PictureRole(zel::RecordListModel* model, PictureStore::Kind kind, const char* name,
                std::function<void(zel::Context*)> give);

    Context* context() const { return m_context; }
    /// Whether it is another one.
    bool setContext(Context* context);
    /// Empty where there is no picture to ask for.
    QUrl urlOf(const QModelIndex& index) const;

private:
    QString nameOf(const QModelIndex& index) const { return index.data(m_nameRole).toString(); }
    void renew(const QString& name);

    zel::RecordListModel* const m_model;
    const PictureStore::Kind m_kind;
    const int m_nameRole;
    const std::function<void(zel::Context*)> m_give;
    QPointer<Context> m_context;
    std::unique_ptr<QObject> m_link; // what listens to the context
};

} // namespace zelquick
