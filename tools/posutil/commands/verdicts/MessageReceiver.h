#pragma once

#include <string>
#include <utility>
#include <vector>

#include "base/SavedException.h"

namespace PosUtil {

// Takes the messages of a check. The library hands them to a procedure without client data, so the one that was made
// last on the thread takes them.
class MessageReceiver {
 public:
  MessageReceiver() : fBefore(std::exchange(gCurrent, this)) {}
  MessageReceiver(const MessageReceiver&) = delete;
  MessageReceiver& operator=(const MessageReceiver&) = delete;
  ~MessageReceiver() { gCurrent = fBefore; }

  // For the library. Not without a receiver.
  static void Receive(const char* message) {
    gCurrent->fKept.Keep([=] { gCurrent->fMessages.emplace_back(message); });
  }

  // Raises what kept a message from being taken, which the library has made a report of.
  void Rethrow() { fKept.Rethrow(); }
  std::vector<std::string> Take() { return std::move(fMessages); }

 private:
  static inline thread_local MessageReceiver* gCurrent = nullptr;

  MessageReceiver* const fBefore;
  std::vector<std::string> fMessages;
  SavedException fKept;
};

}  // namespace PosUtil
