// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "formats/Handles.h"

namespace PosUtil {

// Values that JSON does not have are objects with exactly these members, all of them strings:
//   {"$unicode": "text"}                      a Unicode string
//   {"$binary": "type", "base64": "AAEC"}     binary data
// A dictionary that would look so in JSON is the value of one more object:
//   {"$object": {"$unicode": "text"}}         a dictionary
// and so is one that would look like that. Any other object is an ordinary dictionary.
//
// With --loss=keep, JSON values that property objects do not have are dictionaries with exactly
// this member:
//   < ($json) (true) >                        the JSON value true
// and an object that would look so as a dictionary is the value of one more "$json".
inline constexpr char kUnicodeTag[] = "$unicode";
inline constexpr char kBinaryTag[] = "$binary";
inline constexpr char kBase64Member[] = "base64";
inline constexpr char kObjectTag[] = "$object";
inline constexpr char kJsonTag[] = "$json";

// The tag that an object may be, as far as its members so far show.
enum class TagForm : unsigned char {
  kNone,  // an ordinary dictionary
  kEmpty,
  kUnicode,
  kBinary,  // without its other member
  kBase64,
  kBinaryWithBase64,
  kObject,
  kJson,
};

// The form of an object after one more member of this name.
TagForm NextForm(TagForm form, std::string_view key);

// The values of objects that have all members of the form. The second returns nothing if the text
// is not base64.
Handle MakeUnicodeString(std::string_view text);
std::optional<Handle> MakeBinData(const char* type, std::string_view base64);

// Returns whether the text is that of a value that can be kept: a JSON number, true, false or null.
// A zero byte follows the text.
bool IsKeptText(std::string_view text);

}  // namespace PosUtil
