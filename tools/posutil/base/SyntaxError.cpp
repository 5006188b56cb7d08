#include "base/SyntaxError.h"

#include <algorithm>

#include "base/Printable.h"
#include "base/Utf.h"

namespace PosUtil {

namespace {

constexpr std::size_t kBytesBefore = 50;  // the most that an excerpt shows before the caret
constexpr std::size_t kBytesAfter = 30;

std::size_t CountCharacters(std::string_view text) {
  std::size_t count = 0;
  while (!text.empty()) {
    text.remove_prefix(std::max<std::size_t>(Utf8CharacterLength(text), 1));
    ++count;
  }
  return count;
}

// The same number of characters, each of them visible.
std::string Shown(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const std::size_t length = Utf8CharacterLength(text);
    const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
    text.remove_prefix(character.size());
    std::string printable;
    AppendPrintable(printable, character);
    out += printable == character ? printable : character == "\t" ? " " : "?";
  }
  return out;
}

std::string Describe(const std::string& name, const TextPart& part, std::size_t offset,
                     const std::string& message) {
  const std::string_view before = part.fBytes.substr(0, offset);
  const std::size_t lineStart = before.rfind('\n') + 1;  // 0 when there is none
  std::string_view line = part.fBytes.substr(lineStart);
  line = line.substr(0, line.find('\n'));
  if (line.ends_with('\r')) line.remove_suffix(1);

  const auto linesWithin = std::count(before.begin(), before.end(), '\n');
  const std::size_t number = part.fBefore.fLines + static_cast<std::size_t>(linesWithin) + 1;
  const std::size_t column = (linesWithin == 0 ? part.fBefore.fColumns : 0) +
                             CountCharacters(before.substr(lineStart)) + 1;
  const Excerpt excerpt = ExcerptAround(line, offset - lineStart);
  return Printable(name) + ":" + std::to_string(number) + ":" + std::to_string(column) + ": " +
         message + "\n  " + excerpt.fLine + "\n  " + std::string(excerpt.fCaret, ' ') + "^";
}

}  // namespace

Excerpt ExcerptAround(std::string_view line, std::size_t offset) {
  offset = std::min(offset, line.size());
  std::size_t begin = 0;
  if (offset > kBytesBefore) begin = Utf8Boundary(line, offset - kBytesBefore);
  std::size_t end = line.size();
  if (end - offset > kBytesAfter) end = Utf8Boundary(line, offset + kBytesAfter);
  const char* const cut = "...";

  Excerpt excerpt;
  excerpt.fLine = (begin > 0 ? cut : "") + Shown(line.substr(begin, offset - begin));
  excerpt.fCaret = CountCharacters(excerpt.fLine);
  excerpt.fLine += Shown(line.substr(offset, end - offset)) + (end < line.size() ? cut : "");
  return excerpt;
}

SyntaxError::SyntaxError(const std::string& name, const TextPart& part, std::size_t offset,
                         const std::string& message)
    : Failure(Describe(name, part, std::min(offset, part.fBytes.size()), message)) {}

}  // namespace PosUtil
