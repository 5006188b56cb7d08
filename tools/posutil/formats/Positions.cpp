// SPDX-License-Identifier: MIT
#include "formats/Positions.h"

#include "formats/Token.h"

namespace PosUtil {

Positions::Positions(const Reader& reader, std::string_view text, std::size_t begin)
    : fReader(reader), fText(text) {
  std::vector<std::uint32_t> open;
  std::size_t at = begin;
  bool hasKey = false;
  std::size_t key = 0;
  for (;;) {
    const Token token = fReader.NextToken(fText, at);
    at = token.fEnd;
    if (token.fKind == Token::kEnd) return;
    if (token.fKind == Token::kEndDict || token.fKind == Token::kEndArray) {
      if (open.empty()) return;
      fNodes[open.back()].fLast = static_cast<std::uint32_t>(fNodes.size() - 1);
      open.pop_back();
    } else if (!open.empty() && fNodes[open.back()].fIsDict && !hasKey) {
      hasKey = true;
      key = token.fBegin;
      continue;
    } else {
      const auto index = static_cast<std::uint32_t>(fNodes.size());
      const bool isScalar = token.fKind == Token::kScalar;
      fNodes.push_back({token.fBegin, hasKey ? key : token.fBegin, index,
                        token.fKind == Token::kBeginDict, !isScalar});
      hasKey = false;
      if (!isScalar) open.push_back(index);
    }
    if (open.empty()) return;
  }
}

const Positions::Children& Positions::ChildrenOf(std::uint32_t node) {
  const auto [found, isNew] = fChildren.try_emplace(node);
  Children& children = found->second;
  if (!isNew) return children;
  for (std::uint32_t i = node + 1; i <= fNodes[node].fLast; i = fNodes[i].fLast + 1) {
    children.fInOrder.push_back(i);
    if (!fNodes[node].fIsDict) continue;
    const Token key = fReader.NextToken(fText, fNodes[i].fKey);
    // The last member of a name wins.
    children.fByKey[fReader.KeyOf(fText.substr(key.fBegin, key.fEnd - key.fBegin))] = i;
  }
  return children;
}

std::size_t Positions::Find(const ValuePath& path, Part part) {
  if (fNodes.empty()) return fText.size();
  const std::string wrapper = fReader.WrapperKey();
  std::uint32_t node = 0;
  for (const PathStep& step : path) {
    const Children* children = &ChildrenOf(node);
    if (step.fIsIndex) {
      if (step.fIndex >= children->fInOrder.size()) break;
      node = children->fInOrder[step.fIndex];
      continue;
    }
    auto found = children->fByKey.find(step.fKey);
    while (found == children->fByKey.end()) {  // perhaps one level deeper
      found = wrapper.empty() ? children->fByKey.end() : children->fByKey.find(wrapper);
      if (found == children->fByKey.end()) return fNodes[node].fBegin;
      children = &ChildrenOf(node = found->second);
      found = children->fByKey.find(step.fKey);
    }
    node = found->second;
  }
  return part == kKey ? fNodes[node].fKey : fNodes[node].fBegin;
}

}  // namespace PosUtil
