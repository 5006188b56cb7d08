#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "BenchHost.h"

namespace Bench {

// One logical document in both notations. Its values are counted all the way down, arrays and
// dictionaries included, keys not.
struct Document {
  std::string fText;
  std::string fJson;
  std::int64_t fCount = 0;
};

enum class Content {
  kIntegers,  // up to nine digits
  kReals,     // up to six digits, a point, up to six digits
  kStrings,   // each different from the others, 4 to 16 letters
  kWords,     // out of a thousand words, 4 to 12 letters
  kRecords,   // dictionaries of 4 to 6 members, one of them an array
};

// An array of about `count` values, always the same for the same arguments.
Document NewDocument(Content content, std::int64_t count);

Reference Parsed(const Document& document);

// The peer of all reading: nlohmann's parse of the document, release included, for each iteration.
void ParseJson(benchmark::State& state, const Document& document);

}  // namespace Bench
