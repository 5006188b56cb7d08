// SPDX-License-Identifier: MIT
#include "formats/json/JsonText.h"

#include <bit>
#include <charconv>
#include <cstring>
#include <string_view>

#include "base/HexText.h"
#include "base/Utf.h"
#include "base/ValueError.h"
#include "formats/json/PlainText.h"

namespace PosUtil {

namespace {

bool IsAscii(char character) { return static_cast<unsigned char>(character) < 0x80; }

bool IsPlain(char character) {
  return character >= ' ' && IsAscii(character) && character != '"' && character != '\\';
}

const char* SkipPlain(const char* text, const char* end) {
  for (; end - text >= 16; text += 16) {
    if (const unsigned unusual = UnusualBytes(text)) return text + std::countr_zero(unusual);
  }
  while (text < end && IsPlain(*text)) ++text;
  return text;
}

// The length of the character. The final zero byte ends the look-ahead.
std::size_t CharacterLength(const char* text) {
  std::size_t available = 1;
  while (available < 4 && text[available] != '\0') ++available;
  const std::size_t length = Utf8CharacterLength({text, available});
  if (length == 0) throw ValueError("invalid UTF-8");
  return length;
}

void PutEscaped(Output& out, char character) {
  static constexpr char kShort[] = "\"\"\\\\\bb\ff\nn\rr\tt";
  for (const char* pair = kShort; *pair; pair += 2) {
    if (*pair == character) {
      out.Put('\\');
      out.Put(pair[1]);
      return;
    }
  }
  const auto code = static_cast<unsigned char>(character);
  out.Put("\\u00");
  out.Put(HexText(code).View());
}

unsigned Unit(std::string_view text, std::size_t at) {
  unsigned unit = 0;
  if (at + 4 <= text.size()) std::from_chars(text.data() + at, text.data() + at + 4, unit, 16);
  return unit;
}

}  // namespace

char JsonEscape(char letter) {
  static constexpr char kPairs[] = "\"\"\\\\//b\bf\fn\nr\rt\t";
  for (const char* pair = kPairs; *pair; pair += 2) {
    if (*pair == letter) return pair[1];
  }
  return '\0';
}

std::string JsonUnescaped(std::string_view quoted) {
  std::string out;
  for (std::size_t i = 1; i + 1 < quoted.size(); ++i) {
    if (quoted[i] != '\\') {
      out += quoted[i];
    } else if (quoted[++i] != 'u') {
      out += JsonEscape(quoted[i]);
    } else {
      unsigned code = Unit(quoted, i + 1);
      i += 4;
      if (code >= 0xD800 && code <= 0xDBFF) {
        code = 0x10000 + ((code - 0xD800) << 10) + (Unit(quoted, i + 3) - 0xDC00);
        i += 6;
      }
      AppendUtf8(out, code);
    }
  }
  return out;
}

void PutJsonString(Output& out, const char* text) {
  out.Put('"');
  const char* const end = text + std::strlen(text);
  for (const char* rest = text;;) {
    rest = SkipPlain(rest, end);
    if (!IsAscii(*rest)) {
      rest += CharacterLength(rest);
      continue;
    }
    out.Put(std::string_view(text, static_cast<std::size_t>(rest - text)));
    if (rest == end) break;
    PutEscaped(out, *rest++);
    text = rest;
  }
  out.Put('"');
}

}  // namespace PosUtil
