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
/// that. Another one may be given at any time.
class Q_DECL_EXPORT ProfileBoxModel : public vx::platform::zel::RecordListModel
{
    Q_OBJECT

public:
    /// Shows the box of the application that \a context registers; \a parent may own it.
    explicit ProfileBoxModel(Context* context, QObject* parent = nullptr);
    ~ProfileBoxModel() override;

    /// Shows the box of the application that \a context registers; nothing without one.
    void setContext(Context* context);

    /// The item in \a row; a null one when there is no such row.
    Q_INVOKABLE vx::platform::zel::ProfileBoxItem item(int row) const;

private:
    class Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx::platform::zel
