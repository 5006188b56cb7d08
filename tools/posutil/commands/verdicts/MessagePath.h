// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "pos/POSObject.h"

namespace PosUtil {

// One context at the start of a message of the library, such as "[2]:" or "a (required, type !=
// T):".
struct MessageStep {
  enum Kind { kIndex, kKey, kValue, kRequired, kOptional, kUnion, kAlternative, kIntersection };

  Kind fKind;
  std::size_t fIndex = 0;
  std::string fName = {};  // of the member
  std::string fType = {};  // that is checked from here on
};

// A message of the library, taken apart.
struct ParsedMessage {
  std::string fText;  // as a whole
  std::vector<MessageStep> fSteps = {};
  std::string fRest = {};  // what is wrong, after the contexts
  bool fIsCut = false;     // the steps are the complete ones; fRest has no meaning
  std::size_t fBase = 0;   // the number of first steps that the text does not have
};

// The library cuts a longer message.
inline constexpr std::size_t kLongestMessage = 1023;

// Names of members may hold any text, so the parser asks the checked object where a name ends.
ParsedMessage ParseMessage(const std::string& text, const KAP_T_MT::CPOSObject& object);

bool IsSameStep(const MessageStep& a, const MessageStep& b);

}  // namespace PosUtil
