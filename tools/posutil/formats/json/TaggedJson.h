#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "formats/Handles.h"

namespace PosUtil {

// Values that JSON does not have are objects with these members:
//   {"$unicode": "text"}                        a Unicode string
//   {"$binary": "type", "base64": "AAEC"}       binary data
inline constexpr char kUnicodeTag[] = "$unicode";
inline constexpr char kBinaryTag[] = "$binary";
inline constexpr char kBase64Member[] = "base64";

inline bool IsJsonTag(std::string_view key) {
  return key.starts_with('$') && (key == kUnicodeTag || key == kBinaryTag);
}

inline constexpr char kTagMisused[] =
    R"(the keys "$unicode" and "$binary" are reserved for values that JSON does not have)";

// Builds such a value from the members of its object, which arrive one by one.
// Errors: ValueError for a member or a value that does not belong there.
class TaggedJson {
 public:
  // For an object whose first member was "base64", with this value.
  static TaggedJson WithBase64(std::string_view text);

  void Key(std::string_view key);
  void String(std::string_view text);     // the value of the last key
  [[noreturn]] void RejectValue() const;  // a value that is not a string

  Handle Make() const;

 private:
  Handle MakeBinData() const;

  std::optional<std::string> fUnicode;
  std::optional<std::string> fBinaryType;
  std::optional<std::string> fBase64;
  std::optional<std::string>* fMember = nullptr;
};

}  // namespace PosUtil
