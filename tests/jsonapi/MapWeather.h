// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Note.h"

#include <common/Choices.h>
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

using namespace Qt::StringLiterals;

/// A map on the notes, and a service that answers when the test says so.
struct MapFixture
{
    using Map = zel::LiveMap<QString, Note>;
    using Value = iface::ObservableValue<Note>;

    QMap<QString, Note> notes; ///< other answers are made up
    QSharedPointer<FakePipe> pipe = QSharedPointer<FakePipe>::create();
    Map::Pointer map = Map::create(QSharedPointer<zel::ListApiMultiplexer>::create(pipe),
                                   QSharedPointer<NoteAdapter>::create(), u"notes"_s, QString());

    Value get(const QString& key) const { return map->doGet(key); }
    void get(const QStringList& keys) const
    {
        for (const QString& key : keys)
            get(key);
    }
    QStringList getMany(int count) const
    {
        QStringList keys;
        for (int i = 0; i < count; ++i)
            keys.append(QString::number(i));
        get(keys);
        return keys;
    }

    void header(const QString& cookie) { pipe->inject(listMessage("listElements", {}, {{u"cookie"_s, cookie}})); }
    void chunk(const QStringList& keys, bool last = true)
    {
        QJsonArray elements;
        for (const QString& key : keys) {
            const Note note = notes.value(key, {key, u"text of "_s + key});
            QJsonObject element = noteJson(key, note.text);
            element.insert(u"stars"_s, note.stars);
            elements.append(element);
        }
        pipe->inject(listMessage("listChunk", elements, {{u"last"_s, last}}));
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
    using Value = MapFixture::Value;

public:
    explicit MapWeather(Choices choices)
        : m_choices(choices)
    {
        for (int i = m_choices.bounded(120); i >= 0; --i)
            f.notes.insert(QString::number(i), {QString::number(i), u"first"_s, i});
        QObject::connect(f.map.data(), &Map::mapChanged, &m_context, [this](const iface::MapChange& change) {
            const QList<QString> keys = change.keys<QString>();
            const Note now = f.get(keys.value(0)).getValue();
            if (keys.size() != 1 || m_told.value(keys.first()) == now)
                complain(u"a key is announced without a change"_s);
            m_told.insert(keys.first(), now);
            misbehave();
        });
        f.pipe->sending = [this] {
            if (!m_isCalm && m_choices.bounded(10) == 0) {
                collect(0);
                deliver();
            }
        };
    }
    ~MapWeather()
    {
        f.map.reset();
        FakeClock::uninstall();
    }

    /// Empty, or what was wrong.
    QString run(int steps)
    {
        for (int i = 0; i < steps && !m_choices.isUsedUp(); ++i)
            guarded([this] { step(); });
        m_isCalm = true;
        // A request that was lost goes out again after five minutes at most, and then there is nothing more to be done.
        for (int rounds = 0; !isAtRest(); ++rounds) {
            if (rounds > 30)
                return u"never comes to rest"_s;
            pass(5 * 60 * 1000);
            deliver();
        }
        for (const auto& [key, watch] : m_watches) {
            const Note note = f.map->contents(key);
            if (!f.map->isLoaded(key) || !(note == f.notes.value(key) && note == f.get(key).getValue()))
                return key + u" did not come"_s;
        }
        return m_complaint;
    }

private:
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
        if (kind == 0) {
            for (int i = m_choices.bounded(40); i > 0; --i)
                ask(someKey());
        } else if (kind == 1) {
            pass(m_choices.bounded(4) ? m_choices.bounded(8000) : 31000); // the process may stand still
        } else if (kind == 2) {
            changeOne();
        } else if (kind == 3 && m_choices.bounded(10) == 0) {
            f.pipe->setConnected(false);
            f.pipe->clearSent();
            m_due.clear();
            m_requestedAt.clear();
            const QScopedValueRollback reconnecting(m_isReconnecting, true);
            f.pipe->setConnected(true);
            collect();
            m_requestedAt.clear(); // also for what is still to be requested by itself
        } else if (kind > 3) {
            QCoreApplication::sendPostedEvents();
            collect();
            deliver();
        }
    }

    bool isAtRest()
    {
        QCoreApplication::sendPostedEvents();
        collect();
        return m_clock->waiting() == 0 && m_due.isEmpty();
    }

    void pass(int msecs)
    {
        for (; msecs > 0; msecs -= 1000) {
            m_clock->advance(1000);
            collect();
        }
    }

    QString someKey() { return std::next(f.notes.cbegin(), m_choices.bounded(int(f.notes.size()))).key(); }

    void ask(const QString& key)
    {
        if (m_watches.contains(key))
            return;
        const Value value = f.get(key);
        Watch& watch = m_watches[key];
        watch.seen = value.getValue();
        watch.observer = std::make_unique<iface::ObserverFunctorAdapter>([this, value, &watch] {
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
        f.pipe->inject(listMessage(name, {noteJson(note.id, text)}));
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
            const int kind = m_isCalm ? 9 : m_choices.bounded(10);
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
    bool m_isReconnecting = false;
};
