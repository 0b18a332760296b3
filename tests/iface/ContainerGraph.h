// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Containers.h"

#include <common/Random.h>

#include <iface/RunUntilTrue.h>

#include <QtCore/QScopedValueRollback>
#include <QtCore/QSet>

#include <stdexcept>

/// Lists, maps and values at the source, and lists derived from them and from each other at random, with filters that
/// read yet others: chains and diamonds of any shape. One map withholds keys at times. Another, and the filters, glance
/// at any list there is, also at what is made of the one they are asked for. Slots, functions and monitors hang on
/// them, which read, change, throw, take things away, and bring more that observe. Every read, whoever makes it, is
/// compared with what follows from the sources; so is what was announced of every list, and what the functions of
/// cached lists were told.
class ContainerGraph
{
    using Items = QList<int>;
    using Transformed = iface::LazyTransformedObservableListImpl<int, int>;

public:
    ContainerGraph(Choices choices, bool mayDisturb)
        : m_choices(choices)
        , m_mayDisturb(mayDisturb)
    {
        for (int i = 0; i < Numbers; ++i)
            m_numbers.emplace_back(new Number(0));
        for (int key = 0; key < Keys; ++key) {
            m_plain->contents[key] = m_moody->contents[key] = key;
            m_records->set(key, key);
        }
        m_plain->whenAsked = [this](int) { glance(); };
        m_moody->whenAsked = [this](int key) {
            if (m_withheld.contains(key))
                throw std::runtime_error("withheld");
        };
        for (int i = any(1, 2); i > 0; --i) {
            Node& node = addNode(Source);
            Items items;
            for (int count = any(0, 6); count > 0; --count)
                items.append(any(0, Keys - 1));
            node.source = EditableListPointer<int>(items);
            node.list = iface::ObservableList<int>(node.source.data());
        }
        for (int i = any(2, 7); i > 0; --i)
            addDerived();
        for (const auto& node : m_nodes)
            listenTo(*node);
        for (int i = any(0, 3); i > 0; --i)
            addMonitor();
        m_isBuilt = true;
    }

    /// Makes one change of its own, or several as one, and answers what was wrong by the end of it.
    QString change()
    {
        m_nestedLeft = any(0, 2) == 0 ? any(1, 3) : 0;
        m_sideEffectsLeft = m_mayDisturb && any(0, 3) == 0 ? 1 : 0;
        m_glancesLeft = any(0, 1) == 0 ? 4 : 0;
        m_mayThrow = any(0, 5) == 0;
        m_hasThrown = false;
        if (any(0, 3) == 0)
            m_withheld.insert(any(0, Keys - 1)); // what was read by now stays what it is
        const bool isAlone = m_nestedLeft == 0 && !m_mayDisturb;
        for (auto& monitor : m_monitors)
            monitor->runs = 0;
        try {
            if (any(0, 5) == 0)
                iface::Round::together([this] {
                    for (int i = any(0, 3); i > 0; --i) {
                        edit();
                        if (any(0, 1))
                            compareOne("inside a change of several");
                        if (any(0, 1))
                            observe(anyNode());
                    }
                });
            else if (any(0, 4) == 0)
                giveAgain();
            else
                edit();
            check(!m_hasThrown, u"an exception was lost"_s);
        } catch (const std::runtime_error&) {
        }
        m_mayThrow = false;
        m_glancesLeft = 0;
        for (const auto& node : m_nodes) {
            if (!node->list.impl())
                continue;
            compared(*node, "at rest");
            for (const auto* const mirror : {node->mirror.get(), node->lateMirror.get()}) {
                check(!mirror || sameItems(mirror->items(), withDefaults(naive(*node))),
                      node->is("was announced as another"));
                check(!mirror || mirror->complaint().isEmpty(),
                      node->is("was announced wrongly: ") + (mirror ? mirror->complaint() : QString()));
            }
            check(node->kind != Cached || sameItems(node->told, naive(*node)), node->is("was told as another"));
        }
        for (const auto& monitor : m_monitors) {
            check(!isAlone || monitor->runs <= 1, u"a monitor ran twice for one change"_s);
            check(monitor->isDone || monitor->seen == sum(*monitor, true), u"a monitor did not run"_s);
        }
        return m_wrong;
    }

    bool isOver() const { return m_choices.isUsedUp(); }

private:
    static constexpr int Keys = 12;
    static constexpr int Numbers = 3;
    static constexpr int Withheld = -100; ///< in the place of what the moody map does not give

    enum Kind { Source, Cached, Filtered, Own, Mapped, MappedByRecord, Forgetful };

    struct Node
    {
        QString is(const char* what) const
        {
            return u"list %1 of kind %2: %3"_s.arg(number).arg(kind).arg(QLatin1String(what));
        }

