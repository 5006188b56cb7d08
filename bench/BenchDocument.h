// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "BenchHost.h"

namespace Bench {

// One logical document in both notations. The count includes arrays and dictionaries at every
// level, but not keys.
struct Document {
  std::string fText;
  std::string fJson;
  std::int64_t fCount = 0;
};

enum class Content {
  kIntegers,  // up to nine digits
  kReals,     // up to six digits, a point, up to six digits
  kStrings,   // all different, 4 to 16 letters
  kWords,     // a thousand different ones, 4 to 12 letters
  kRecords,   // dictionaries of 4 to 6 members, one of them an array
};

// An array of about `count` values. The same arguments return the same document, which lives until
// the program ends: Google Benchmark calls a benchmark anew for each repetition, and making a
// document of a million values takes longer than parsing it. Not thread-safe.
const Document& GetDocument(Content content, std::int64_t count);

Reference Parsed(const Document& document);

}  // namespace Bench
