// SPDX-License-Identifier: MIT
#pragma once

#include <mutex>
#include <vector>

#include "kaphost/StreamCall.h"

namespace KAPHost {

// The log of stream calls. Thread-safe.
class StreamLog {
 public:
  void Switch(bool log) noexcept;
  // Throws std::bad_alloc.
  void Add(const StreamCall& call);
  std::vector<StreamCall> Take();

 private:
  std::mutex fMutex;
  std::vector<StreamCall> fCalls;
};

}  // namespace KAPHost
