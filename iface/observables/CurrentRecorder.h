// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace iface {

class ReadRecorder;

/// What takes note of this thread's reads (see ObservableTracker), within reach of announcements, which suspend it for
/// every single change.
[[gnu::tls_model("initial-exec")]] extern constinit thread_local ReadRecorder* t_currentRecorder;

} // namespace iface
