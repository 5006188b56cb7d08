#include "formats/json/JsonText.h"

#include <array>
#include <string_view>

#include "base/HexText.h"
#include "base/Utf.h"
#include "base/ValueError.h"

namespace PosUtil {

namespace {

// The characters that need no escape.
constexpr auto kPlain = [] {
  std::array<bool, 256> plain{};
  for (unsigned char i = 0x20; i < 0x80; ++i) plain[i] = i != '"' && i != '\\';
  return plain;
}();

bool IsPlain(char character) { return kPlain[static_cast<unsigned char>(character)]; }

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

}  // namespace

void PutJsonString(Output& out, const char* text) {
  out.Put('"');
  for (;;) {
    const char* end = text;
    while (IsPlain(*end)) ++end;
    while (static_cast<unsigned char>(*end) >= 0x80) end += CharacterLength(end);
    out.Put(std::string_view(text, static_cast<std::size_t>(end - text)));
    text = end;
    if (IsPlain(*text)) continue;
    if (*text == '\0') break;
    PutEscaped(out, *text++);
  }
  out.Put('"');
}

}  // namespace PosUtil
