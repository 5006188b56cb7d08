#include "posimpl/objects/Dict.h"

#include "posimpl/base/NestingGuard.h"

namespace NPOSObjectImpl {

namespace {

const CPOSObject* ValueOf(const DictEntry* entry) noexcept {
  return entry ? &entry->Value() : nullptr;
}

}  // namespace

const CPOSObject* Dict::Find(std::string_view key) const noexcept {
  return ValueOf(fEntries.Find(SortableText(key)));
}

const CPOSObject* Dict::Find(const SortableStringAtom& key) const noexcept {
  return ValueOf(fEntries.Find(key));
}

CPOSObject Dict::Get(const char* key, bool noThrow) const {
  if (const CPOSObject* value = Find(key)) return *value;
  if (!noThrow) throw POSException("Dict::Get lookup failed");
  return {};
}

void Dict::Remove(std::string_view key) noexcept { fEntries.Remove(SortableText(key)); }

BaseObject* Dict::Clone() {
  const NestingGuard guard;
  std::unique_ptr<Dict> clone(new Dict);
  DictEntry* last = nullptr;
  for (const DictEntry* entry = fEntries.First(); entry; entry = DictTree::Next(entry)) {
    std::unique_ptr<DictEntry> copy(new DictEntry(entry->GetKey(), CloneOf(entry->Value())));
    last = clone->fEntries.InsertLast(last, std::move(copy));
  }
  return clone.release();
}

// Both in the order of their keys, so one walk finds every key's counterpart.
bool Dict::IsEqual(const BaseObject& other) const {
  const NestingGuard guard;
  const Dict* dict = As(&other);
  if (!dict) return false;
  const DictEntry* theirs = dict->fEntries.First();
  for (const DictEntry* ours = fEntries.First(); ours; ours = DictTree::Next(ours)) {
    int order = 1;
    while (theirs && (order = SortableStringAtom::Compare(ours->GetKey(), theirs->GetKey())) > 0) {
      theirs = DictTree::Next(theirs);
    }
    if (order != 0 || !AreEqual(ours->Value(), theirs->Value())) return false;
  }
  return true;
}

}  // namespace NPOSObjectImpl
