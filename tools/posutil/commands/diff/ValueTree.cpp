// SPDX-License-Identifier: MIT
#include "commands/diff/ValueTree.h"

#include <utility>

namespace PosUtil {

namespace {

std::string_view BytesOf(const auto& value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

}  // namespace

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
    open.fIdentity = "k";
    fNodes[open.fNode].fKind = Node::kScalar;
  }
  AddScalar("s", text);
}

void ValueTree::Number(double value) {
  if (value == 0) value = 0;  // -0.0 is the same number
  AddScalar("n", BytesOf(value));
}

void ValueTree::UnicodeString(const unsigned short* units) {
  const std::basic_string_view<unsigned short> text(units);
  AddScalar("u", {reinterpret_cast<const char*>(units), text.size() * sizeof *units});
}

void ValueTree::BinData(const char* typeName, const unsigned char* data, std::size_t size) {
  std::string bytes = typeName;
  bytes += '\0';
  if (size > 0) bytes.append(reinterpret_cast<const char*>(data), size);
  AddScalar("b", bytes);
}

void ValueTree::RawPointer(const void* pointer) { AddScalar("p", BytesOf(pointer)); }

void ValueTree::AddScalar(std::string_view kind, std::string_view bytes) {
  const auto node = static_cast<std::uint32_t>(fNodes.size());
  fNodes.push_back({0, node + 1, fKey, Node::kScalar});
  SetNumber(node, std::string(kind).append(bytes));
}

void ValueTree::Begin(Node::Kind kind) {
  fOpen.push_back({static_cast<std::uint32_t>(fNodes.size()), kind == Node::kArray ? "a" : "d"});
  fNodes.push_back({0, 0, fKey, kind});
}

void ValueTree::End() {
  const Open open = std::move(fOpen.back());
  fOpen.pop_back();
  fNodes[open.fNode].fEnd = static_cast<std::uint32_t>(fNodes.size());
  SetNumber(open.fNode, open.fIdentity);
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

// Gives the node its number, and adds it to the container around it.
void ValueTree::SetNumber(std::uint32_t node, const std::string& identity) {
  const std::uint32_t number = fNumbers.Of(identity);
  fNodes[node].fNumber = number;
  if (fOpen.empty()) return;
  std::string& outer = fOpen.back().fIdentity;
  if (fNodes[node].fKey) (outer += fNodes[node].fKey) += '\0';
  outer += BytesOf(number);
}

}  // namespace PosUtil
