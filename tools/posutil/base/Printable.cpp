// SPDX-License-Identifier: MIT
#include "base/Printable.h"

#include "base/HexText.h"
#include "base/Utf.h"

namespace PosUtil {

namespace {

constexpr std::size_t kLongest = 400;

bool IsControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  // U+0080 to U+009F are control characters too.
  return first < 0x20 || first == 0x7F ||
         (first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0);
}

// Characters that change the order or the lines of the text around them.
bool IsLayout(unsigned code) {
  return code == 0x061C || code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
         (code >= 0x2066 && code <= 0x2069) || code == 0xFEFF;
}

// The length of the leading part that every form shows as it is.
std::size_t PlainLength(std::string_view text) {
  std::size_t length = 0;
  while (length < text.size() && text[length] >= ' ' && text[length] < 0x7F &&
         text[length] != '"' && text[length] != '\\') {
    ++length;
  }
  return length;
}

}  // namespace

bool IsUnsafe(std::string_view character) {
  return IsControl(character) || IsLayout(Utf8Decode(character));
}

void AppendPrintable(std::string& out, std::string_view text, Quotes quotes) {
  for (;;) {
    const std::size_t plain = PlainLength(text);
    out += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) return;
    const std::size_t length = Utf8CharacterLength(text);
    const std::string_view character = text.substr(0, length ? length : 1);
    text.remove_prefix(character.size());
    if (length == 0 || IsControl(character)) {
      for (const char byte : character) {
        (out += "\\x") += HexText(static_cast<unsigned char>(byte)).View();
      }
      continue;
    }
    if (const unsigned code = Utf8Decode(character); IsLayout(code)) {
      (out += "\\u") += HexText(static_cast<unsigned short>(code)).View();
      continue;
    }
    const bool isQuote = character[0] == '"' || character[0] == '\\';
    if (isQuote && quotes == Quotes::kEscaped) out += '\\';
    out += character;
  }
}

std::string Printable(std::string_view text) {
  std::string out;
  if (text.size() <= kLongest) {
    AppendPrintable(out, text);
    return out;
  }
  AppendPrintable(out, text.substr(0, Utf8Boundary(text, kLongest / 2)));
  out += "...";
  AppendPrintable(out, text.substr(Utf8Boundary(text, text.size() - kLongest / 2)));
  return out;
}

}  // namespace PosUtil
