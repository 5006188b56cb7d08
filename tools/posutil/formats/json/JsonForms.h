#pragma once

#include <string_view>

namespace PosUtil {

// What JSON has no values for is written as an object with these members:
//   {"$unicode": "text"}                        a Unicode string
//   {"$binary": "type", "base64": "AAEC"}       binary data
inline constexpr char kUnicodeTag[] = "$unicode";
inline constexpr char kBinaryTag[] = "$binary";
inline constexpr char kBase64Member[] = "base64";

inline bool IsJsonTag(std::string_view key) {
  return key.starts_with('$') && (key == kUnicodeTag || key == kBinaryTag);
}

inline constexpr char kTagMisused[] =
    R"(members called "$unicode" or "$binary" stand for values that JSON does not have)";

}  // namespace PosUtil
