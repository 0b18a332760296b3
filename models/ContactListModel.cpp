// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/ContactListModel.h>

#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>

namespace vx::platform::zel {

class ContactListModel::Private
{
public:
    explicit Private(ContactListModel* model)
        : q(model)
    {
    }

    void start(Context* context);
    void readAll();
    void read(const QString& handle);

    ContactListModel* const q;
    ContactService* service = nullptr; // a child of the model, from when the context is first ready
};

void ContactListModel::Private::start(Context* context)
{
    service = new ContactService(context, q);
    const auto all = [this] { readAll(); };
    const auto one = [this](const QString& handle) { read(handle); };
    connect(service, &ContactService::contactListUpdated, q, all);
    // What changed while the service was away is announced by nothing else. The list is announced within this.
    connect(service, &ContactService::contactListResent, service, &ContactService::refresh);
    connect(service, &ContactService::applicationEnabled, q, one);
    connect(service, &ContactService::applicationDisabled, q, one);
    connect(service, &ContactService::contactUpdated, q, one);
    connect(context, &Context::registrationStateUpdated, q, all);
    connect(context, &QObject::destroyed, q, all);
    readAll();
}

void ContactListModel::Private::readAll()
{
    QList<QVariant> records;
    const QList<Contact> contacts = service->contacts();
    for (const Contact& contact : contacts) {
        if (service->hasApplication(contact.handle()))
            records.append(QVariant::fromValue(contact));
    }
    q->setRecords(records);
}

void ContactListModel::Private::read(const QString& handle)
{
    const bool isShown = q->rowOf(handle) != -1;
    const bool isThere = service->hasApplication(handle);
    // Whoever is new may have gone by another handle, which nothing else tells.
    if (q->isBeingReplaced() || (isThere && !isShown))
        readAll();
    else if (isThere)
        q->setRecord(QVariant::fromValue(service->contact(handle)));
    else
        q->removeRecord(handle);
}

ContactListModel::ContactListModel(Context* context, QObject* parent)
    : RecordListModel({Contact::staticMetaObject, "handle", "displayName", true}, parent)
    , d(std::make_unique<Private>(this))
{
    if (context)
        whenReady(context, this, [this, context] { d->start(context); });
}

ContactListModel::~ContactListModel() = default;

Contact ContactListModel::contact(int row) const
{
    return index(row).data(RecordRole).value<Contact>();
}

} // namespace vx::platform::zel
