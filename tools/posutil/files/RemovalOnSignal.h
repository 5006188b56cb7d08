// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>
#include <string>

namespace PosUtil {

// Holds back every signal that can be held back.
class BlockedSignals {
 public:
  BlockedSignals();
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;
  ~BlockedSignals();

 private:
  sigset_t fBefore;
};

// Removes a file if a signal ends the process while this exists. Only one may exist at a time.
class RemovalOnSignal {
 public:
  // The caller keeps the folder open.
  RemovalOnSignal(int folder, const std::string& name);
  RemovalOnSignal(const RemovalOnSignal&) = delete;
  RemovalOnSignal& operator=(const RemovalOnSignal&) = delete;
  ~RemovalOnSignal();
};

}  // namespace PosUtil
