// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

namespace zel::detail {

/// Keeps messages in order while handlers spin nested event loops.
///
/// A message is worked off in steps (listener after listener, list after list, element after element), and a step may
/// announce something to a handler that spins an event loop, in which the next message arrives. Worked off there and
/// then, it would be overtaken by the rest of the message before: an element removed by the second message would be
/// added by the rest of the first. So a message that arrives first has the steps done that are left of those before it,
/// all of which wait further down the stack with their data intact, and only then its own.
///
/// A step that throws ends nothing. Every message keeps the first exception of its own steps, whoever runs them, and
/// throws it where it arrived, once all of them have been taken.
///
/// Per thread, and without a queue: every round lives on the stack of whoever runs it.
class ZEL_EXPORT MessageOrder
{
public:
    /// Calls step(0) to step(count - 1) for a message that has just arrived, once everything before it is done.
    template <class Step>
    static void runMessage(int count, Step step)
    {
        runMessage(count, &callStep<Step>, &step);
    }
    /// The same for the parts of the message that is being worked off, which keeps what they throw: this returns.
    /// Outside of any message they are one by themselves.
    template <class Step>
    static void runParts(int count, Step step)
    {
        runParts(count, &callStep<Step>, &step);
    }

private:
    using Call = void (*)(void* step, int index);
    struct Message;
    struct Round;
    struct State;

    template <class Step>
    static void callStep(void* step, int index)
    {
        (*static_cast<Step*>(step))(index);
    }

    static void runMessage(int count, Call call, void* step);
    static void runParts(int count, Call call, void* step);
    static State& state();
    static void workOff(Message& message);
};

} // namespace zel::detail
