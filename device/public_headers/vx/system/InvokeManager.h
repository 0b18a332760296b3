// SPDX-License-Identifier: Apache-2.0
#pragma once

#pragma GCC visibility push(default)
namespace vx {
namespace system {

class InvokeRequest;

// Hands requests to other applications. A request is one record, the JSON object
//     {"target":...,"action":...,"mimeType":...,"data":...}
// given to the sequenced-packet socket that the target listens on, "/pps/services/invocation/" and the target's name;
// PPS_ROOT moves it as it moves objects (see pps/object.h). An ObjectServer can be such a target.
//
// Holds nothing: make one where it is needed. Any thread.
class InvokeManager
{
public:
    // Whether the target's socket took the request; what becomes of it is not known. False, with one line in the
    // system log, when nobody listens there, when the target's name is empty, longer than a file name or no plain one
    // (a '/' in it, "." or ".."), or when the target does not take the record within a second: the call never waits
    // longer than two.
    bool invoke(const InvokeRequest& request);
};

} // namespace system
} // namespace vx
#pragma GCC visibility pop
