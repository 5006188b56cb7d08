// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string_view>

#include "kap/KAPMemory.h"
#include "posimpl/base/HoldingObject.h"
#include "posimpl/base/ObjectKind.h"
#include "posimpl/base/SortableStringAtom.h"
#include "posimpl/base/redblack_tree.h"

namespace NPOSObjectImpl {

// A key and its value, in one block of host memory.
class DictEntry : public NPOSImpl::redblack_node, public KAP_T_MT::KAPHostAllocated {
 public:
  DictEntry(SortableStringAtom key, CPOSObject value) noexcept
      : fKey(std::move(key)), fValue(std::move(value)) {}

  const SortableStringAtom& GetKey() const noexcept { return fKey; }
  CPOSObject& Value() noexcept { return fValue; }
  POSObject* Value() const noexcept { return fValue.Handle(); }

  template <class Key>
  static int Compare(const Key& key, const DictEntry& entry) noexcept {
    return SortableStringAtom::Compare(key, entry.fKey);
  }

 private:
  SortableStringAtom fKey;
  CPOSObject fValue;
};

using DictTree = NPOSImpl::redblack_tree<DictEntry>;

// A map from texts to property objects, in the byte order of the texts. Changes swap first and
// release last, since a release may call back.
class Dict final : public TObjectKind<Dict, HoldingObject> {
 public:
  static constexpr POSType kType = KAP_T_MT::kPOSDict;
  static constexpr const char* kNotInstance = "instance was not an POSDict";

  Dict() noexcept = default;
  ~Dict() override;

  BaseObject* Clone(Walk& walk) override;

  // Every entry of this dictionary must have its equal in the other one. What only the other one
  // has does not count: deliberate, a dictionary equals its superset.
  bool IsEqual(const BaseObject& other, Walk& walk) const override;

  // The value, borrowed; null when there is none.
  POSObject* Find(std::string_view key) const noexcept;
  POSObject* Find(const SortableStringAtom& key) const noexcept;
  // The value with a new reference. Absent: null if `noThrow`, else POSException "Dict::Get lookup
  // failed".
  POSObject* Get(const char* key, bool noThrow) const {
    POSObject* const value = Find(key);
    if (!value && !noThrow) throw POSException("Dict::Get lookup failed");
    return AddRef(value);
  }

  // Sets the value of a key. A key that is there keeps its atom; for a new one `makeKey` makes the
  // atom of the text. What can fail comes before the first change: in the caller "AddRef" of the
  // value and "GetCString" of the key; here, for a new key, "Alloc" of the entry, then "AddRef" and
  // "GetCString" of the key's atom (`makeKey`). A failure leaves the dictionary as it was.
  template <class MakeKey>
  void Put(const char* text, MakeKey makeKey, CPOSObject value) {
    const SortableText key(text);
    const DictTree::Position position = fEntries.FindPosition(key);
    if (position.found) {
      std::swap(position.found->Value(), value);
    } else {
      fEntries.InsertAt(position,
                        std::unique_ptr<DictEntry>(new DictEntry(
                            SortableStringAtom(makeKey(), key.Prefix()), std::move(value))));
    }
  }
  void Remove(std::string_view key) noexcept;  // no-op when it is absent

  const DictTree& Entries() const noexcept { return fEntries; }

 private:
  DictEntry* CloneKept(const DictEntry*& entry, Walk& walk) const;
  bool IsKeptEqual(const DictEntry*& ours, const Dict& dict, const DictEntry*& theirs,
                   Walk& walk) const;

  DictTree fEntries;
};

}  // namespace NPOSObjectImpl
