// SPDX-License-Identifier: MIT
#include "commands/diff/Comparison.h"

#include <algorithm>
#include <cstring>

namespace PosUtil {

// Returns whether the values differ as a whole. Two containers of a kind differ in their values,
// which become tasks.
bool Comparison::IsDifferent(const Task& task) {
  const ValueTree::Node& a = fA[task.fA];
  const ValueTree::Node& b = fB[task.fB];
  if (a.fNumber == b.fNumber) return false;
  if (a.fKind != b.fKind || a.fKind == ValueTree::Node::kScalar) return true;
  a.fKind == ValueTree::Node::kArray ? CompareArrays(task) : CompareDicts(task);
  return false;
}

void Comparison::CompareArrays(const Task& task) {
  const std::vector<std::uint32_t> a = fA.ChildrenOf(task.fA);
  const std::vector<std::uint32_t> b = fB.ChildrenOf(task.fB);
  const auto isSame = [this](std::uint32_t x, std::uint32_t y) {
    return fA[x].fNumber == fB[y].fNumber;
  };
  const auto begin = static_cast<std::size_t>(
      std::mismatch(a.begin(), a.end(), b.begin(), b.end(), isSame).first - a.begin());
  std::size_t endA = a.size();
  std::size_t endB = b.size();
  for (; endA > begin && endB > begin && isSame(a[endA - 1], b[endB - 1]); --endA) --endB;

  std::vector<Task> tasks;
  const auto add = [&](Difference::Kind kind, std::size_t i, std::size_t shift) {
    tasks.push_back({kind, i < endA ? a[i] : 0, i < endB ? b[i] : 0,
                     fSteps.Add(task.fNode, PathStep(i)), shift});
  };
  const std::size_t endOfBoth = std::min(endA, endB);
  for (std::size_t i = begin; i < endOfBoth; ++i) add(Difference::kReplaced, i, 0);
  for (std::size_t i = endOfBoth; i < endA; ++i) add(Difference::kRemoved, i, i - endOfBoth);
  for (std::size_t i = endOfBoth; i < endB; ++i) add(Difference::kAdded, i, 0);
  PushInOrder(std::move(tasks));
}

// Both are in the order of their keys.
void Comparison::CompareDicts(const Task& task) {
  const std::vector<std::uint32_t> a = fA.ChildrenOf(task.fA);
  const std::vector<std::uint32_t> b = fB.ChildrenOf(task.fB);
  std::vector<Task> tasks;
  const auto add = [&](Difference::Kind kind, std::uint32_t x, std::uint32_t y, const char* key) {
    tasks.push_back({kind, x, y, fSteps.Add(task.fNode, PathStep(std::string(key)))});
  };
  for (std::size_t i = 0, j = 0; i < a.size() || j < b.size();) {
    const char* const x = i < a.size() ? fA[a[i]].fKey : nullptr;
    const char* const y = j < b.size() ? fB[b[j]].fKey : nullptr;
    const int order = !x ? 1 : !y ? -1 : std::strcmp(x, y);
    if (order < 0) {
      add(Difference::kRemoved, a[i++], 0, x);
    } else if (order > 0) {
      add(Difference::kAdded, 0, b[j++], y);
    } else {
      add(Difference::kReplaced, a[i++], b[j++], x);
    }
  }
  PushInOrder(std::move(tasks));
}

void Comparison::PushInOrder(std::vector<Task> tasks) {
  fTasks.insert(fTasks.end(), tasks.rbegin(), tasks.rend());
}

}  // namespace PosUtil
