// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/ContactListModel.h>

#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>

#include <QtCore/QPointer>

#include <memory>

namespace vx::platform::zel {

class ContactListModel::Private
{
public:
    explicit Private(ContactListModel* model)
        : q(model)
    {
    }

    void setContext(Context* given);
    void start();
    void readAll();
    void readAllThenTell(bool isOtherComplete);
    void read(const QString& handle);

    ContactListModel* const q;
    QPointer<Context> context;
    std::unique_ptr<QObject> link;     // what listens to the context; the service is its child
    ContactService* service = nullptr; // from when the context is first ready
};

void ContactListModel::Private::setContext(Context* given)
{
    if (given == context)
        return;
    const bool wasComplete = q->isComplete();
    link = std::make_unique<QObject>();
    service = nullptr;
    context = given;
    const QPointer<ContactListModel> alive(q);
    q->setRecords({});
    if (alive && wasComplete)
        Q_EMIT q->completeChanged();
    if (alive && given && given == context)
        whenReady(given, link.get(), [this] { start(); });
}

void ContactListModel::Private::start()
{
    service = new ContactService(context, link.get());
    const auto all = [this] { readAll(); };
    const auto one = [this](const QString& handle) { read(handle); };
    connect(service, &ContactService::contactListUpdated, link.get(), all);
    // What changed while the service was away is announced by nothing else. The list is announced within this.
    connect(service, &ContactService::contactListResent, service, &ContactService::refresh);
    connect(service, &ContactService::applicationEnabled, link.get(), one);
    connect(service, &ContactService::applicationDisabled, link.get(), one);
    connect(service, &ContactService::contactUpdated, link.get(), one);
    connect(service, &ContactService::completeChanged, q, &ContactListModel::completeChanged);
    connect(context, &Context::registrationStateUpdated, link.get(), all);
    connect(context, &QObject::destroyed, link.get(), [this] { readAllThenTell(true); });
    readAllThenTell(service->isComplete());
}

void ContactListModel::Private::readAllThenTell(bool isOtherComplete)
{
    const QPointer<ContactListModel> alive(q);
    readAll();
    if (alive && isOtherComplete)
        Q_EMIT q->completeChanged();
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
    d->setContext(context);
}

ContactListModel::~ContactListModel() = default;

void ContactListModel::setContext(Context* context)
{
    d->setContext(context);
}

bool ContactListModel::isComplete() const
{
    return d->service && d->service->isComplete();
}

Contact ContactListModel::contact(int row) const
{
    return index(row).data(RecordRole).value<Contact>();
}

} // namespace vx::platform::zel
