// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "base/ValuePath.h"

namespace PosUtil {

// The paths of the values on a walk. A value costs one step, not a path of its own: nesting a
// hundred thousand deep would otherwise take minutes.
class StepTree {
 public:
  using Node = std::size_t;
  static constexpr Node kRoot = 0;

  Node Add(Node parent, PathStep step) {
    fSteps.push_back({parent, std::move(step)});
    return fSteps.size();
  }
  ValuePath PathTo(Node node) const {
    ValuePath path;
    for (; node != kRoot; node = fSteps[node - 1].fParent) path.push_back(fSteps[node - 1].fStep);
    std::reverse(path.begin(), path.end());
    return path;
  }

 private:
  struct Entry {
    Node fParent;
    PathStep fStep;
  };

  std::vector<Entry> fSteps;
};

}  // namespace PosUtil
