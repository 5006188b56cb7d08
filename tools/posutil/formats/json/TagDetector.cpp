// SPDX-License-Identifier: MIT
#include "formats/json/TagDetector.h"

#include <cstring>
#include <string_view>

#include "formats/json/Base64.h"
#include "formats/json/TaggedJson.h"
#include "kap/KAPStringAtom.h"

namespace PosUtil {

namespace {

using KAP_T_MT::CKAPStringAtom;

// The only member of this name, or nothing if there are others.
Handle OnlyValue(POSDict* dict, std::string_view key) {
  const Handle iterator = Owned(DictIterators::Call<"NewPOSDictIterator">(dict));
  POSDictIterator* const i = iterator.Handle();
  if (DictIterators::Call<"IsDone">(i) || NotNull(DictIterators::Call<"CurKey">(i)) != key) {
    return {};
  }
  DictIterators::Call<"Next">(i);
  if (!DictIterators::Call<"IsDone">(i)) return {};
  return Owned(Dicts::Call<"Get">(dict, CKAPStringAtom(key.data()).Handle()));
}

bool IsString(const Handle& value) {
  return !value.IsNull() && Strings::Call<"IsPOSString">(value.Handle());
}

const char* Text(const Handle& string) { return NotNull(Strings::Call<"Get">(string.Handle())); }

// Returns whether it has the members of binary data, and no other.
bool IsBinary(POSDict* dict) {
  const Handle iterator = Owned(DictIterators::Call<"NewPOSDictIterator">(dict));
  POSDictIterator* const i = iterator.Handle();
  for (const char* const key : {kBinaryTag, kBase64Member}) {
    if (DictIterators::Call<"IsDone">(i)) return false;
    if (std::strcmp(NotNull(DictIterators::Call<"CurKey">(i)), key) != 0) return false;
    const Handle value = Owned(Dicts::Call<"Get">(dict, CKAPStringAtom(key).Handle()));
    if (!IsString(value)) return false;
    std::vector<unsigned char> data;
    if (key == kBase64Member && !Base64Decode(Text(value), data)) return false;
    DictIterators::Call<"Next">(i);
  }
  return DictIterators::Call<"IsDone">(i);
}

bool IsTagItself(POSDict* dict) { return IsString(OnlyValue(dict, kUnicodeTag)) || IsBinary(dict); }

}  // namespace

// What holds for the only value of a dictionary holds for the dictionary, if that is one too.
template <class IsEnd>
bool TagDetector::FollowChain(POSDict* dict, const char* key, IsEnd isEnd) {
  if (fLeft > 0) {
    --fLeft;
    return fAnswer;
  }
  Handle inner(dict);
  for (;;) {
    Handle value = OnlyValue(inner.Handle(), key);
    if (value.IsNull()) return fAnswer = false;
    if (!Dicts::Call<"IsPOSDict">(value.Handle())) return fAnswer = isEnd(value);
    if (OnlyValue(value.Handle(), key).IsNull()) return fAnswer = isEnd(value);
    ++fLeft;
    inner = std::move(value);
  }
}

bool TagDetector::LooksLikeTag(POSDict* dict, const char* key) {
  if (std::strcmp(key, kObjectTag) != 0) {
    fLeft = 0;
    return IsTagItself(dict);
  }
  return FollowChain(dict, kObjectTag, [](const Handle& end) {
    if (Dicts::Call<"IsPOSDict">(end.Handle())) return IsTagItself(end.Handle());
    return UnicodeStrings::Call<"IsPOSUnicodeString">(end.Handle()) ||
           BinDatas::Call<"IsPOSBinData">(end.Handle());
  });
}

bool TagDetector::IsKept(POSDict* dict, const char* key) {
  if (std::strcmp(key, kJsonTag) != 0) {
    fLeft = 0;
    return false;
  }
  return FollowChain(dict, kJsonTag,
                     [](const Handle& end) { return IsString(end) && IsKeptText(Text(end)); });
}

}  // namespace PosUtil
