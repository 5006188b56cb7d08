#include "posimpl/objects/Dict.h"

#include <optional>

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

Dict::~Dict() {
  ReleaseOfHeld release;
  fEntries.Clear([&](const DictEntry& entry) { release.Expect(entry.Value()); });
}

void Dict::Remove(std::string_view key) noexcept { fEntries.Remove(SortableText(key)); }

// A step of a walk that calls the values. The procedures of a value of another component may change
// the dictionary: for such a value the key is kept, and the next entry is found by it.
class Dict::Step {
 public:
  explicit Step(const DictEntry& entry) : fKey(&entry.GetKey()) {
    if (IsForeign(entry.Value())) fKey = &fKeptKey.emplace(*fKey);
  }
  Step(const Step&) = delete;
  Step& operator=(const Step&) = delete;

  const SortableStringAtom& Key() const noexcept { return *fKey; }
  bool IsKept() const noexcept { return fKeptKey.has_value(); }
  const DictEntry* Next(const Dict& dict, const DictEntry* entry) const noexcept {
    return IsKept() ? dict.fEntries.FirstAfter(*fKeptKey) : DictTree::Next(entry);
  }

 private:
  const SortableStringAtom* fKey;
  std::optional<SortableStringAtom> fKeptKey;
};

BaseObject* Dict::Clone() {
  const NestingGuard guard;
  std::unique_ptr<Dict> clone(new Dict);
  DictEntry* last = nullptr;
  for (const DictEntry* entry = fEntries.First(); entry;) {
    const Step step(*entry);
    CPOSObject value = CloneOf(entry->Value());
    std::unique_ptr<DictEntry> copy(new DictEntry(step.Key(), std::move(value)));
    last = clone->fEntries.InsertLast(last, std::move(copy));
    entry = step.Next(*this, entry);
  }
  return clone.release();
}

// Both in the order of their keys, so one walk finds every key's counterpart.
bool Dict::IsEqual(const BaseObject& other) const {
  const NestingGuard guard;
  const Dict* dict = As(&other);
  if (!dict) return false;
  const DictEntry* theirs = dict->fEntries.First();
  for (const DictEntry* ours = fEntries.First(); ours;) {
    int order = 1;
    while (theirs && (order = SortableStringAtom::Compare(ours->GetKey(), theirs->GetKey())) > 0) {
      theirs = DictTree::Next(theirs);
    }
    if (order != 0) return false;
    const Step step(*ours);
    if (!AreEqual(ours->Value(), theirs->Value())) return false;
    ours = step.Next(*this, ours);
    if (step.IsKept()) theirs = dict->fEntries.FirstAfter(step.Key());
  }
  return true;
}

}  // namespace NPOSObjectImpl
