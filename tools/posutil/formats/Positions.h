// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/ValuePath.h"
#include "formats/Format.h"

namespace PosUtil {

// The places of all values in the text of a document. The text must be readable.
class Positions {
 public:
  // `begin` is the offset of the document in `text`. The text must outlive this.
  Positions(const Reader& reader, std::string_view text, std::size_t begin);

  enum Part : bool { kValue, kKey };
  // The offset of a value, or of its key if it has one. Of a path that leads nowhere, as far as it
  // leads.
  std::size_t Find(const ValuePath& path, Part part);

 private:
  struct Node {
    std::size_t fBegin;
    std::size_t fKey;     // offset of the key; that of the value if there is none
    std::uint32_t fLast;  // index of the last node inside
    bool fIsDict;
    bool fIsContainer;
  };
  struct Children {
    std::vector<std::uint32_t> fInOrder;
    std::unordered_map<std::string, std::uint32_t> fByKey;
  };

  const Children& ChildrenOf(std::uint32_t node);

  const Reader& fReader;
  const std::string_view fText;
  std::vector<Node> fNodes;                               // in the order of the text
  std::unordered_map<std::uint32_t, Children> fChildren;  // made on demand
};

}  // namespace PosUtil
