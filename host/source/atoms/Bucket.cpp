// SPDX-License-Identifier: MIT
#include "atoms/Bucket.h"

#include <utility>

namespace KAPHost {

Bucket* Bucket::Remove(const KAPStringAtom& atom) noexcept {
  const auto slotIn = [&atom](const Bucket& bucket) {
    unsigned found = bucket.Matches(atom.fTag);
    while (found != 0 &&
           bucket.PointerAt(static_cast<unsigned>(std::countr_zero(found))) != &atom) {
      found &= found - 1;
    }
    return found;
  };
  Bucket* holder = this;
  unsigned found = slotIn(*holder);
  while (found == 0) found = slotIn(*(holder = holder->Next()));

  Bucket* previous = nullptr;
  Bucket* last = this;
  while (Bucket* const next = last->Next()) previous = std::exchange(last, next);
  const unsigned end = last->Count() - 1;
  holder->Set(static_cast<unsigned>(std::countr_zero(found)), last->PointerAt(end),
              last->fTags[end]);
  last->SetState(last->State() - 1u);
  if (end != 0 || !previous) return nullptr;
  previous->SetState((previous->State() & ~kLinked) - 1u);
  return last;
}

}  // namespace KAPHost
