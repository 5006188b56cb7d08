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

CPOSObject* NewSlots(std::uint32_t capacity) {
  const std::size_t size = KAP_T_MT::KAPCheckedSize(capacity, sizeof(CPOSObject));
  return static_cast<CPOSObject*>(CKAPMemory::Alloc(size));
}

}  // namespace

// The slots are taken out first, and again as long as a release that calls back puts something
// in.
Array::~Array() {
  while (fElements) {
    fCount = 0;
    const std::uint32_t capacity = std::exchange(fCapacity, 0);
    CPOSObject* elements = std::exchange(fElements, nullptr);
    ReleaseOfHeld release;
    for (CPOSObject& element : std::span(elements, capacity)) {
      release.Expect(element);
      std::destroy_at(&element);
    }
    CKAPMemory::Free(elements);
  }
}

// The host's "Realloc" moves pages instead of bytes, but must not move slots, which are objects. A
// plain block that grows by it is filled in a third of the time at 100 000 values, in two thirds at
// 1 000.
void Array::growToHold(std::uint32_t count) {
  if (count <= fCapacity) return;
  const std::uint32_t capacity = CapacityFor(count, fCapacity);
  CPOSObject* elements = NewSlots(capacity);
  // From here on nothing can fail: references move, none is added or released.
  std::uninitialized_move_n(fElements, fCount, elements);
  std::uninitialized_default_construct_n(elements + fCount, capacity - fCount);
  std::destroy_n(fElements, fCapacity);
  CKAPMemory::Free(std::exchange(fElements, elements));
  fCapacity = capacity;
}

void Array::SetAt(std::uint64_t index, CPOSObject object) {
  if (index >= std::numeric_limits<std::uint32_t>::max()) KAP_T_MT::KAPThrowMathOverflow();
  const auto slot = static_cast<std::uint32_t>(index);
  growToHold(slot + 1);
  fCount = std::max(fCount, slot + 1);
  std::swap(fElements[slot], object);
}

void Array::Remove(std::uint64_t index) noexcept {
  if (index >= fCount) return;
  std::rotate(fElements + index, fElements + index + 1, fElements + fCount);
  --fCount;
  const CPOSObject removed = std::exchange(fElements[fCount], CPOSObject());
}

// Both by index: the procedures of an element of another component may change the arrays.
BaseObject* Array::Clone() {
  const NestingGuard guard;
  std::unique_ptr<Array> clone(new Array);
  clone->growToHold(fCount);
  for (std::uint32_t i = 0; i < fCount; ++i) clone->Append(CloneOf(fElements[i]));
  return clone.release();
}

bool Array::IsEqual(const BaseObject& other) const {
  const NestingGuard guard;
  const Array* array = As(&other);
  if (!array || fCount != array->fCount) return false;
  for (std::uint32_t i = 0; i < std::min(fCount, array->fCount); ++i) {
    if (!AreEqual(fElements[i], array->fElements[i])) return false;
  }
  return fCount == array->fCount;
}

}  // namespace NPOSObjectImpl
