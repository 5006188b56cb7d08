// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "base/SavedException.h"

namespace PosUtil {

// Collects the messages of a check. The library calls a procedure without client data, so the
// messages go to the newest receiver of the thread.
class MessageReceiver {
 public:
  MessageReceiver() : fBefore(std::exchange(gCurrent, this)) {}
  MessageReceiver(const MessageReceiver&) = delete;
  MessageReceiver& operator=(const MessageReceiver&) = delete;
  ~MessageReceiver() { gCurrent = fBefore; }

  // The procedure for the library. The thread must have a receiver.
  static void Receive(const char* message) {
    gCurrent->fSaved.Save([=] { gCurrent->fMessages.emplace_back(message); });
  }

  // Throws the exception that stopped a message, if there is one. To the library it is a report.
  void Rethrow() { fSaved.Rethrow(); }
  std::vector<std::string> Take() { return std::move(fMessages); }

 private:
  static inline thread_local MessageReceiver* gCurrent = nullptr;

  MessageReceiver* const fBefore;
  std::vector<std::string> fMessages;
  SavedException fSaved;
};

}  // namespace PosUtil