        int number;
        Kind kind;
        iface::ObservableList<int> list;
        QExplicitlySharedDataPointer<EditableList<int>> source;
        Node* input = nullptr;
        std::vector<Node*> read; ///< by its filter
        int salt = 0;
        int reader = 0; ///< how the filter reads
        PlainMapPointer<int, int> map;
        bool forgets = false; ///< what was read, so that not every change of it is announced
        std::unique_ptr<iface::ListMirror<int>> mirror;
        std::unique_ptr<iface::ListMirror<int>> lateMirror;
        Items told; ///< to the functions of a cached list
        bool isUsed = false;
        int known = -1; ///< the state of the sources for which `expected` is right
        Items expected;
    };

    struct Monitor
    {
        std::vector<Node*> read;
        int number = 0;
        quint64 seen = 0;
        int runs = 0;
        bool isDone = false;
        std::unique_ptr<iface::ObserverImpl> observer;
    };

    int any(int first, int last) { return m_choices.bounded(last - first + 1) + first; }
    Node& anyNode() { return *m_nodes[std::size_t(any(0, int(m_nodes.size()) - 1))]; }
    Node* anyToRead()
    {
        Node& node = anyNode();
        node.isUsed = true;
        return &node;
    }

    Node& addNode(Kind kind)
    {
        m_nodes.push_back(std::make_unique<Node>());
        Node& node = *m_nodes.back();
        node.number = int(m_nodes.size()) - 1;
        node.kind = kind;
        node.salt = any(0, 20);
        return node;
    }

    void addDerived()
    {
        const Kind kind = Kind(any(Cached, Forgetful));
        Node* input = anyToRead();
        while (input->forgets && kind != Filtered) // the others would not hear of all
            input = anyToRead();
        std::vector<Node*> read;
        for (int i = any(0, 2); i > 0 && kind == Filtered; --i)
            read.push_back(anyToRead());
        Node& node = addNode(kind);
        node.input = input;
        node.read = read;
        node.reader = any(0, 4);
        node.map = kind == Mapped && any(0, 1) ? m_moody : m_plain;
        node.forgets = input->forgets || (kind == Forgetful && any(0, 1));
        if (kind == Cached) {
            auto* const cached = new iface::CachedObservableList<int>(input->list);
            node.list = iface::ObservableList<int>(cached);
            replayFunctions(node, *cached);
        } else if (kind == Own) {
            node.list = iface::ObservableList<int>(new NextNumbers(input->list, Keys));
        } else if (kind == Filtered) {
            node.list = iface::FilteredObservableList<int>::create(
                input->list, [this, &node](int item) { return passes(node, item); });
        } else {
            node.list = iface::TransformedObservableList::create<int, int>(
                input->list, kind == MappedByRecord ? m_composite : node.map,
                node.forgets        ? 2
                : kind == Forgetful ? Transformed::DefaultCacheLimit // room for all
                                    : Transformed::KeepsEverything);
        }
    }

    void replayFunctions(Node& node, iface::CachedObservableList<int>& list)
    {
        node.told = node.list.toList();
        const auto told = [this, &node](bool fits) {
            check(fits, node.is("told what was not there"));
            reactInASlot();
        };
        list.setAddFunction([=, &node](int index, int item) {
            node.told.insert(index, item);
            told(true);
        });
        list.setRemoveFunction([=, &node](int index, int item) { told(node.told.takeAt(index) == item); });
        list.setUpdateFunction(
            [=, &node](int index, int before, int after) { told(std::exchange(node.told[index], after) == before); });
        list.setChangeFunction([=, &node](auto&&, auto&&, const Items& before, const Items& after) {
            told(sameItems(std::exchange(node.told, after), before));
        });
    }

    void addMonitor()
    {
        m_monitors.push_back(std::make_unique<Monitor>());
        Monitor& monitor = *m_monitors.back();
        for (int i = any(1, 3); i > 0; --i)
            monitor.read.push_back(anyToRead());
        monitor.number = any(0, Numbers - 1);
        const bool mayEnd = any(0, 2) == 0;
        const auto run = [this, mayEnd, &monitor] {
            check(!monitor.isDone, u"a monitor ran after its end"_s);
            ++monitor.runs;
            monitor.seen = sum(monitor, false);
            return monitor.isDone = mayEnd && monitor.seen % 8 == 0;
        };
        if (mayEnd)
            monitor.observer = std::make_unique<iface::RunUntilTrue>(run, nullptr, QString());
        else
            monitor.observer = std::make_unique<iface::ObservableMonitor>(run, nullptr, QString(), false);
        monitor.observer->handleObservableChanged();
    }

    quint64 sum(const Monitor& monitor, bool isNaive)
    {
        auto seen = quint64(m_numbers[std::size_t(monitor.number)]->getValue());
        for (Node* const node : monitor.read) {
            for (const int item : isNaive ? naive(*node) : compared(*node, "in a monitor"))
                seen = 31 * seen + quint64(item);
        }
        return seen;
    }

