// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/ProfileBoxItem.h>
#include <vx/platform/zel/RecordListModel.h>

namespace vx::platform::zel {

class Context;

/// The items of the application's box in the user's profile, in the box's order: a list model over ProfileBox.
///
/// May be made at any time. It is empty while there is no access. The roles are called like the properties of
/// ProfileBoxItem; Qt::DisplayRole is the text. The context is held guarded and may go first; the model is empty after
/// that.
class Q_DECL_EXPORT ProfileBoxModel : public RecordListModel
{
    Q_OBJECT

public:
    /// Shows the box of the application that \a context registers; \a parent may own it.
    explicit ProfileBoxModel(Context* context, QObject* parent = nullptr);
    ~ProfileBoxModel() override;

    /// The item in \a row; a null one when there is no such row.
    Q_INVOKABLE vx::platform::zel::ProfileBoxItem item(int row) const;
};

} // namespace vx::platform::zel
