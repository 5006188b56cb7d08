// SPDX-License-Identifier: MIT
#pragma once

namespace KAPHost {

class WatchedCall;

// What a thread is doing in observed calls.
struct ThreadState {
  WatchedCall* fInnermost = nullptr;
  unsigned fNumber = 0;        // 0: not known yet
  unsigned fDepth = 0;         // of traced calls
  bool fIsDescribing = false;  // what it calls now is the host's own doing
};

inline thread_local constinit ThreadState tThread;

// Threads count from 1, in the order of their first observed call in the process.
unsigned ThreadNumber() noexcept;

}  // namespace KAPHost
