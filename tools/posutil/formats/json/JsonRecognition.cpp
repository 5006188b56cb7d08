// SPDX-License-Identifier: MIT
// Numbers, words and brackets occur in text notation too. The first byte that only one of the two
// may have there decides: a comma, a colon, a quote or a brace is JSON, two values without a comma
// or a word that JSON does not have is not. What both may read is JSON.

#include "formats/json/JsonRecognition.h"

#include <algorithm>
#include <optional>
#include <string>

#include "formats/Token.h"
#include "formats/json/TaggedJson.h"

namespace PosUtil {

namespace {

using Recognition = Reader::Recognition;

constexpr std::string_view kSpace = " \t\r\n";

class Recognizer {
 public:
  Recognizer(std::string_view text, bool isAll) : fText(text), fIsAll(isAll) {}

  Recognition Run() {
    for (;;) {
      fAt = Skip(fText, fAt, kSpace);
      if (fAt == fText.size()) return fIsAll ? Recognition::kYes : Recognition::kPerhaps;
      if (const auto found = Step(fText[fAt])) return *found;
      if (fHasValue && fDepth == 0) return Recognition::kYes;
    }
  }

 private:
  // The recognition, if the next token decides it.
  std::optional<Recognition> Step(char byte) {
    if (std::string_view("{\"},:").find(byte) != std::string_view::npos) return Recognition::kYes;
    if (byte == ']' && fDepth > 0) {
      ++fAt;
      --fDepth;
      fHasValue = true;
      return std::nullopt;
    }
    if (fHasValue) return Recognition::kNo;
    if (byte != '[') return Scalar();
    ++fAt;
    ++fDepth;
    return std::nullopt;
  }

  std::optional<Recognition> Scalar() {
    const std::size_t end = std::min(fText.find_first_of(" \t\r\n[]{}\",:", fAt), fText.size());
    if (end == fText.size() && !fIsAll) return Recognition::kPerhaps;
    if (!IsKeptText(std::string(fText.substr(fAt, end - fAt)))) return Recognition::kNo;
    fAt = end;
    fHasValue = true;
    return std::nullopt;
  }

  const std::string_view fText;
  const bool fIsAll;
  std::size_t fAt = 0;
  std::size_t fDepth = 0;
  bool fHasValue = false;  // before the next token
};

}  // namespace

Recognition RecognizeJson(std::string_view text, bool isAll) {
  return Recognizer(text, isAll).Run();
}

}  // namespace PosUtil
