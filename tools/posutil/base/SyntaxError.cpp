#include "base/SyntaxError.h"

#include <uniwidth.h>

#include <algorithm>

#include "base/Printable.h"
#include "base/Utf.h"

namespace PosUtil {

namespace {

constexpr std::size_t kBytesBefore = 50;  // the most that an excerpt shows before the caret
constexpr std::size_t kBytesAfter = 30;

// The text without tabs and unsafe characters.
std::string Shown(std::string_view text) {
  std::string out(text);
  std::replace(out.begin(), out.end(), '\t', ' ');
  std::string printable;
  AppendPrintable(printable, out);
  return printable;
}

// How many columns of a terminal the text takes, which has only printable characters.
std::size_t Width(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const std::string_view character = text.substr(0, Utf8CharacterLength(text));
    text.remove_prefix(character.size());
    const int columns = ::uc_width(Utf8Decode(character), "UTF-8");
    width += static_cast<std::size_t>(std::max(columns, 0));
  }
  return width;
}

std::string Describe(const std::string& name, const TextPart& part, std::size_t offset,
                     const std::string& message) {
  const std::size_t lineStart = part.fBytes.substr(0, offset).rfind('\n') + 1;  // or 0
  std::string_view line = part.fBytes.substr(lineStart);
  line = line.substr(0, line.find('\n'));
  if (line.ends_with('\r')) line.remove_suffix(1);
  const Excerpt excerpt = ExcerptAround(line, offset - lineStart);
  return NameOfPlace(name, PlaceIn(part, offset)) + ": " + message + "\n  " + excerpt.fLine +
         "\n  " + std::string(excerpt.fCaret, ' ') + "^";
}

}  // namespace

std::string NameOfPlace(const std::string& name, const TextPlace& place) {
  return Printable(name) + ":" + std::to_string(place.fLine) + ":" + std::to_string(place.fColumn);
}

Excerpt ExcerptAround(std::string_view line, std::size_t offset) {
  offset = std::min(offset, line.size());
  std::size_t begin = 0;
  if (offset > kBytesBefore) begin = Utf8Boundary(line, offset - kBytesBefore);
  std::size_t end = line.size();
  if (end - offset > kBytesAfter) end = Utf8Boundary(line, offset + kBytesAfter);
  const char* const cut = "...";

  Excerpt excerpt;
  excerpt.fLine = (begin > 0 ? cut : "") + Shown(line.substr(begin, offset - begin));
  excerpt.fCaret = Width(excerpt.fLine);
  excerpt.fLine += Shown(line.substr(offset, end - offset)) + (end < line.size() ? cut : "");
  return excerpt;
}

SyntaxError::SyntaxError(const std::string& name, const TextPart& part, std::size_t offset,
                         const std::string& message)
    : PlacedFailure(Describe(name, part, std::min(offset, part.fBytes.size()), message)) {}

}  // namespace PosUtil
