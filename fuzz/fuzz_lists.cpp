// SPDX-License-Identifier: Apache-2.0
// Live lists and live maps of a service that is late, loses messages, repeats them, and says what it should not: they
// are what the messages make of them, announce that and nothing else, and in the end are what the service has. An input
// is the choices of all of them, a byte each.
#include "Fuzzing.h"

#include <iface/ListMirror.h>
#include <iface/Logging.h>
#include <jsonapi/ListModel.h>
#include <jsonapi/MapWeather.h>
#include <zel/LiveList.h>

#include <cstdint>

namespace {

using List = zel::LiveList<Note>;
using Handle = iface::ObservableList<Note, List>;

struct Message
{
    QByteArray name;
    QJsonArray elements;
    bool isLast = false;
};

/// A list, what it should be, and what is heard of it.
struct Follower
{
    Follower(const QSharedPointer<zel::ListApiMultiplexer>& multiplexer, ListModel::Keys keys)
        : list(List::create(multiplexer, QSharedPointer<NoteAdapter>::create(), u"notes"_s, QString(), keys))
        , mirror(Handle(list))
    {
        model.keys = keys;
    }

    void apply(const Message& message)
    {
        if (message.name == "listAll")
            isAwaited = true;
        if (message.name == "listChunk" && message.isLast && model.transfer == "listAll") {
            isComplete = true;
            isAwaited = false;
        }
        model.apply(message.name, message.elements, message.isLast);
    }
    void dropUnderWay()
    {
        model.transfer.clear();
        model.received.clear();
        isAwaited = false;
    }
    void compare()
    {
        require(Handle(list).toList() == model.items, "a list is what the messages make of it");
        require(mirror.items() == model.items, "a list is what was announced");
        requireNone(mirror.complaint());
        require(mirror.take() == std::exchange(model.announced, {}), "what changes is announced, and nothing else");
        require(list->isIncomplete() == !isComplete, "a list is complete once it has come");
    }

    List::Pointer list;
    ListModel model;
    bool isComplete = false;        ///< has come once
    bool isAwaited = false;         ///< asked for or begun, and not come
    iface::ListMirror<Note> mirror; // before all other slots
};

/// A service with one list, its messages on their way, and two who follow it.
class ListWeather
{
public:
    explicit ListWeather(Choices choices)
        : m_choices(choices)
    {
        for (Follower* const follower : {&m_all, &m_distinct}) {
            using Impl = iface::ObservableListImpl;
            const auto react = [this] { misbehave(); };
            for (const auto itemSignal : {&Impl::itemAdded, &Impl::itemUpdated, &Impl::itemRemoved})
                QObject::connect(Handle(follower->list).impl(), itemSignal, &m_context, react);
            QObject::connect(Handle(follower->list).impl(), &Impl::itemsChanged, &m_context, react);
        }
    }

    void run()
    {
        while (!m_choices.isUsedUp()) {
            step();
            settle();
        }
        m_misdeedsLeft = 0;
        // What was lost on its way to who waits for it is asked for again; all else, when a connection is new.
        turn();
        m_wire.clear();
        m_clock->advance(5 * 60 * 1000);
        require((m_all.isAwaited || m_distinct.isAwaited) == (m_pipe->sentCount() > 0),
                "a list that does not come is asked for again, and no other");
        reconnect();
        turn();
        require(!m_wire.isEmpty(), "a list is asked for when the connection is new");
        while (!m_wire.isEmpty())
            deliver(0);
        settle();
        require(m_all.model.items == m_notes && m_distinct.model.items == m_notes, "lists are what the service has");
    }

private:
    void step()
    {
        switch (m_choices.bounded(12)) {
        case 0:
        case 1:
            return changeState();
        case 2:
            m_misdeedsLeft = m_choices.bounded(8);
            return;
        case 3:
            return m_clock->advance((m_choices.bounded(8) + 1) * 10 * 1000);
        case 4:
            return m_choices.bounded(8) ? void() : reconnect();
        case 5:
            return turn();
        case 6:
            if (!m_wire.isEmpty()) // lost
                m_wire.removeAt(m_choices.bounded(int(m_wire.size())));
            return;
        case 7:
            if (!m_wire.isEmpty()) // and comes once more
                m_wire.insert(m_choices.bounded(int(m_wire.size())), m_wire.first());
            return;
        case 8:
            return sayAnything();
        default:
            return deliver(m_choices.bounded(4) ? 0 : m_choices.bounded(1 + int(m_wire.size())));
        }
    }

    QString anyId() { return QString::number(m_choices.bounded(15)); }