    /// What a filter says depends on what it reads, and what it reads on the item.
    int verdict(const Node& node, int item, bool isNaive)
    {
        int sum = item + node.salt;
        if (node.reader >= 1)
            sum += m_numbers[std::size_t((item + node.salt) % Numbers)]->getValue();
        if (node.reader == 2)
            sum += isNaive ? m_records->peek(item) : m_composite.get(item);
        for (std::size_t i = 0; i < node.read.size(); ++i) {
            if (node.reader == 3 && (item + int(i)) % 2)
                continue;
            const Items other = isNaive ? naive(*node.read[i]) : compared(*node.read[i], "in a filter");
            sum += other.isEmpty() ? 1 : int(other.size()) + other.last() + int(other.contains(item));
        }
        return sum;
    }

    static bool isBad(int verdict) { return verdict % 23 == 5; }
    static bool isGood(int verdict) { return !isBad(verdict) && verdict % 3 != 0; }

    bool passes(const Node& node, int item)
    {
        const int sum = verdict(node, item, false);
        if (m_sideEffectsLeft > 0 && !m_isGlancing && any(0, 3) == 0) {
            --m_sideEffectsLeft;
            const int kind = any(0, 2);
            // What is made of this list would have to be read without it.
            kind == 0 ? edit() : kind == 1 ? observe(*m_nodes[std::size_t(any(0, node.number))]) : void(dropOne());
        }
        glance();
        if (isBad(sum) && m_isBuilt)
            throwSomething();
        return isGood(sum);
    }

    /// Reads what may be in the midst of taking in what this is asked for. So it may be anything yet, but not for good.
    void glance()
    {
        if (m_glancesLeft == 0 || any(0, 2) > 0)
            return;
        --m_glancesLeft;
        const QScopedValueRollback<bool> glancing(m_isGlancing, true);
        const iface::ObservableTracker::Suspension untracked;
        readAll(iface::ObservableList<int>(anyNode().list));
    }

    void throwSomething()
    {
        m_hasThrown = true;
        throw std::runtime_error("thrown on purpose");
    }

    const Items& naive(Node& node)
    {
        if (node.known == m_state)
            return node.expected;
        const iface::ObservableTracker::Suspension untracked;
        const Items inputItems = node.input ? naive(*node.input) : Items();
        Items expected = node.source ? node.source->items() : Items();
        for (const int item : inputItems) {
            if (node.kind >= Mapped)
                expected.append(throughMap(node, int(expected.size()), item));
            else if (node.kind == Own)
                expected.append(item == Withheld ? item : (item + 1) % Keys);
            else if (node.kind == Cached)
                expected.append(item == Withheld ? 0 : item);
            else if (item != Withheld && isGood(verdict(node, item, true)))
                expected.append(item);
        }
        node.expected = expected;
        node.known = m_state;
        return node.expected;
    }

    /// Of what the moody map withholds the list shows what it had been given before, if it had.
    int throughMap(const Node& node, int index, int key)
    {
        const bool isGiven = key != Withheld &&
                             (node.map != m_moody || !m_withheld.contains(key) || readAt(node.list, index) != Withheld);
        return !isGiven ? Withheld : node.kind == MappedByRecord ? m_records->peek(key) : node.map->contents.value(key);
    }

    static int readAt(const iface::ObservableList<int>& list, int index)
    {
        try {
            return list[index];
        } catch (const std::runtime_error&) {
            return Withheld;
        }
    }

    static Items readAll(const iface::ObservableList<int>& list)
    {
        Items items;
        for (int i = 0; i < list.size(); ++i)
            items.append(readAt(list, i));
        return items;
    }

    /// As who puts default-made items in the place of those that throw.
    static Items withDefaults(Items items)
    {
        std::replace(items.begin(), items.end(), Withheld, 0);
        return items;
    }

    // Not by their own operator, which passes null pointers to memcmp() when they are empty.
    static bool sameItems(const Items& a, const Items& b) { return std::equal(a.begin(), a.end(), b.begin(), b.end()); }

    Items compared(Node& node, const char* where)
    {
        const iface::ObservableList<int> list = node.list; // a filter may drop the other handle
        const Items read = readAll(list);                  // before the rest: a filter may make a change
        check(m_isGlancing || sameItems(read, naive(node)) || !node.list.impl(), node.is(where));
        return read;
    }

    void compareOne(const char* where)
    {
        Node& node = anyNode();
        if (node.list.impl())
            compared(node, where);
    }

    void check(bool holds, const QString& what)
    {
        if (!holds && m_wrong.isEmpty())
            m_wrong = what;
    }

