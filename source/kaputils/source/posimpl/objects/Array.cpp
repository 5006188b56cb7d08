// SPDX-License-Identifier: MIT
#include "posimpl/objects/Array.h"

#include <algorithm>
#include <limits>
#include <memory>

#include "kap/KAPMemory.h"
#include "kap/TOQException.h"
#include "posimpl/base/NestingGuard.h"

namespace NPOSObjectImpl {

using KAP_T_MT::CKAPMemory;

namespace {

constexpr std::uint32_t kFirstCapacity = 4;
constexpr std::uint32_t kMaxCapacity = std::numeric_limits<std::uint32_t>::max();

std::uint32_t CapacityFor(std::uint32_t count, std::uint32_t capacity) {
  std::uint32_t grown = capacity != 0 ? capacity : kFirstCapacity / 2;
  do {
    if (grown > kMaxCapacity / 2) KAP_T_MT::KAPThrowMathOverflow();
    grown *= 2;
  } while (grown < count);
  return grown;
}

}  // namespace

// The slots are taken out first, and again as long as a release that calls back puts something
// in.
Array::~Array() {
  while (fElements) {
    fCapacity = 0;
    const std::uint32_t count = std::exchange(fCount, 0);
    POSObject** const elements = std::exchange(fElements, nullptr);
    ReleaseOfHeld release;
    for (POSObject* const element : std::span(elements, count)) {
      release.Expect(element);
      Adopt(element);
    }
    CKAPMemory::Free(elements);
  }
}

// Large blocks grow by moving pages instead of bytes; a failed call leaves the block as it is.
void Array::growToHold(std::uint32_t count) {
  if (count <= fCapacity) return;
  const std::uint32_t capacity = CapacityFor(count, fCapacity);
  const std::size_t size = KAP_T_MT::KAPCheckedSize(capacity, sizeof(void*));  // bare handles
  void* const block = fElements ? CKAPMemory::Realloc(fElements, size) : CKAPMemory::Alloc(size);
  fElements = static_cast<POSObject**>(block);
  fCapacity = capacity;
}

void Array::SetAt(std::uint64_t index, CPOSObject object) {
  if (index >= std::numeric_limits<std::uint32_t>::max()) KAP_T_MT::KAPThrowMathOverflow();
  const auto slot = static_cast<std::uint32_t>(index);
  if (slot >= fCount) {
    growToHold(slot + 1);
    std::fill(fElements + fCount, fElements + slot + 1, nullptr);
    fCount = slot + 1;
  }
  const CPOSObject replaced = Adopt(std::exchange(fElements[slot], object.Detach()));
}

void Array::Remove(std::uint64_t index) noexcept {
  if (index >= fCount) return;
  const CPOSObject removed = Adopt(fElements[index]);
  std::copy(fElements + index + 1, fElements + fCount, fElements + index);
  --fCount;
}

// Both by index: the procedures of an element of another component may change the arrays.
BaseObject* Array::Clone(Walk& walk) {
  walk.Enter();
  const NestingGuard guard(walk.Stack());
  std::unique_ptr<Array> clone(new Array);
  clone->growToHold(fCount);
  for (std::uint32_t i = 0; i < fCount && !walk.Stopped(); ++i) {
    clone->Append(Adopt(CloneOf(fElements[i], walk)));
  }
  walk.Leave();
  return walk.Stopped() ? nullptr : clone.release();
}

bool Array::IsEqual(const BaseObject& other, Walk& walk) const {
  const NestingGuard guard(walk.Stack());
  const Array* array = As(&other);
  if (!array || fCount != array->fCount) return false;
  for (std::uint32_t i = 0; i < std::min(fCount, array->fCount); ++i) {
    if (!AreEqual(fElements[i], array->fElements[i], walk)) return false;
  }
  return fCount == array->fCount;
}

}  // namespace NPOSObjectImpl
