// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/SavedException.h"

namespace PosUtil {

// Collects the messages of a check. The library calls a procedure without client data, so the
// messages go to the newest receiver of the thread. It keeps the first messages, up to a limit, and
// counts the others. Where the limit comes inside of a union, it also keeps the first messages of
// the other alternatives: one of them may be the closest.
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
    } else if (!AddToUnion(message)) {
      ++fDropped;
    }
  }

  // Returns false for a message that is not from the union at the limit.
  bool AddToUnion(std::string_view message) {
    if (fMessages.empty()) return false;
    if (!fUnion) {
      const std::size_t at = fMessages.back().find(kUnion);
      fUnion = at == std::string::npos ? "" : fMessages.back().substr(0, at + kUnion.size());
    }
    if (fUnion->empty() || !message.starts_with(*fUnion)) return false;
    if (fExtra == fLimit) return true;
    const std::size_t alternative = message.find(": ", message.rfind(kUnion) + kUnion.size());
    std::size_t& count = fCounts[std::string(message.substr(0, alternative))];
    if (count++ < kMostInAlternative) {
      fMessages.emplace_back(message);
      ++fExtra;
    }
    return true;
  }

  static constexpr std::string_view kUnion = "Not a valid union type: ";
  static constexpr std::size_t kMostInAlternative = 1000;

  static inline thread_local MessageReceiver* gCurrent = nullptr;

  const std::size_t fLimit;
  MessageReceiver* const fBefore;
  std::vector<std::string> fMessages;
  std::size_t fDropped = 0;
  std::optional<std::string> fUnion;           // how the messages of the union at the limit start
  std::map<std::string, std::size_t> fCounts;  // by the alternative, also of unions inside
  std::size_t fExtra = 0;                      // messages beyond the limit
  SavedException fSaved;
};

}  // namespace PosUtil
