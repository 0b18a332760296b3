// SPDX-License-Identifier: Apache-2.0
#include <common/Random.h>
#include <common/TestMain.h>

#include <vx/platform/zel/ContactFilterModel.h>
#include <vx/platform/zel/ContactListModel.h>
#include <vx/platform/zel/Context.h>
#include <vx/platform/zel/ProfileBoxModel.h>

#include <zelcore/TestService.h>

#include <QtCore/QSortFilterProxyModel>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QSignalSpy>

#include <algorithm>
#include <memory>

using namespace vx::platform::zel;
using zelcore::BoxItem;
using zelcore::Person;

namespace {

struct Line
{
    Q_GADGET
    Q_PROPERTY(QString handle MEMBER handle)
    Q_PROPERTY(QString displayName MEMBER displayName)
    Q_PROPERTY(vx::platform::zel::UserStatus::Type status MEMBER status)
public:
    QString handle;
    QString displayName;
    UserStatus::Type status = UserStatus::Available;
    bool operator==(const Line&) const = default;
};

struct Lines : RecordListModel
{
    explicit Lines(bool isInKeyOrder)
        : RecordListModel({Line::staticMetaObject, "handle", "displayName", isInKeyOrder}, nullptr)
    {
    }
    using RecordListModel::isBeingReplaced;
    using RecordListModel::removeRecord;
    using RecordListModel::setRecord;
    using RecordListModel::setRecords;
};

/// The rows of a model as its signals alone tell of them, each as the text of its roles.
class Replay : public QObject
{
public:
    explicit Replay(QAbstractItemModel& model)
        : m_model(model)
        , m_tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest)
    {
        connect(&model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex&, int first, int last) {
            for (int row = first; row <= last; ++row)
                m_rows.insert(row, read(row));
        });
        connect(&model, &QAbstractItemModel::rowsRemoved, this,
                [this](const QModelIndex&, int first, int last) { m_rows.remove(first, last - first + 1); });
        connect(&model, &QAbstractItemModel::rowsMoved, this,
                [this](const QModelIndex&, int from, int last, const QModelIndex&, int to) {
                    QVERIFY(from == last && (to < from || to > from + 1));
                    m_rows.move(from, to > from ? to - 1 : to);
                });
        connect(&model, &QAbstractItemModel::layoutChanged, this, [] { QFAIL("layout"); });
        connect(&model, &QAbstractItemModel::modelReset, this, [] { QFAIL("reset"); });
        connect(&model, &QAbstractItemModel::dataChanged, this,
                [this](const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) {
                    for (int row = first.row(); row <= last.row(); ++row) {
                        for (const int role : roles) {
                            const QVariant now = m_model.index(row, 0).data(role);
                            QVERIFY(std::exchange(m_rows[row][role], now) != now);
                        }
                    }
                });
    }

    /// Whether they are the rows, of one column and without children.
    bool isRight() const
    {
        const QModelIndex first = m_model.index(0, 0);
        return m_rows == rows() && m_model.columnCount() == 1 && m_model.hasChildren() == first.isValid() &&
               (!first.isValid() || m_model.rowCount(first) + m_model.columnCount(first) == 0);
    }

private:
    QHash<int, QVariant> read(int row) const
    {
        QHash<int, QVariant> values;
        for (const int role : m_model.roleNames().keys())
            values.insert(role, m_model.index(row, 0).data(role));
        return values;
    }
    QList<QHash<int, QVariant>> rows() const
    {
        QList<QHash<int, QVariant>> rows;
        for (int row = 0; row < m_model.rowCount(); ++row)
            rows.append(read(row));
        return rows;
    }

    QAbstractItemModel& m_model;
    QAbstractItemModelTester m_tester;
    QList<QHash<int, QVariant>> m_rows = rows();
};

QStringList column(const QAbstractItemModel& model, const QByteArray& name)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts.append(model.index(row, 0).data(model.roleNames().key(name)).toString());
    return texts;
}

} // namespace

