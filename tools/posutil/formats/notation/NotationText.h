// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "formats/Token.h"

namespace PosUtil {

// The token of text notation at or after `at`. A character that starts no token is one.
Token NextNotationToken(std::string_view text, std::size_t at);

// Returns whether a value may start with the character.
bool StartsNotation(char first);

// The text that a key stands for.
std::string NotationKey(std::string_view token);

struct NotationFault {
  std::size_t fOffset;
  std::string fMessage;
};

// Explains why the library cannot read the text. `stop` is where it stopped, for a fault that is
// not known here.
NotationFault FindNotationFault(std::string_view text, std::size_t stop);

}  // namespace PosUtil
