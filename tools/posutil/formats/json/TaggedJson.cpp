#include "formats/json/TaggedJson.h"

#include <vector>

#include "base/Utf.h"
#include "base/ValueError.h"
#include "formats/json/Base64.h"

namespace PosUtil {

TaggedJson TaggedJson::WithBase64(std::string_view text) {
  TaggedJson tagged;
  tagged.fBase64 = text;
  return tagged;
}

void TaggedJson::Key(std::string_view key) {
  if (key == kUnicodeTag) {
    fMember = &fUnicode;
  } else if (key == kBinaryTag) {
    fMember = &fBinaryType;
  } else if (key == kBase64Member) {
    fMember = &fBase64;
  } else {
    throw ValueError(kTagMisused);
  }
}

void TaggedJson::String(std::string_view text) { *fMember = text; }

void TaggedJson::RejectValue() const {
  throw ValueError(R"(the value of "$unicode", "$binary" or "base64" must be a string)");
}

Handle TaggedJson::Make() const {
  if (fUnicode && !fBinaryType && !fBase64) {
    return Owned(UnicodeStrings::Call<"NewPOSUnicodeString">(Utf8ToUtf16(*fUnicode).c_str()));
  }
  if (fUnicode || !fBinaryType || !fBase64) throw ValueError(kTagMisused);
  return MakeBinData();
}

Handle TaggedJson::MakeBinData() const {
  std::vector<unsigned char> data;
  if (!Base64Decode(*fBase64, data)) throw ValueError("malformed base64");
  return Owned(BinDatas::Call<"NewPOSBinData">(fBinaryType->c_str(),
                                               static_cast<const unsigned char*>(data.data()),
                                               static_cast<unsigned long>(data.size())));
}

}  // namespace PosUtil
