// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Note.h"

#include <common/Random.h>
#include <common/FailingAllocations.h>
#include <common/FakeClock.h>
#include <common/FakePipe.h>
#include <iface/ObserverFunctorAdapter.h>
#include <zel/LiveMap.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QMultiMap>
#include <QtCore/QScopedValueRollback>

#include <array>
#include <map>
#include <memory>
#include <stdexcept>

/// Stands where the test calls what is tested, and where that calls the test: memory runs out in the one alone.
struct Border
{
    Border() { std::swap(failing::left, beyond); }
    ~Border() { std::swap(failing::left, beyond); }
    Q_DISABLE_COPY_MOVE(Border)

    static inline thread_local long beyond = -1;
};

/// A map on the notes, and a service that answers when the test says so.
struct MapFixture
{
    using Map = zel::LiveMap<QString, Note>;
    using Value = iface::ObservableValue<Note>;

    QMap<QString, Note> notes; ///< other answers are made up
    QSharedPointer<FakePipe> pipe = QSharedPointer<FakePipe>::create();
    Map::Pointer map = Map::create(QSharedPointer<zel::ListApiMultiplexer>::create(pipe),
                                   QSharedPointer<NoteAdapter>::create(), u"notes"_s, QString());

    Value get(const QString& key) const { return Border(), map->doGet(key); }
    QStringList getMany(int count) const
    {
        QStringList keys;
        for (int i = 0; i < count; ++i) {
            keys.append(QString::number(i));
            get(keys.last());
        }
        return keys;
    }

    void inject(const QByteArray& message) { Border(), pipe->inject(message); }
    void header(const QString& cookie) { inject(listMessage("listElements", {}, {{u"cookie"_s, cookie}})); }
    void chunk(const QStringList& keys, bool last = true)
    {
        QJsonArray elements;
        for (const QString& key : keys) {
            const Note note = notes.value(key, {key, u"text of "_s + key});
            elements.append(QJsonObject{{u"id"_s, key}, {u"text"_s, note.text}, {u"stars"_s, note.stars}});
        }
        inject(listMessage("listChunk", elements, {{u"last"_s, last}}));
    }
    void answer(const QStringList& keys)
    {
        header(map->cookie());
        chunk(keys);
    }
};

/// A service that is slow or quick, forgets to answer and answers twice, and an application whose slots throw and spin
/// event loops, which asks for notes at random. Everything that the map announces is looked at.
class MapWeather
{
    using Map = MapFixture::Map;

public:
    /// Some steps have been gone.
    explicit MapWeather(Choices choices, int steps = 0)
        : m_choices(choices)
    {
        for (int i = m_choices.bounded(120); i >= 0; --i)
            f.notes.insert(QString::number(i), {QString::number(i), u"first"_s, i});
        QObject::connect(f.map.data(), &Map::mapChanged, &m_context, [this](const iface::MapChange& change) {
            const Border border;
            const QList<QString> keys = change.keys<QString>();
            const Note now = f.get(keys.value(0)).getValue();
            if (keys.size() != 1 || m_told.value(keys.first()) == now)
                complain(u"a key is announced without a change"_s);
            m_told.insert(keys.first(), now);
            misbehave();
        });
        f.pipe->sending = [this] {
            const Border border;
            if (!m_isCalm && m_choices.bounded(10) == 0) {
                collect(0);
                deliver();
            }
        };
        go(steps);
    }
    ~MapWeather()
    {
        f.map.reset();
        FakeClock::uninstall();
    }

    /// One step, in which memory runs out when failing::left says so. From here on the service loses nothing: for what
    /// makes that good there may have been no memory.
    void goWithoutMemory(int kind)
    {
        const Border border;
        m_isReliable = true;
        guarded([&] { step(kind); });
    }
    QString run(int steps) { return go(steps), end(); }
    /// Empty, or what was wrong. What was asked for has come by itself, and with the next connection also news that
    /// were lost.
    QString end()
    {
        const bool hasLostNews = std::exchange(m_isReliable, true);
        m_isCalm = true;
        for (const auto& [key, watch] : m_watches)
            ask(key); // again, if it could not be
        if (!comesToRest())
            return u"never comes to rest with everything"_s;
        if (hasLostNews)
            step(3);
        if (!comesToRest())
            return u"never comes to rest after a reconnection"_s;
        for (const auto& [key, watch] : m_watches) {
            const Note note = f.map->contents(key);
            if (!(note == f.notes.value(key) && note == f.get(key).getValue()))
                return key + u" did not come"_s;
        }
        return m_complaint;
    }

private:
    void go(int steps)
    {
        for (int i = 0; i < steps && !m_choices.isUsedUp(); ++i)
            guarded([this] { step(); });
    }

    struct Answer
    {
        QStringList keys;
        bool hasHeader;
        bool hasEnd;
    };

    template <class Step>
    void guarded(Step step)
    {
        try {
            step();
        } catch (const std::runtime_error&) {
        } catch (const std::bad_alloc&) {
        }
    }

    void complain(const QString& what)
    {
        if (m_complaint.isEmpty())
            m_complaint = what;
    }

    void step()
    {
        const int kind = m_choices.bounded(8);
        if (kind != 3 || m_choices.bounded(10) == 0)
            step(kind);
    }

