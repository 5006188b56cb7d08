// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "base/SavedException.h"

namespace PosUtil {

// Collects the messages of a check. The library calls a procedure without client data, so the
// messages go to the newest receiver of the thread. It keeps the first messages, up to a limit, and
// counts the others.
class MessageReceiver {
 public:
  explicit MessageReceiver(std::size_t limit)
      : fLimit(limit), fBefore(std::exchange(gCurrent, this)) {}
  MessageReceiver(const MessageReceiver&) = delete;
  MessageReceiver& operator=(const MessageReceiver&) = delete;
  ~MessageReceiver() { gCurrent = fBefore; }

  // The procedure for the library. The thread must have a receiver.
  static void Receive(const char* message) {
    gCurrent->fSaved.Save([=] { gCurrent->Add(message); });
  }

  // Throws the exception that stopped a message, if there is one. To the library it is a report.
  void Rethrow() { fSaved.Rethrow(); }
  std::vector<std::string> Take() { return std::move(fMessages); }
  // The number of messages beyond the limit.
  std::size_t Dropped() const { return fDropped; }

 private:
  void Add(const char* message) {
    if (fMessages.size() < fLimit) {
      fMessages.emplace_back(message);
    } else {
      ++fDropped;
    }
  }

  static inline thread_local MessageReceiver* gCurrent = nullptr;

  const std::size_t fLimit;
  MessageReceiver* const fBefore;
  std::vector<std::string> fMessages;
  std::size_t fDropped = 0;
  SavedException fSaved;
};

}  // namespace PosUtil
