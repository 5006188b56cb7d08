// SPDX-License-Identifier: MIT
#include "commands/values/Path.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "base/Failure.h"
#include "base/Printable.h"

namespace PosUtil {

namespace {

constexpr std::string_view kDigits = "0123456789";

bool IsDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of(kDigits) == std::string_view::npos;
}

std::size_t IndexOf(std::string_view digits) {
  std::size_t index = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), index);
  return result.ec == std::errc() ? index : kNoIndex;
}

std::size_t PointerIndex(std::string_view text, std::size_t count) {
  if (text == "-") return count;
  const bool isIndex = IsDigits(text) && (text.size() == 1 || text[0] != '0');
  return isIndex ? IndexOf(text) : kNoIndex;
}

// Decodes "~0" and "~1". Returns false for another "~".
bool Unescape(std::string_view token, std::string& out) {
  for (std::size_t i = 0; i < token.size(); ++i) {
    if (token[i] != '~') {
      out += token[i];
      continue;
    }
    const char code = ++i < token.size() ? token[i] : '\0';
    if (code != '0' && code != '1') return false;
    out += code == '0' ? '~' : '/';
  }
  return true;
}

}  // namespace

Path::Path(std::string text, bool isPointer)
    : fText(std::move(text)), fIsPointer(isPointer || fText.starts_with('/')) {
  fIsPointer ? ParsePointer() : ParseDeep();
}

void Path::ParsePointer() {
  std::string_view rest = fText;
  fIsWellFormed = rest.empty() || rest[0] == '/';
  while (fIsWellFormed && !rest.empty()) {
    rest.remove_prefix(1);
    const std::string_view token = rest.substr(0, rest.find('/'));
    rest.remove_prefix(token.size());
    std::string key;
    fIsWellFormed = Unescape(token, key);
    fSteps.push_back({Step::kEither, std::move(key)});
  }
}

void Path::ParseDeep() {
  std::string_view rest = fText;
  // The point of the first step may be left out; an index at the start has none.
  bool isKey = !rest.starts_with('[');
  if (rest.starts_with('.')) rest.remove_prefix(1);
  for (;;) {
    if (isKey) {
      const std::string_view key = rest.substr(0, rest.find_first_of(".["));
      fSteps.push_back({Step::kKey, std::string(key)});
      rest.remove_prefix(key.size());
    }
    if (rest.empty()) return;
    isKey = rest[0] == '.';
    rest.remove_prefix(1);
    if (isKey) continue;
    const std::size_t length = std::min(rest.find(']'), rest.size());
    fSteps.push_back({Step::kIndex, std::string(rest.substr(0, length))});
    const bool isClosed = length < rest.size();
    rest.remove_prefix(isClosed ? length + 1 : length);
    const bool mayFollow = rest.empty() || rest[0] == '.' || rest[0] == '[';
    fIsWellFormed = isClosed && mayFollow && IsDigits(fSteps.back().fText);
    if (!fIsWellFormed) return;
  }
}

std::vector<Path::Step> Path::StepsFrom(bool isDict) const {
  std::vector<Step> steps = fSteps;
  if (fIsPointer) return steps;
  if (isDict && steps.front().fKind == Step::kIndex) {
    steps.insert(steps.begin(), {Step::kKey, ""});
  } else if (!isDict && fText.empty()) {
    steps.clear();
  }
  return steps;
}

void RequireWellFormed(const Path& path) {
  if (path.IsWellFormed()) return;
  throw Failure("malformed path \"" + Printable(path.Text()) + "\"", kExitUsage);
}

std::size_t IndexIn(const Path::Step& step, std::size_t count) {
  if (step.fKind == Path::Step::kEither) return PointerIndex(step.fText, count);
  return step.fKind == Path::Step::kIndex ? IndexOf(step.fText) : kNoIndex;
}

}  // namespace PosUtil
