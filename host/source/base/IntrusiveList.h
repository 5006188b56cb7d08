// SPDX-License-Identifier: MIT
#pragma once

namespace KAPHost {

// What a node of a list holds, in a member `fLinks`.
template <class Node>
struct ListLinks {
  Node* fPrevious = nullptr;
  Node* fNext = nullptr;
};

// A list whose nodes carry their links: adding a node needs no memory, so it cannot fail. The
// standard list allocates. Has no lock; owns nothing.
template <class Node>
class IntrusiveList {
 public:
  constexpr IntrusiveList() = default;

  Node* First() const noexcept { return fFirst; }

  void Append(Node& node) noexcept {
    node.fLinks = {fLast, nullptr};
    (fLast ? fLast->fLinks.fNext : fFirst) = &node;
    fLast = &node;
  }

  void Remove(const Node& node) noexcept {
    const auto& [previous, next] = node.fLinks;
    (previous ? previous->fLinks.fNext : fFirst) = next;
    (next ? next->fLinks.fPrevious : fLast) = previous;
  }

  template <class Visit>
  void ForEach(Visit visit) const {
    for (Node* node = fFirst; node; node = node->fLinks.fNext) visit(*node);
  }

 private:
  Node* fFirst = nullptr;
  Node* fLast = nullptr;
};

}  // namespace KAPHost