    void changeState()
    {
        const QString id = anyId();
        const auto found =
            std::find_if(m_notes.begin(), m_notes.end(), [&](const Note& note) { return note.id == id; });
        if (found == m_notes.end()) {
            m_notes.append({id, anyId(), 0});
            m_wire.append({"listAdd", {noteJson(id, m_notes.last().text)}});
        } else if (m_choices.bounded(2)) {
            found->text = anyId();
            m_wire.append({"listChange", {noteJson(id, found->text)}});
        } else {
            m_notes.erase(found);
            m_wire.append({"listRemove", {noteJson(id, QString())}});
        }
    }

    void sayAnything()
    {
        static const char* const names[] = {"listAll",    "listElements", "listChunk", "listAdd",
                                            "listChange", "listRemove",   "listWindow"};
        Message message{names[m_choices.bounded(int(std::size(names)))], {}, m_choices.bounded(2) == 0};
        for (int i = m_choices.bounded(5); i > 0; --i)
            message.elements.append(randomElement(m_choices));
        m_wire.append(message);
    }

    /// Everything that was asked for will be told, as it is now and in pieces.
    void answer()
    {
        for (; !m_pipe->takeSent().isEmpty();) {
            QJsonArray all;
            for (const Note& note : std::as_const(m_notes)) {
                QJsonObject element = noteJson(note.id, note.text);
                element.insert(u"stars"_s, note.stars);
                all.append(element);
            }
            m_wire.append(Message{"listAll", {}});
            for (bool isLast = false; !isLast;) {
                Message chunk{"listChunk", {}};
                for (int i = m_choices.bounded(8); i >= 0 && !all.isEmpty(); --i)
                    chunk.elements.append(all.takeAt(0));
                chunk.isLast = isLast = all.isEmpty();
                m_wire.append(chunk);
            }
        }
    }

    void deliver(int at)
    {
        if (at >= m_wire.size())
            return;
        const Message message = m_wire.takeAt(at);
        m_arrived.append(message);
        try {
            m_pipe->inject(listMessage(message.name.constData(), message.elements, {{u"last"_s, message.isLast}}));
        } catch (const std::runtime_error&) {
        }
    }

    void misbehave()
    {
        if (m_misdeedsLeft == 0)
            return;
        --m_misdeedsLeft;
        switch (m_choices.bounded(4)) {
        case 0:
            throw std::runtime_error("slot");
        case 1:
            return deliver(0); // in an event loop of its own
        case 2:
            return m_clock->advance(31 * 1000);
        default:
            return void(Handle(m_all.list).toList() + Handle(m_distinct.list).toList());
        }
    }

    void turn()
    {
        QCoreApplication::sendPostedEvents();
        if (std::exchange(m_asksNext, false))
            m_all.isAwaited = m_distinct.isAwaited = true;
        answer();
    }

    void reconnect()
    {
        m_pipe->setConnected(false);
        m_pipe->clearSent();
        m_wire.clear();
        m_pipe->setConnected(true);
        m_asksNext = true;
        m_all.dropUnderWay();
        m_distinct.dropUnderWay();
    }

    /// Messages are applied in the order in which they came, also those that came while another one was.
    void settle()
    {
        for (Follower* const follower : {&m_all, &m_distinct}) {
            for (const Message& message : std::as_const(m_arrived))
                follower->apply(message);
            follower->compare();
            const QString id = anyId();
            require(follower->list->locateItem(id) == follower->model.find(id), "an item is found where it is");
        }
        m_arrived.clear();
    }

    const QSharedPointer<FakeClock> m_clock = FakeClock::install();
    const QSharedPointer<FakePipe> m_pipe = QSharedPointer<FakePipe>::create();
    const QSharedPointer<zel::ListApiMultiplexer> m_multiplexer =
        QSharedPointer<zel::ListApiMultiplexer>::create(m_pipe);
    Follower m_all{m_multiplexer, ListModel::Keys::AsTheyCome};
    Follower m_distinct{m_multiplexer, ListModel::Keys::Distinct};
    QObject m_context;
    Choices m_choices;
    QList<Note> m_notes;
    QList<Message> m_wire;
    QList<Message> m_arrived;
    int m_misdeedsLeft = 0;
    bool m_asksNext = true; ///< the lists ask in the next turn of the event loop
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    beginQuietly();
    iface::setLogLevel(iface::LogLevel::Type(3)); // unknown keys are ordinary here
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const Choices choices(QByteArrayView(data, static_cast<qsizetype>(size)).sliced(1));
    if (data[0] & 1)
        requireNone(MapWeather(choices).run(1000));
    else
        ListWeather(choices).run();
    FakeClock::uninstall();
    return 0;
}