class TstModels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        m_context.reset();
        m_service.reset();
    }

    /// Also from within its own announcements, where whole lists and single records come, and what was begun ends.
    void becomeAnyListByDifferences()
    {
        QRandomGenerator random = seededRandom();
        for (const bool isInKeyOrder : {false, true}) {
            const auto below = [&](int end) { return int(random.bounded(end)); };
            const auto line = [&] {
                return Line{QString::number(below(20)), QStringList{u"a"_s, u"B"_s, u"c"_s}[below(3)],
                            below(2) ? UserStatus::Available : UserStatus::Busy};
            };
            Lines model(isInKeyOrder);
            QCOMPARE(model.roleNames().size(), 5); // three members, the record and what is shown
            QVERIFY(model.roleNames().value(model.role("record")) == "record" && model.role("nothing") == -1);
            const Replay replay(model);
            ContactFilterModel filter;
            filter.setSourceModel(&model);
            const Replay filtered(filter);
            QList<Line> naive;
            const auto fitting = [&] {
                const QStringList words = filter.searchText().split(u' ');
                QStringList found;
                for (const Line& is : std::as_const(naive)) {
                    const bool isFound = std::all_of(words.begin(), words.end(), [&](const QString& word) {
                        return is.displayName.contains(word, Qt::CaseInsensitive) || is.handle.contains(word);
                    });
                    if (isFound && (filter.presence() == ContactFilterModel::Anybody ||
                                    (filter.presence() == ContactFilterModel::Busy) == (is.status == UserStatus::Busy)))
                        found.append(is.displayName.toLower() + is.handle);
                }
                found.sort();
                for (QString& each : found)
                    each.remove(0, 1);
                return found;
            };
            int told = 0;
            connect(&model, &RecordListModel::countChanged, this, [&] { told = model.count(); });
            const auto setAll = [&](const QList<Line>& lines) {
                model.setRecords(QVariant::fromValue(lines).toList());
            };
            const auto change = [&] {
                const Line one = line();
                const auto known =
                    std::find_if(naive.begin(), naive.end(), [&](const Line& is) { return is.handle == one.handle; });
                const int kind = below(6);
                if (kind == 4)
                    return filter.setPresence(ContactFilterModel::Presence(below(3)));
                if (kind == 5)
                    return filter.setSearchText(QStringList{{}, u"b"_s, u"1"_s, u"1 b"_s, u"12"_s}[below(5)]);
                if (kind < 2) {
                    QList<Line> next;
                    for (int i = below(12); i > 0; --i)
                        next.append(line());
                    if (isInKeyOrder)
                        std::sort(next.begin(), next.end(),
                                  [](const Line& a, const Line& b) { return a.handle < b.handle; });
                    naive.clear();
                    for (const Line& each : std::as_const(next)) {
                        if (std::none_of(naive.cbegin(), naive.cend(),
                                         [&](const Line& is) { return is.handle == each.handle; }))
                            naive.append(each);
                    }
                    return setAll(next);
                }
                if (known == naive.end())
                    return;
                kind == 2 ? void(*known = one) : void(naive.erase(known));
                if (model.isBeingReplaced())
                    setAll(naive);
                else
                    kind == 2 ? model.setRecord(QVariant::fromValue(one)) : model.removeRecord(one.handle);
            };
            int depth = 0;
            bool isNested = false;
            const auto nested = [&] {
                if (depth < 3 && below(8) == 0) {
                    isNested = true;
                    ++depth;
                    change();
                    --depth;
                }
            };
            for (const QAbstractItemModel* const each : std::initializer_list<QAbstractItemModel*>{&model, &filter}) {
                connect(each, &QAbstractItemModel::rowsInserted, this, nested);
                connect(each, &QAbstractItemModel::rowsRemoved, this, nested);
                connect(each, &QAbstractItemModel::rowsMoved, this, nested);
                connect(each, &QAbstractItemModel::dataChanged, this, nested);
            }
            for (int step = 0; step < 1000; ++step) {
                QHash<QString, QPersistentModelIndex> places;
                for (const QString& handle : fitting())
                    places.insert(handle, filter.index(filter.rowOf(handle), 0));
                isNested = false;
                change();
                QVERIFY(replay.isRight() && filtered.isRight());
                const QStringList shown = fitting();
                QCOMPARE(column(filter, "handle"), shown);
                for (int row = 0; row < shown.size(); ++row) {
                    QCOMPARE(filter.rowOf(shown.at(row)), row);
                    QCOMPARE(filter.mapFromSource(model.index(model.rowOf(shown.at(row)))).row(), row);
                }
                for (const auto& [handle, place] : places.asKeyValueRange()) {
                    QVERIFY(!place.isValid() || place.data(filter.role("handle")) == handle);
                    QVERIFY(isNested || place.isValid() == shown.contains(handle));
                }
                QCOMPARE(told, model.count());
                QCOMPARE(model.count(), naive.size());
                for (int row = 0; row < naive.size(); ++row) {
                    QCOMPARE(model.index(row).data(RecordListModel::RecordRole).value<Line>(), naive.at(row));
                    QCOMPARE(model.rowOf(naive.at(row).handle), row);
                }
            }
            QVERIFY(model.rowOf(u"none"_s) == -1 && filter.rowOf(u"none"_s) == -1 && !model.isBeingReplaced());

            Lines few(isInKeyOrder);
            const QSignalSpy counted(&few, &RecordListModel::countChanged);
            few.setRecord(QVariant::fromValue(Line{u"1"_s, {}}));
            few.setRecord(QVariant::fromValue(Line{u"2"_s, {}}));
            const QSignalSpy removed(&few, &QAbstractItemModel::rowsRemoved);
            few.setRecords({QVariant::fromValue(Line{u"2"_s, {}}), QVariant::fromValue(Line{u"3"_s, {}})});
            QVERIFY(counted.size() == 2 && removed.size() == 1 && removed[0][2].toInt() == 0); // the second stays

            // Who listens before the filter, and changes the rows again, has it hear of the last change first.
            connect(
                &few, &QAbstractItemModel::rowsInserted, this, [&] { few.removeRecord(u"3"_s); },
                Qt::SingleShotConnection);
            auto* const late = new ContactFilterModel;
            late->setSourceModel(&few);
            late->setSearchText(u"4"_s);
            const QSignalSpy resets(late, &QAbstractItemModel::modelAboutToBeReset);
            few.setRecord(QVariant::fromValue(Line{u"4"_s, {}}));
            QVERIFY(column(*late, "handle") == QStringList(u"4"_s) && !resets.isEmpty());
            connect(late, &QAbstractItemModel::rowsRemoved, this, [late] { delete late; });
            few.setRecords({});

            auto* const destroyed = new Lines(isInKeyOrder);
            connect(destroyed, &QAbstractItemModel::rowsInserted, this, [destroyed] { delete destroyed; });
            destroyed->setRecords({QVariant::fromValue(line())});
        }
    }

    void showWhatTheServiceHasWhileThereIsAccess()
    {
        QRandomGenerator random = seededRandom();
        start();
        m_service->generateContacts(30, 1);
        ContactListModel model(m_context.get());
        ContactFilterModel filter;
        filter.setSourceModel(&model);
        ProfileBoxModel box(m_context.get());
        const Replay replays[] = {Replay(model), Replay(filter), Replay(box)};
        bool hasAccess = true;
        const auto agrees = [&] {
            QMap<QString, QString> people;
            for (const Person& person : hasAccess ? m_service->contacts() : QList<Person>())
                people.insert(person.handle, person.displayName);
            QStringList lines;
            for (const BoxItem& item : hasAccess ? m_service->boxItems() : QList<BoxItem>())
                lines.append(item.text);
            return column(model, "handle") == people.keys() && column(model, "displayName") == people.values() &&
                   filter.rowCount() == model.count() && column(box, "text") == lines &&
                   model.contact(0).handle() == people.keys().value(0) && box.item(0).text() == lines.value(0);
        };
        for (int step = 0; step < 150; ++step) {
            const QString handle = u"extra%1"_s.arg(random.bounded(6));
            Person person = m_service->contact(handle);
            const int kind = step == 149 && !hasAccess ? 1 : random.bounded(30);
            const bool isAway = random.bounded(20) == 0;
            if (isAway)
                m_service->goAway();
            if (kind == 1) {
                hasAccess = !hasAccess;
                m_service->setRegistrationState(hasAccess ? u"Success"_s : u"NoDataConnection"_s);
            } else if (kind < 5) {
                const QList<BoxItem> items = m_service->boxItems();
                BoxItem item = items.value(random.bounded(4));
                item.text = u"Level %1"_s.arg(step);
                if (item.id.isEmpty())
                    m_service->addBoxItem(item.text, u"cookie"_s);
                else if (kind == 2)
                    m_service->removeBoxItem(item.id);
                else
                    m_service->changeBoxItem(item);
            } else if (person.userId.isEmpty()) {
                person.handle = handle;
                m_service->addContact(person, kind % 2 == 0);
            } else if (kind < 9) {
                m_service->removeContact(handle);
            } else if (kind < 20) {
                person.displayName = QString::number(random.bounded(100));
                m_service->changeContact(person);
            } else if (m_service->contacts().contains(person)) {
                m_service->uninstallApplication(handle);
            } else {
                m_service->installApplication(handle);
            }
            if (isAway) {
                QVERIFY(m_service->comeBack());
                QTRY_COMPARE(m_service->clientCount(), 1);
            }
            QTRY_VERIFY(agrees());
            for (const Replay& replay : replays)
                QVERIFY(replay.isRight());
        }
        box.setContext(nullptr);
        QCOMPARE(box.count(), 0);
        box.setContext(m_context.get());
        Person person = m_service->contacts().constFirst();
        person.handle = u"another"_s;
        m_service->changeContact(person);
        QTRY_VERIFY(agrees());
        const QSignalSpy completeness(&model, &ContactListModel::completeChanged);
        m_context.reset();
        QCOMPARE(completeness.size(), 1);
        for (const Replay& replay : replays)
            QVERIFY(replay.isRight());
        QVERIFY(model.contact(0).isNull() && box.item(0).isNull());
    }

    void findWhomPeopleLookFor()
    {
        start();
        execute("contact add zoë displayName='Zoë Adams' showBusy=true personalMessage='at the sea'");
        execute("contact add änne displayName='Änne Berg'");
        execute("contact add anna displayName='anna Cole'");
        execute("contact add ödman displayName='Bert Ödman'");
        ContactListModel model(nullptr);
        const QSignalSpy completeness(&model, &ContactListModel::completeChanged);
        model.setContext(m_context.get());
        ContactFilterModel filter;
        const QSignalSpy locales(&filter, &ContactFilterModel::localeChanged);
        filter.setLocale(QLocale(QLocale::German));
        const QSignalSpy resets(&filter, &QAbstractItemModel::modelAboutToBeReset);
        const QSignalSpy resetsEnded(&filter, &QAbstractItemModel::modelReset);
        filter.setSourceModel(&model);
        QVERIFY(!resets.isEmpty());
        QTRY_COMPARE(filter.rowCount(), 4);
        int told = 4;
        connect(&filter, &ContactFilterModel::countChanged, this, [&] { told = filter.count(); });
        const auto names = [&] { return column(filter, "displayName").join(u'|'); };
        QVERIFY(names().endsWith(u"Bert Ödman|Zoë Adams"_s));
        const QPersistentModelIndex anne = filter.index(filter.rowOf(u"änne"_s), 0);
        filter.setLocale(QLocale(QLocale::Swedish));
        QCOMPARE(names(), u"anna Cole|Bert Ödman|Zoë Adams|Änne Berg"_s);
        QVERIFY(anne.row() == 3 && locales.size() == 2);
        using Filter = ContactFilterModel;
        const std::tuple<Filter::Presence, QString, QString> wanted[] = {
            {Filter::Busy, {}, u"Zoë Adams"_s},
            {Filter::Available, u"zoë"_s, {}},
            {Filter::Anybody, u" ADA"_s, u"Zoë Adams"_s},
            {Filter::Anybody, u" ADA  sea "_s, u"Zoë Adams"_s},
            {Filter::Available, u"ödman"_s, u"Bert Ödman"_s}};
        const QModelIndex second = filter.index(1, 0);
        const QSignalSpy presences(&filter, &Filter::presenceChanged);
        for (const auto& [presence, text, found] : wanted) {
            filter.setPresence(presence);
            filter.setSearchText(text);
            QCOMPARE(names(), found);
            QCOMPARE(filter.contact(0).displayName(), found);
            QCOMPARE(told, filter.rowCount());
            QVERIFY(!filter.mapToSource(second).isValid());
        }
        QCOMPARE(presences.size(), 4);
        execute("contact change ödman displayName=Aaron");
        QTRY_COMPARE(names(), u"Aaron"_s); // the handle is what it was
        execute("contact change ödman showBusy=true");
        QTRY_COMPARE(names(), QString());
        filter.setPresence(Filter::Anybody);
        filter.setSearchText({});
        QVERIFY(names().startsWith("Aaron|"_L1));
        // While a search is narrowed down, a slot lets somebody come to fit who did not.
        const auto rename = [&] {
            execute("contact change zoë displayName='Aaron too'");
            QTRY_VERIFY(column(model, "displayName").contains(u"Aaron too"_s));
        };
        connect(&filter, &QAbstractItemModel::rowsRemoved, this, rename, Qt::SingleShotConnection);
        filter.setSearchText(u"aar"_s);
        filter.setSearchText(u"aaron"_s);
        QCOMPARE(names(), u"Aaron|Aaron too"_s);
        // Another model in between lays its rows out anew, and goes.
        filter.setSearchText({});
        const QString all = names();
        auto turned = std::make_unique<QSortFilterProxyModel>();
        turned->setSourceModel(&model);
        filter.setSourceModel(turned.get());
        turned->sort(0, Qt::DescendingOrder);
        QCOMPARE(names(), all);
        turned->setSourceModel(nullptr);
        QCOMPARE(names(), QString());
        turned->setSourceModel(&model);
        QCOMPARE(names(), all);
        execute("contact change anna displayName=Örjan");
        QTRY_VERIFY(names().endsWith(u"|Örjan"_s));
        turned.reset();
        QCOMPARE(resetsEnded.size(), resets.size());
        QCOMPARE(completeness.size(), 1);
        const QModelIndex gone = model.index(0);
        model.setContext(nullptr);
        QVERIFY(model.count() == 0 && !filter.mapFromSource(gone).isValid());
        QCOMPARE(completeness.size(), 2);
        filter.setSourceModel(nullptr);
        QVERIFY(told == 0 && filter.contact(0).isNull());
    }

private:
    void execute(const char* command) { QVERIFY(m_service->execute(QString::fromUtf8(command))); }

    /// An application that is registered.
    void start()
    {
        m_service = std::make_unique<zelcore::TestService>();
        // The box comes after registration, which does not wait for it.
        for (const char* const command :
             {"permission showAppBox off", "box add kept", "request delay 300 requestListAll",
              "request delay 300 requestListAll", "state Success"})
            execute(command);
        m_context = std::make_unique<Context>(QUuid(u"{6F8D2C4E-5B0A-4A37-9D0E-0C8F3F1F2A10}"_s));
        QTRY_VERIFY(m_context->isReady());
    }

    std::unique_ptr<zelcore::TestService> m_service;
    std::unique_ptr<Context> m_context;
};

ZEL_TEST(TstModels)
#include "tst_models.moc"
