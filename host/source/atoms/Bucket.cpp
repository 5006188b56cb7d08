// SPDX-License-Identifier: MIT
#include "atoms/Bucket.h"

#include <algorithm>
#include <utility>

namespace KAPHost {

Bucket* Bucket::Remove(const KAPStringAtom& atom) noexcept {
  Bucket* holder = this;
  const auto place = [&] {
    const auto end = holder->fSlots.begin() + holder->Size();
    return std::find(holder->fSlots.begin(), end, &atom);
  };
  while (place() == holder->fSlots.begin() + holder->Size()) holder = holder->Next();
  const auto hole = static_cast<unsigned>(place() - holder->fSlots.begin());

  Bucket* previous = nullptr;
  Bucket* last = this;
  while (Bucket* const next = last->Next()) previous = std::exchange(last, next);
  const unsigned end = last->Count() - 1;
  holder->Set(hole, last->AtomAt(end));
  last->fSlots[end] = nullptr;
  if (end != 0 || !previous) return nullptr;
  previous->fSlots[kSlots - 1] = nullptr;
  previous->SetState(previous->State() & ~std::uint32_t{kLinked});
  return last;
}

}  // namespace KAPHost