    /// The sources are another from now on.
    void edit()
    {
        const int kind = any(0, 10);
        if (kind == 10) // nothing is another, and what is withheld stays what it was
            return m_moody->fireKeyChanged(any(0, Keys - 1));
        ++m_state;
        if (kind < 4) {
            const bool isSecond = m_nodes[1]->kind == Source && any(0, 1);
            editAtRandom<int>(
                *m_nodes[isSecond]->source, m_choices, [this] { return any(0, Keys - 1); }, 8);
        } else if (kind < 6) {
            m_numbers[std::size_t(any(0, Numbers - 1))]->setValue(any(0, 3));
        } else if (kind < 8) {
            m_records->set(any(0, Keys - 1), any(0, Keys - 1));
        } else {
            const auto& map = any(0, 1) ? m_plain : m_moody;
            QHash<int, int> changes;
            for (int i = any(1, 2); i > 0; --i)
                changes.insert(any(0, Keys - 1), any(0, Keys - 1));
            if (map == m_moody)
                m_withheld.removeIf([&](int key) { return changes.contains(key); });
            map->set(changes);
        }
    }

    /// Whoever reads before the map says so knows it already, and others do not.
    void giveAgain()
    {
        const int key = any(0, Keys - 1);
        m_withheld.remove(key);
        readAll(anyNode().list);
        ++m_state;
        m_moody->set({{key, any(0, 1) ? any(0, Keys - 1) : m_moody->contents.value(key)}});
    }

    void listenTo(Node& node)
    {
        if (!node.forgets)
            node.mirror = std::make_unique<iface::ListMirror<int>>(node.list);
        const auto react = [this] { reactInASlot(); };
        using List = iface::ObservableListImpl;
        for (const auto itemSignal : {&List::itemAdded, &List::itemUpdated, &List::itemRemoved})
            QObject::connect(node.list.impl(), itemSignal, &m_context, react);
        QObject::connect(node.list.impl(), &List::itemsChanged, &m_context, react);
        QObject::connect(node.list.impl(), &List::observableChanged, &m_context, react);
    }

    void reactInASlot()
    {
        compareOne("in a slot");
        compareOne("in a slot");
        if (m_nestedLeft > 0 && any(0, 4) == 0) {
            --m_nestedLeft;
            dropLateMirrors();
            edit();
        }
        if (any(0, 19) == 0)
            observe(anyNode());
        if (m_mayDisturb && any(0, 60) == 0)
            disturb();
        if (m_mayThrow && any(0, 9) == 0) {
            dropLateMirrors();
            throwSomething();
        }
    }

    /// Whoever comes in the midst of a change, having read the list or not.
    void observe(Node& node)
    {
        if (node.forgets || !node.list.impl())
            return;
        if (any(0, 1))
            readAll(node.list);
        node.lateMirror = std::make_unique<iface::ListMirror<int>>(node.list);
    }

    /// They stand behind the slots, and so would hear of a slot's change first, and nothing of what has one throw.
    void dropLateMirrors()
    {
        for (const auto& node : m_nodes)
            node->lateMirror.reset();
    }

    /// Takes away what is there, or adds to it.
    void disturb()
    {
        if (dropOne())
            return;
        if (!m_monitors.empty() && any(0, 1)) {
            m_gone.push_back(std::move(m_monitors.back())); // one that is running finds its own still there
            m_monitors.pop_back();
            m_gone.back()->observer.reset();
        } else if (std::all_of(m_nodes.begin(), m_nodes.end(), [](const auto& each) { return each->list.impl(); })) {
            addMonitor();
        }
    }

    bool dropOne()
    {
        Node& node = anyNode();
        if (node.isUsed || node.kind == Source)
            return false;
        node.mirror.reset();
        node.lateMirror.reset();
        node.list = iface::ObservableList<int>();
        return true;
    }

    Choices m_choices;
    QObject m_context;
    std::vector<NumberPointer> m_numbers;
    PlainMapPointer<int, int> m_plain;
    PlainMapPointer<int, int> m_moody;
    QSet<int> m_withheld; ///< keys of that, under which it changes nothing meanwhile
    QExplicitlySharedDataPointer<RecordMap<int, int>> m_records{new RecordMap<int, int>};
    const iface::ObservableMap<int, int> m_composite = contentsOf(m_records);
    std::vector<std::unique_ptr<Node>> m_nodes;
    std::vector<std::unique_ptr<Monitor>> m_monitors;
    std::vector<std::unique_ptr<Monitor>> m_gone;
    QString m_wrong;
    int m_state = 0;
    int m_nestedLeft = 0;
    int m_sideEffectsLeft = 0;
    int m_glancesLeft = 0;
    bool m_isGlancing = false;
    bool m_isBuilt = false;
    bool m_mayThrow = false;
    bool m_hasThrown = false;
    const bool m_mayDisturb;
};
