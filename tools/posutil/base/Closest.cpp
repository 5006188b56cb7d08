// SPDX-License-Identifier: MIT
#include "base/Closest.h"

#include <algorithm>

namespace PosUtil {

namespace {

// How many characters to insert, remove, replace or swap with their neighbour.
std::size_t Distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> twoBefore(b.size() + 1);
  std::vector<std::size_t> before(b.size() + 1);
  std::vector<std::size_t> now(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) now[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    twoBefore.swap(before);
    before.swap(now);
    now[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const bool isSame = a[i - 1] == b[j - 1];
      now[j] = std::min({before[j] + 1, now[j - 1] + 1, before[j - 1] + (isSame ? 0 : 1)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        now[j] = std::min(now[j], twoBefore[j - 2] + 1);
      }
    }
  }
  return now[b.size()];
}

// A part of a candidate counts as one slip at its start, as two elsewhere.
std::size_t Slips(std::string_view word, std::string_view candidate) {
  constexpr std::size_t kShortestPart = 4;
  if (word.size() >= kShortestPart - 1 && candidate.starts_with(word)) return 1;
  if (word.size() >= kShortestPart && candidate.find(word) != std::string_view::npos) return 2;
  return Distance(word, candidate);
}

}  // namespace

std::string Closest(std::string_view word, const std::vector<std::string>& candidates) {
  // With more errors than a third of its length, it counts as another word.
  std::size_t least = std::min<std::size_t>(3, word.size() / 3) + 1;
  std::string closest;
  for (const std::string& candidate : candidates) {
    const std::size_t slips = Slips(word, candidate);
    if (slips >= least) continue;
    least = slips;
    closest = candidate;
  }
  return closest;
}

}  // namespace PosUtil
