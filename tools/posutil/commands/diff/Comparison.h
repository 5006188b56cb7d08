// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "base/ValuePath.h"
#include "commands/diff/ValueTree.h"
#include "commands/values/StepTree.h"

namespace PosUtil {

// How one document differs from another.
struct Difference {
  enum Kind : char { kRemoved, kAdded, kReplaced };

  Kind fKind;
  ValuePath fPath;       // in the first document; of an added value, in the second
  ValuePath fPatchPath;  // the same, after the changes that come before
};

// Finds the differences between two documents, in the order of their values. Of an array, it
// compares what is left between the equal values at both ends slot by slot: a longest common
// subsequence would find smaller differences, in quadratic time.
class Comparison {
 public:
  Comparison(const ValueTree& a, const ValueTree& b) : fA(a), fB(b) {}

  // Calls `report` with each Difference.
  template <class Report>
  void Run(Report report) {
    fTasks.push_back({Difference::kReplaced, ValueTree::kRoot, ValueTree::kRoot, StepTree::kRoot});
    while (!fTasks.empty()) {
      const Task task = fTasks.back();
      fTasks.pop_back();
      if (task.fKind == Difference::kReplaced && !IsDifferent(task)) continue;
      Difference difference = {task.fKind, fSteps.PathTo(task.fNode), {}};
      difference.fPatchPath = difference.fPath;
      if (task.fShift > 0) difference.fPatchPath.back().fIndex -= task.fShift;
      report(difference);
    }
  }

 private:
  // Values to compare, or one that the other document does not have.
  struct Task {
    Difference::Kind fKind;
    std::uint32_t fA;
    std::uint32_t fB;
    StepTree::Node fNode;
    std::size_t fShift = 0;  // how many slots before it are removed by then
  };

  bool IsDifferent(const Task& task);
  void CompareArrays(const Task& task);
  void CompareDicts(const Task& task);
  void PushInOrder(std::vector<Task> tasks);

  const ValueTree& fA;
  const ValueTree& fB;
  StepTree fSteps;
  std::vector<Task> fTasks;  // the next one at the end
};

}  // namespace PosUtil
