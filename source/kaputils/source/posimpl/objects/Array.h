// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>

#include "posimpl/base/HoldingObject.h"
#include "posimpl/base/ObjectKind.h"

namespace NPOSObjectImpl {

// A growable sequence of slots, each a reference to a property object or empty. A slot is a bare
// handle, so that the host's "Realloc" may move it: appending 100 000 values took 2.2 times the
// floor with copying and 1.6 with "Realloc" when that was new (bench_scalars). Changes swap first
// and release last, since a release may call back.
class Array final : public TObjectKind<Array, HoldingObject> {
 public:
  static constexpr POSType kType = KAP_T_MT::kPOSArray;
  static constexpr const char* kNotInstance = "instance was not an POSArray";

  Array() noexcept = default;
  ~Array() override;

  BaseObject* Clone(Walk& walk) override;
  bool IsEqual(const BaseObject& other, Walk& walk) const override;

  std::uint32_t Count() const noexcept { return fCount; }

  // What the slot holds, borrowed; null for an empty slot and past the end.
  POSObject* Find(std::uint64_t index) const noexcept {
    return index < fCount ? fElements[index] : nullptr;
  }
  // The same with a new reference.
  POSObject* GetAt(std::uint64_t index) const { return AddRef(Find(index)); }
  // Slots skipped over stay empty. TOQException "Math overflow exception" for an index that no
  // count can hold.
  void SetAt(std::uint64_t index, CPOSObject object);
  void Append(CPOSObject object) {
    if (fCount == fCapacity) return SetAt(fCount, std::move(object));
    fElements[fCount++] = object.Detach();
  }
  // The same for the only reference to a new object, which it takes over even when it throws.
  void AppendNew(POSObject* made) {
    if (fCount == fCapacity) return SetAt(fCount, Adopt(made));
    fElements[fCount++] = made;
  }
  void Remove(std::uint64_t index) noexcept;  // no-op past the end

  // All slots, for a walk; valid until the array changes.
  std::span<POSObject* const> Elements() const noexcept { return {fElements, fCount}; }

 private:
  // Makes room for `count` slots: 4, then twice as many. Unchanged when it throws.
  void growToHold(std::uint32_t count);

  POSObject** fElements = nullptr;  // fCapacity slots in host memory, of which fCount are set
  std::uint32_t fCapacity = 0;
  std::uint32_t fCount = 0;
};

}  // namespace NPOSObjectImpl
