// SPDX-License-Identifier: MIT
#include "formats/json/TaggedJson.h"

#include <vector>

#include "base/Utf.h"
#include "base/ValueError.h"
#include "formats/json/Base64.h"
#include "formats/json/JsonNumber.h"

namespace PosUtil {

TagForm NextForm(TagForm form, std::string_view key) {
  if (form == TagForm::kBinary && key == kBase64Member) return TagForm::kBinaryWithBase64;
  if (form == TagForm::kBase64 && key == kBinaryTag) return TagForm::kBinaryWithBase64;
  if (form != TagForm::kEmpty) return TagForm::kNone;
  if (key == kBase64Member) return TagForm::kBase64;
  if (!key.starts_with('$')) return TagForm::kNone;
  if (key == kUnicodeTag) return TagForm::kUnicode;
  if (key == kBinaryTag) return TagForm::kBinary;
  if (key == kObjectTag) return TagForm::kObject;
  if (key == kJsonTag) return TagForm::kJson;
  return TagForm::kNone;
}

Handle MakeUnicodeString(std::string_view text) {
  return Owned(UnicodeStrings::Call<"NewPOSUnicodeString">(Utf8ToUtf16(text).c_str()));
}

std::optional<Handle> MakeBinData(const char* type, std::string_view base64) {
  std::vector<unsigned char> data;
  if (!Base64Decode(base64, data)) return std::nullopt;
  return Owned(BinDatas::Call<"NewPOSBinData">(type, static_cast<const unsigned char*>(data.data()),
                                               static_cast<unsigned long>(data.size())));
}

bool IsKeptText(std::string_view text) {
  if (text == "true" || text == "false" || text == "null") return true;
  const JsonNumber number(text.data());
  return number.fIsValid && number.fEnd == text.data() + text.size();
}

}  // namespace PosUtil