    void step(int kind)
    {
        if (kind == 0) {
            for (int i = m_choices.bounded(40); i > 0; --i)
                ask(someKey());
        } else if (kind == 1) {
            pass(m_choices.bounded(4) ? m_choices.bounded(8000) : 31000); // the process may stand still
        } else if (kind == 2) {
            changeOne();
        } else if (kind == 3) {
            Border(), f.pipe->setConnected(false);
            f.pipe->clearSent();
            m_due.clear();
            const QScopedValueRollback reconnecting(m_isReconnecting, true);
            guarded([this] { Border(), f.pipe->setConnected(true); });
            collect();
            m_requestedAt.clear(); // also for what is still to be requested by itself
        } else {
            Border(), QCoreApplication::sendPostedEvents();
            collect();
            deliver();
        }
    }

    // A request that was lost goes out again after five minutes at most, and then there is nothing more to be done.
    bool comesToRest()
    {
        for (int rounds = 0; rounds <= 30; ++rounds) {
            Border(), QCoreApplication::sendPostedEvents();
            collect();
            if (m_clock->waiting() == 0 && m_due.isEmpty())
                return std::all_of(m_watches.cbegin(), m_watches.cend(),
                                   [this](const auto& watched) { return f.map->isLoaded(watched.first); });
            pass(5 * 60 * 1000);
            deliver();
        }
        return false;
    }

    void pass(int msecs)
    {
        for (; msecs > 0; msecs -= 1000) {
            Border(), m_clock->advance(1000);
            collect();
        }
    }

    QString someKey() { return std::next(f.notes.cbegin(), m_choices.bounded(int(f.notes.size()))).key(); }

    void ask(const QString& key)
    {
        Watch& watch = m_watches[key];
        if (watch.observer)
            return;
        const auto value = f.get(key);
        watch.seen = value.getValue();
        watch.observer = std::make_unique<iface::ObserverFunctorAdapter>([this, value, &watch] {
            const Border border;
            if (!(std::exchange(watch.seen, value.getValue()) == value.getValue()))
                return;
            if (std::exchange(watch.settled, true))
                complain(u"a value is announced twice"_s);
            misbehave();
        });
        value.impl()->addObserver(watch.observer.get());
    }

    void misbehave()
    {
        if (m_isCalm || m_depth > 3)
            return;
        const QScopedValueRollback deeper(m_depth, m_depth + 1);
        const int kind = m_choices.bounded(40);
        if (kind == 0)
            throw std::runtime_error("slot");
        if (kind == 1)
            guarded([this] { step(); });
        if (kind == 2)
            pass(31000);
    }

    void changeOne()
    {
        const char* const name = std::array{"listChange", "listAdd", "listRemove", "listAll",
                                            "listWindow"}[std::size_t(m_choices.bounded(5))];
        Note& note = f.notes[someKey()];
        const QString text = QString::number(m_choices.bounded(1000));
        // Stars stay as they are in a change, and go back to none in a new record; a map takes nothing else, and
        // forgets nothing.
        if (name == "listChange"_ba || name == "listAdd"_ba)
            note = {note.id, text, name == "listChange"_ba ? note.stars : 0};
        f.inject(listMessage(name, {noteJson(note.id, text)}));
    }

    /// Reads what the map has sent, and works out when it is to be answered.
    void collect(int slowest = 90000)
    {
        for (const QString& request : f.pipe->takeSentInWords()) {
            QStringList keys = request.split(u' ').mid(1);
            keys.removeLast(); // the list's name
            // No key is requested twice within half a minute.
            for (const QString& key : std::as_const(keys)) {
                const auto before = m_requestedAt.constFind(key);
                if (before != m_requestedAt.cend() && !m_isReconnecting && m_clock->now() - *before < 29000)
                    complain(u"%1 is asked for again after %2 ms"_s.arg(key).arg(m_clock->now() - *before));
                m_requestedAt.insert(key, m_clock->now());
            }
            const int kind = m_isReliable ? 9 : m_choices.bounded(10);
            if (kind == 0)
                continue; // lost
            const Answer answer{keys, kind != 1, kind != 2};
            // Nothing tells what an answer without records is to; so it comes once, and before any other.
            if (keys.isEmpty()) {
                m_due.insert(0, answer);
                continue;
            }
            const int delay = m_isCalm || slowest == 0 ? 0 : m_choices.bounded(m_choices.bounded(3) ? 200 : slowest);
            for (int i = kind == 3 ? 2 : 1; i > 0; --i)
                m_due.insert(m_clock->now() + delay, answer);
        }
    }

    /// Sends the answers that are due by now.
    void deliver()
    {
        while (!m_due.isEmpty() && m_due.firstKey() <= m_clock->now()) {
            const Answer answer = m_due.take(m_due.firstKey());
            const qsizetype half = m_choices.bounded(2) ? answer.keys.size() : answer.keys.size() / 2;
            if (answer.hasHeader)
                guarded([this] { f.header(f.map->cookie()); });
            guarded([&] { f.chunk(answer.keys.mid(0, half), answer.hasEnd && half == answer.keys.size()); });
            if (half < answer.keys.size())
                guarded([&] { f.chunk(answer.keys.mid(half), answer.hasEnd); });
        }
    }

    struct Watch
    {
        Note seen;
        bool settled = false;
        std::unique_ptr<iface::ObserverFunctorAdapter> observer;
    };

    const QSharedPointer<FakeClock> m_clock = FakeClock::install();
    MapFixture f;
    QObject m_context;
    Choices m_choices;
    QHash<QString, Note> m_told;
    std::map<QString, Watch> m_watches;
    QMultiMap<qint64, Answer> m_due;
    QHash<QString, qint64> m_requestedAt;
    QString m_complaint;
    int m_depth = 0;
    bool m_isCalm = false;
    bool m_isReliable = false;
    bool m_isReconnecting = false;
};
