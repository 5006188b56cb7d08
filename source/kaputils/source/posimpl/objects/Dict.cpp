// SPDX-License-Identifier: MIT
#include "posimpl/objects/Dict.h"

#include "posimpl/base/NestingGuard.h"

namespace NPOSObjectImpl {

namespace {

POSObject* ValueOf(const DictEntry* entry) noexcept { return entry ? entry->Value() : nullptr; }

}  // namespace

POSObject* Dict::Find(std::string_view key) const noexcept {
  return ValueOf(fEntries.Find(SortableText(key)));
}

POSObject* Dict::Find(const SortableStringAtom& key) const noexcept {
  return ValueOf(fEntries.Find(key));
}

Dict::~Dict() {
  ReleaseOfHeld release;
  fEntries.Clear([&](const DictEntry& entry) { release.Expect(entry.Value()); });
}

void Dict::Remove(std::string_view key) noexcept { fEntries.Remove(SortableText(key)); }

// The procedures of a value of another component may change the dictionary: for such a value the
// key is kept, and the next entry is found by it. Apart from the ordinary loops, which keep nothing.
[[gnu::noinline]] DictEntry* Dict::CloneForeign(const DictEntry*& entry,
                                                NestingStack& stack) const {
  const SortableStringAtom key = entry->GetKey();
  CPOSObject value = Adopt(CloneOf(entry->Value(), stack));
  entry = fEntries.FirstAfter(key);
  return new DictEntry(key, std::move(value));
}

[[gnu::noinline]] bool Dict::IsForeignEqual(const DictEntry*& ours, const Dict& dict,
                                            const DictEntry*& theirs, NestingStack& stack) const {
  const SortableStringAtom key = ours->GetKey();
  const bool equal = AreEqual(ours->Value(), theirs->Value(), stack);
  ours = fEntries.FirstAfter(key);
  theirs = dict.fEntries.FirstAfter(key);
  return equal;
}

BaseObject* Dict::Clone(NestingStack& stack) {
  const NestingGuard guard(stack);
  std::unique_ptr<Dict> clone(new Dict);
  DictEntry* last = nullptr;
  for (const DictEntry* entry = fEntries.First(); entry;) {
    std::unique_ptr<DictEntry> copy;
    if (IsForeign(entry->Value())) [[unlikely]] {
      copy.reset(CloneForeign(entry, stack));
    } else {
      copy = std::make_unique<DictEntry>(entry->GetKey(), Adopt(CloneOf(entry->Value(), stack)));
      entry = DictTree::Next(entry);
    }
    last = clone->fEntries.InsertLast(last, std::move(copy));
  }
  return clone.release();
}

// Both in the order of their keys, so one walk finds every key's counterpart.
bool Dict::IsEqual(const BaseObject& other, NestingStack& stack) const {
  const NestingGuard guard(stack);
  const Dict* dict = As(&other);
  if (!dict) return false;
  const DictEntry* theirs = dict->fEntries.First();
  for (const DictEntry* ours = fEntries.First(); ours;) {
    int order = 1;
    while (theirs && (order = SortableStringAtom::Compare(ours->GetKey(), theirs->GetKey())) > 0) {
      theirs = DictTree::Next(theirs);
    }
    if (order != 0) return false;
    if (IsForeign(ours->Value())) [[unlikely]] {
      if (!IsForeignEqual(ours, *dict, theirs, stack)) return false;
    } else {
      if (!AreEqual(ours->Value(), theirs->Value(), stack)) return false;
      ours = DictTree::Next(ours);
      theirs = DictTree::Next(theirs);
    }
  }
  return true;
}

}  // namespace NPOSObjectImpl
