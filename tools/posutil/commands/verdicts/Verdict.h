// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/TextPart.h"

namespace PosUtil {

enum class Messages : bool { kUnwanted, kWanted };

// A message of the library about a value, and what a user needs to find both sides.
struct VerdictMessage {
  std::string fText;
  std::string fFound = {};  // the value, in short; empty if the message does not need it
  std::string fPath = {};   // to the value, a JSON Pointer
  std::string fType = {};   // that the value should have
  std::optional<TextPlace> fPlace = {};
  std::optional<TextPlace> fRule = {};  // in the schema
  std::size_t fOtherAlternatives = 0;   // of a union, not explained
};

// The result of a check. A document that is not valid may have no message; a valid one has none.
struct Verdict {
  bool fIsValid = false;
  std::vector<VerdictMessage> fMessages;
  std::size_t fUnshown = 0;  // messages beyond the limit, not in the list
};

// The lines about a message, without the last line end. `name` is the name of the file, `ruleName`
// that of the schema.
std::string MessageLines(const std::string& name, const std::string& ruleName,
                         const VerdictMessage& message);

}  // namespace PosUtil
