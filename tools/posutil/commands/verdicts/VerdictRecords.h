// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "commands/verdicts/Verdict.h"
#include "commands/verdicts/VerdictPrinter.h"
#include "files/Output.h"

namespace PosUtil {

// What a worker finds out about a task, in a form for a pipe. The bytes are only for a process of
// the same program.
struct VerdictRecord {
  enum Kind : char {
    kMessage,  // fText is for standard error
    kVerdict,
    kUnchecked,  // fText is the reason
    kEnd,        // of the task
  };

  Kind fKind;
  std::size_t fTask;
  CheckedName fName = {};
  Verdict fVerdict = {};
  std::string fText = {};
};

// Sends the verdicts of one task instead of printing them.
class VerdictSender final : public VerdictPrinter {
 public:
  VerdictSender(std::size_t task, Output& out) : VerdictPrinter(out), fTask(task) {}

  void Begin() override {}
  void Print(const CheckedName& name, const Verdict& verdict) override;
  void PrintUnchecked(const CheckedName& name, const std::string& reason) override;
  void End(const VerdictCounts& counts) override;

  void PutMessage(const std::string& text);

 private:
  const std::size_t fTask;
};

// Puts the records of one worker together again.
class VerdictReceiver {
 public:
  void Add(std::string_view bytes) { fBytes += bytes; }
  // The next record that is there as a whole.
  std::optional<VerdictRecord> Next();

 private:
  std::string fBytes;
  std::size_t fUsed = 0;
};

// Passes records on in the order of their tasks, whatever the order in which they come.
class VerdictOrder {
 public:
  using Receive = std::function<void(VerdictRecord record)>;

  VerdictOrder(std::size_t tasks, Receive receive)
      : fWaiting(tasks), fReceive(std::move(receive)) {}

  void Add(VerdictRecord record);
  // Passes the rest on. Calls `onMissing` for each task without an end.
  void Finish(const std::function<void(std::size_t task)>& onMissing);

 private:
  // Returns whether the records that wait for the current task have its end.
  bool PassWaiting();

  std::size_t fCurrent = 0;
  std::vector<std::vector<VerdictRecord>> fWaiting;  // by task
  const Receive fReceive;
};

}  // namespace PosUtil
