// SPDX-License-Identifier: Apache-2.0
#include <zel/detail/MessageOrder.h>

#include <iface/detail/FirstException.h>

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
    void runNext(iface::detail::FirstException& thrown)
    {
        thrown.guard([this] { call(step, next++); });
    }
};

struct MessageOrder::Message
{
    Message* older;
    Message* newer;
    Round* innermost;
    iface::detail::FirstException thrown = {};
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
    Message* const outer = std::exchange(state().current, &message);
    for (Round* round = message.innermost; round;) {
        if (round->isDone()) {
            round = round->around;
        } else {
            round->runNext(message.thrown);
        }
    }
    state().current = outer;
}

void MessageOrder::runMessage(int count, Call call, void* step)
{
    State& order = state();
    Round round = {nullptr, 0, count, call, step};
    Message message = {order.newest, nullptr, &round};
    (order.newest ? order.newest->newer : order.oldest) = &message;
    order.newest = &message;
    for (Message* earlier = order.oldest; earlier != &message; earlier = earlier->newer)
        workOff(*earlier);
    workOff(message);
    order.newest = message.older;
    (message.older ? message.older->newer : order.oldest) = nullptr;
    message.thrown.rethrow();
}

void MessageOrder::runParts(int count, Call call, void* step)
{
    Message* const message = state().current;
    iface::detail::FirstException own;
    Round round = {message ? message->innermost : nullptr, 0, count, call, step};
    if (message)
        message->innermost = &round;
    while (!round.isDone())
        round.runNext(message ? message->thrown : own);
    if (message)
        message->innermost = round.around;
    own.rethrow();
}

} // namespace zel::detail
