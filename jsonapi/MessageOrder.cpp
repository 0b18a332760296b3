// SPDX-License-Identifier: Apache-2.0
#include <zel/detail/MessageOrder.h>

#include <utility>

namespace zel::detail {

/// A loop over the steps of a message, or of one of its parts.
struct MessageOrder::Round
{
    Round* around;
    int next;
    const int count;
    const Call call;
    void* const step;

    bool isDone() const { return next >= count; }
    void runNext() { call(step, next++); }
};

struct MessageOrder::Message
{
    Message* older;
    Message* newer;
    Round* innermost;
};

struct MessageOrder::State
{
    Message* oldest = nullptr;
    Message* newest = nullptr;
    Message* current = nullptr; // whose step is being run
};

MessageOrder::State& MessageOrder::state()
{
    thread_local State threadState;
    return threadState;
}

/// Runs whatever is left of a message, the innermost loop first.
void MessageOrder::workOff(Message& message)
{
    struct Current
    {
        explicit Current(Message* message)
            : outer(std::exchange(state().current, message))
        {
        }
        ~Current() { state().current = outer; }
        Message* const outer;
    };

    const Current current(&message);
    for (Round* round = message.innermost; round;) {
        if (round->isDone()) {
            round = round->around;
        } else {
            round->runNext();
        }
    }
}

void MessageOrder::runMessage(int count, Call call, void* step)
{
    struct Arrival
    {
        explicit Arrival(Message* arrived)
            : message(arrived)
        {
            state().newest = message;
        }
        ~Arrival()
        {
            State& order = state();
            order.newest = message->older;
            (message->older ? message->older->newer : order.oldest) = nullptr;
        }
        Message* const message;
    };

    State& order = state();
    Round round = {nullptr, 0, count, call, step};
    Message message = {order.newest, nullptr, &round};
    (order.newest ? order.newest->newer : order.oldest) = &message;
    const Arrival arrival(&message);
    for (Message* earlier = order.oldest; earlier != &message; earlier = earlier->newer) {
        workOff(*earlier);
    }
    workOff(message);
}

void MessageOrder::runParts(int count, Call call, void* step)
{
    struct Entered
    {
        Entered(Message* entered, Round* added)
            : message(entered)
            , round(added)
        {
            if (message) {
                message->innermost = round;
            }
        }
        ~Entered()
        {
            if (message) {
                message->innermost = round->around;
            }
        }
        Message* const message;
        Round* const round;
    };

    Message* const message = state().current;
    Round round = {message ? message->innermost : nullptr, 0, count, call, step};
    const Entered entered(message, &round);
    while (!round.isDone()) {
        round.runNext();
    }
}

} // namespace zel::detail
