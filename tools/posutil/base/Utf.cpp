// SPDX-License-Identifier: MIT
#include "base/Utf.h"

namespace PosUtil {

namespace {

unsigned char Byte(std::string_view text, std::size_t index) {
  return index < text.size() ? static_cast<unsigned char>(text[index]) : '\0';
}

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

}  // namespace

std::size_t Utf8CharacterLength(std::string_view text) {
  const unsigned char first = Byte(text, 0);
  const unsigned char second = Byte(text, 1);
  if (first < 0x80) return text.empty() ? 0 : 1;
  if (first < 0xC2 || first > 0xF4 || !IsContinuation(second)) return 0;
  if (first < 0xE0) return 2;
  // An overlong form, a surrogate, and a code past the last character.
  if ((first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F)) return 0;
  if ((first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F)) return 0;
  if (!IsContinuation(Byte(text, 2))) return 0;
  if (first < 0xF0) return 3;
  return IsContinuation(Byte(text, 3)) ? 4 : 0;
}

std::size_t Utf8Boundary(std::string_view text, std::size_t offset) {
  for (std::size_t back = 0; back < 4 && back <= offset; ++back) {
    const std::size_t length = Utf8CharacterLength(text.substr(offset - back));
    if (length > back) return offset - back;
  }
  return offset;
}

unsigned int Utf8Decode(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) return first;
  unsigned int code = first & (0x7FU >> character.size());
  for (const char byte : character.substr(1)) {
    code = code << 6 | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  return code;
}

void AppendUtf8(std::string& out, unsigned int code) {
  const auto put = [&out](unsigned int byte) { out += static_cast<char>(byte); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xC0 | code >> 6);
    put(0x80 | (code & 0x3F));
  } else {
    if (code < 0x10000) {
      put(0xE0 | code >> 12);
    } else {
      put(0xF0 | code >> 18);
      put(0x80 | (code >> 12 & 0x3F));
    }
    put(0x80 | (code >> 6 & 0x3F));
    put(0x80 | (code & 0x3F));
  }
}

bool Utf16ToUtf8(const unsigned short* units, std::string& out) {
  for (; *units; ++units) {
    unsigned int code = *units;
    if (code >= 0xD800 && code <= 0xDFFF) {
      const unsigned int low = units[1];
      if (code >= 0xDC00 || low < 0xDC00 || low > 0xDFFF) return false;
      code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
      ++units;
    }
    AppendUtf8(out, code);
  }
  return true;
}

std::basic_string<unsigned short> Utf8ToUtf16(std::string_view text) {
  std::basic_string<unsigned short> units;
  units.reserve(text.size());
  while (!text.empty()) {
    const std::string_view character = text.substr(0, Utf8CharacterLength(text));
    text.remove_prefix(character.size());
    const unsigned int code = Utf8Decode(character);
    if (code < 0x10000) {
      units += static_cast<unsigned short>(code);
    } else {
      units += static_cast<unsigned short>(0xD800 + ((code - 0x10000) >> 10));
      units += static_cast<unsigned short>(0xDC00 + ((code - 0x10000) & 0x3FF));
    }
  }
  return units;
}

}  // namespace PosUtil
