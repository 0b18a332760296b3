// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/Contact.h>
#include <vx/platform/zel/RecordListModel.h>

namespace vx::platform::zel {

class Context;

/// The contacts who have the application, in the order of their handles: a list model over ContactService, for views
/// and for QML.
///
/// May be made at any time. It fills itself when the context is ready, is empty while access is lost, and fills itself
/// again when it is won back. Who removes the application leaves at once. When a service that was away sends its list
/// again, the model has it read anew, by ContactService::refresh(), and becomes the difference. The roles are called
/// like the properties of Contact; Qt::DisplayRole is the displayName. For people to read, put a ContactFilterModel
/// over it.
///
/// The context is held guarded and may go first; the model is empty after that. Another one may be given at any time.
class Q_DECL_EXPORT ContactListModel : public vx::platform::zel::RecordListModel
{
    Q_OBJECT
    Q_PROPERTY(bool complete READ isComplete NOTIFY completeChanged)

public:
    /// Shows the contacts of the user for whom \a context gives access; \a parent may own it.
    explicit ContactListModel(Context* context, QObject* parent = nullptr);
    ~ContactListModel() override;

    /// Shows the contacts of the user for whom \a context gives access; of nobody without one.
    void setContext(Context* context);
    /// Whether these are all, as ContactService::isComplete() has it.
    bool isComplete() const;

    /// The contact in \a row; a null one when there is no such row.
    Q_INVOKABLE vx::platform::zel::Contact contact(int row) const;

Q_SIGNALS:
    /// isComplete() is another answer than before. After the rows were announced.
    void completeChanged();

private:
    class Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx::platform::zel
