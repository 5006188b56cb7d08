// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "formats/Handles.h"

namespace PosUtil {

// Finds the dictionaries that a writer of JSON must treat specially. Ask for them in the order of
// the document: what was found about nested ones is remembered, since "$object" in "$object" a
// million times would otherwise take hours.
class TagDetector {
 public:
  // Returns whether the dictionary, written as it is, would read as a tag. `key` is its first key.
  bool LooksLikeTag(POSDict* dict, const char* key);
  // Returns whether the dictionary is a kept value, or one that looks so and was escaped. `key` is
  // its first key.
  bool IsKept(POSDict* dict, const char* key);

 private:
  template <class IsEnd>
  bool FollowChain(POSDict* dict, const char* key, IsEnd isEnd);

  std::size_t fLeft = 0;  // how many dictionaries, one in the other, come next
  bool fAnswer = false;   // for all of them
};

}  // namespace PosUtil
