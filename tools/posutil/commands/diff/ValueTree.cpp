// SPDX-License-Identifier: MIT
#include "commands/diff/ValueTree.h"

#include <bit>
#include <cstring>
#include <functional>
#include <utility>

namespace PosUtil {

namespace {

void Mix(std::size_t& hash, std::size_t value) {
  hash = (hash ^ value) * 0x9E3779B97F4A7C15U;
  hash ^= hash >> 32;
}

std::size_t HashOf(std::string_view text) { return std::hash<std::string_view>()(text); }

// Calls `use` with each value in a container, until it returns false. Returns whether it never has.
template <class Use>
bool ForEachChild(const ValueTree& tree, std::uint32_t node, Use use) {
  for (std::uint32_t i = node + 1; i < tree[node].fEnd; i = tree[i].fEnd) {
    if (!use(tree[i])) return false;
  }
  return true;
}

std::size_t HashOf(const ValueReference& value) {
  std::size_t hash = HashOf(value.fBytes);
  Mix(hash, static_cast<std::size_t>(value.fKind));
  if (!value.fTree) {
    Mix(hash, value.fBits);
    return hash;
  }
  ForEachChild(*value.fTree, static_cast<std::uint32_t>(value.fBits),
               [&](const ValueTree::Node& child) {
                 if (child.fKey) Mix(hash, HashOf(std::string_view(child.fKey)));
                 Mix(hash, child.fNumber);
                 return true;
               });
  return hash;
}

// The values in two containers of a kind have their numbers already.
bool HaveSameValues(const ValueReference& a, const ValueReference& b) {
  const ValueTree& other = *b.fTree;
  const auto node = static_cast<std::uint32_t>(b.fBits);
  std::uint32_t next = node + 1;
  const bool isSame = ForEachChild(
      *a.fTree, static_cast<std::uint32_t>(a.fBits), [&](const ValueTree::Node& child) {
        if (next == other[node].fEnd) return false;
        const ValueTree::Node& twin = other[std::exchange(next, other[next].fEnd)];
        return child.fNumber == twin.fNumber &&
               (!child.fKey || std::strcmp(child.fKey, twin.fKey) == 0);
      });
  return isSame && next == other[node].fEnd;
}

bool IsSame(const ValueReference& a, const ValueReference& b) {
  if (a.fKind != b.fKind) return false;
  if (a.fTree) return HaveSameValues(a, b);
  return a.fBits == b.fBits && a.fBytes == b.fBytes && std::strcmp(a.fType, b.fType) == 0;
}

}  // namespace

std::uint32_t ValueNumbers::Of(const ValueReference& value) {
  const std::size_t hash = HashOf(value);
  if (2 * fEntries.size() >= fSlots.size()) Grow();
  std::uint32_t& slot = SlotFor(value, hash);
  if (slot == kFree) {
    slot = static_cast<std::uint32_t>(fEntries.size());
    fEntries.push_back({value, hash});
  }
  return slot;
}

// The slot of an equal value, or a free one.
std::uint32_t& ValueNumbers::SlotFor(const ValueReference& value, std::size_t hash) {
  for (std::size_t i = hash;; ++i) {
    std::uint32_t& slot = fSlots[i % fSlots.size()];
    if (slot == kFree) return slot;
    const Entry& entry = fEntries[slot];
    if (entry.fHash == hash && IsSame(entry.fValue, value)) return slot;
  }
}

void ValueNumbers::Grow() {
  const std::size_t size = 2 * fSlots.size();
  fSlots.assign(size, kFree);
  for (std::uint32_t number = 0; number < fEntries.size(); ++number) {
    std::size_t i = fEntries[number].fHash;
    while (fSlots[i % size] != kFree) ++i;
    fSlots[i % size] = number;
  }
}

ValueTree::ValueTree(const KAP_T_MT::CPOSObject& object, const std::string& name, bool hasKept,
                     ValueNumbers& numbers)
    : fNumbers(numbers), fHasKept(hasKept) {
  Visit(object, name, *this);
}

std::vector<std::uint32_t> ValueTree::ChildrenOf(std::uint32_t node) const {
  std::vector<std::uint32_t> children;
  for (std::uint32_t i = node + 1; i < fNodes[node].fEnd; i = fNodes[i].fEnd) children.push_back(i);
  return children;
}

void ValueTree::At(const Place& place) {
  POSDict* const dict = std::exchange(fNewDict, nullptr);
  const bool isEscaped = std::exchange(fIsEscaped, false);
  fIsKept = fHasKept && dict && fKept.IsKept(dict, place.fKey) && !isEscaped;
  fKey = place.fKey;
}

void ValueTree::String(const char* text) {
  if (std::exchange(fIsKept, false)) {
    Open& open = fOpen.back();
    open.fKind = ValueReference::kKept;
    fNodes[open.fNode].fKind = Node::kScalar;
  }
  AddScalar({.fKind = ValueReference::kString, .fBytes = text});
}

void ValueTree::Number(double value) {
  if (value == 0) value = 0;  // -0.0 is the same number
  AddScalar({.fKind = ValueReference::kNumber, .fBits = std::bit_cast<std::uint64_t>(value)});
}

void ValueTree::UnicodeString(const unsigned short* units) {
  const std::basic_string_view<unsigned short> text(units);
  AddScalar({.fKind = ValueReference::kUnicode,
             .fBytes = {reinterpret_cast<const char*>(units), text.size() * sizeof *units}});
}

void ValueTree::BinData(const char* typeName, const unsigned char* data, std::size_t size) {
  AddScalar({.fKind = ValueReference::kBinary,
             .fBytes = {reinterpret_cast<const char*>(data), size},
             .fType = typeName});
}

void ValueTree::RawPointer(const void* pointer) {
  AddScalar(
      {.fKind = ValueReference::kPointer, .fBits = reinterpret_cast<std::uintptr_t>(pointer)});
}

void ValueTree::AddScalar(const ValueReference& value) {
  const auto node = static_cast<std::uint32_t>(fNodes.size());
  fNodes.push_back({fNumbers.Of(value), node + 1, fKey, Node::kScalar});
}

void ValueTree::Begin(Node::Kind kind) {
  fOpen.push_back({static_cast<std::uint32_t>(fNodes.size()),
                   kind == Node::kArray ? ValueReference::kArray : ValueReference::kDict});
  fNodes.push_back({0, 0, fKey, kind});
}

void ValueTree::End() {
  const Open open = fOpen.back();
  fOpen.pop_back();
  Node& node = fNodes[open.fNode];
  node.fEnd = static_cast<std::uint32_t>(fNodes.size());
  node.fNumber = fNumbers.Of({.fKind = open.fKind, .fBits = open.fNode, .fTree = this});
}

// A dictionary in one that looks kept: that one is an escape, and its node that of the object.
void ValueTree::BeginDict(POSDict* dict) {
  fNewDict = dict;
  fIsEscaped = std::exchange(fIsKept, false);
  if (fIsEscaped) {
    fOpen.back().fIsEscape = true;
  } else {
    Begin(Node::kDict);
  }
}

void ValueTree::EndDict(const Place&, std::size_t) {
  fNewDict = nullptr;
  if (!std::exchange(fOpen.back().fIsEscape, false)) End();
}

}  // namespace PosUtil
