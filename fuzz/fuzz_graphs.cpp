// SPDX-License-Identifier: Apache-2.0
// Lists, maps and values, whatever is derived from them, and slots that do anything: whoever reads, and whatever is
// announced, agrees with a naive recomputation. An input is the choices of a graph and of its changes, a byte each.
#include "Fuzzing.h"

#include <iface/ContainerGraph.h>

#include <cstdint>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    beginQuietly();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const bool mayDisturb = data[0] & 1;
    ContainerGraph graph(Choices(QByteArrayView(data, static_cast<qsizetype>(size)).sliced(1)), mayDisturb);
    do
        requireNone(graph.change());
    while (!graph.isOver());
    return 0;
}
