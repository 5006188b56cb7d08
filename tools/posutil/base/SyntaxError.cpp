// SPDX-License-Identifier: MIT
#include "base/SyntaxError.h"

#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale is POSIX
#include <wchar.h>   // NOLINT(modernize-deprecated-headers): wcwidth is POSIX

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

// The widths of characters, whatever the locale of the user. The program itself sets none.
class Widths {
 public:
  Widths() : fLocale(::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
    if (fLocale) fBefore = ::uselocale(fLocale);
  }
  Widths(const Widths&) = delete;
  Widths& operator=(const Widths&) = delete;
  ~Widths() {
    if (!fLocale) return;
    ::uselocale(fBefore);
    ::freelocale(fLocale);
  }

  // In columns of a terminal. A system without this locale counts each character as one.
  std::size_t Of(unsigned int code) const {
    if (!fLocale) return 1;
    const int width = ::wcwidth(static_cast<wchar_t>(code));
    if (width >= 0) return static_cast<std::size_t>(width);
    // Newer than the system: emoji are wide.
    return code >= 0x1F300 && code <= 0x1FAFF ? 2 : 1;
  }

 private:
  locale_t fLocale;
  locale_t fBefore = nullptr;
};

// How many columns of a terminal the text takes, which has only printable characters.
std::size_t Width(std::string_view text) {
  const Widths widths;
  std::size_t width = 0;
  while (!text.empty()) {
    const std::string_view character = text.substr(0, Utf8CharacterLength(text));
    text.remove_prefix(character.size());
    width += widths.Of(Utf8Decode(character));
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
