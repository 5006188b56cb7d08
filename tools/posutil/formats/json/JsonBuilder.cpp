// SPDX-License-Identifier: MIT
#include "formats/json/JsonBuilder.h"

#include <algorithm>
#include <utility>

#include "base/ValueError.h"
#include "formats/json/NullMark.h"

namespace PosUtil {

namespace {

using KAP_T_MT::CKAPStringAtom;

constexpr std::size_t kFewKeys = 32;  // up to here a search of the list is faster than a look-up

void RejectZero(std::string_view text, const char* message) {
  if (text.find('\0') != std::string_view::npos) throw ValueError(message);
}

Handle NewNumber(double value) { return Owned(Numbers::Call<"NewPOSNumber">(value)); }

Handle NewDictWith(const char* key, const Handle& value) {
  Handle dict = Owned(Dicts::Call<"NewPOSDict">());
  Dicts::Call<"Put">(dict.Handle(), CKAPStringAtom(key).Handle(), value.Handle());
  return dict;
}

}  // namespace

void JsonBuilder::Null() {
  if (fLevels.empty()) throw ValueError("null is not an object");
  Level& level = fLevels.back();
  level.fForm = TagForm::kNone;
  if (level.fIsArray) {
    level.fEndsEmpty = true;
    ++level.fCount;
  } else {
    // The last member of a name wins, so this undoes an earlier one.
    ForgetKey(level);
    Dicts::Call<"Remove">(level.fContainer.Handle(), std::exchange(fKey, nullptr)->Handle());
  }
}

void JsonBuilder::MarkNull() {
  RequireForm(false);
  Attach(NewNullMark());
}

void JsonBuilder::Number(double value) {
  RequireForm(false);
  Attach(NewNumber(value));
}

void JsonBuilder::String(std::string_view text, bool hasEscapes) {
  if (hasEscapes) RejectZero(text, "the string contains a zero character");
  if (!fLevels.empty()) {
    TagForm& form = fLevels.back().fForm;
    if (form == TagForm::kObject) form = TagForm::kNone;
    if (form == TagForm::kJson) fLastIsKept = IsKeptText(text);
  }
  AttachString(text);
}

void JsonBuilder::Word(std::string_view word) {
  RequireForm(false);
  AttachString(word);
}

void JsonBuilder::Kept(std::string_view json) {
  RequireForm(true);
  fLastIsKept = true;
  const std::string text(json);
  Attach(NewDictWith(kJsonTag, Owned(Strings::Call<"NewPOSString">(text.c_str()))));
}

void JsonBuilder::BeginArray() {
  RequireForm(false);
  Open(true, Owned(Arrays::Call<"NewPOSArray">()));
}

void JsonBuilder::BeginObject() {
  if (!fLevels.empty() && fLevels.back().fForm != TagForm::kObject) RequireForm(true);
  Open(false, Owned(Dicts::Call<"NewPOSDict">()));
}

void JsonBuilder::Open(bool isArray, Handle container) {
  fLevels.push_back({isArray, false, isArray ? TagForm::kNone : TagForm::kEmpty, 0,
                     fKeysSeen.size(), std::move(container), fKey ? *fKey : CKAPStringAtom()});
  fKey = nullptr;
}

void JsonBuilder::EndArray() {
  const Level& array = fLevels.back();
  if (array.fEndsEmpty) FillEmptyEnd(array);
  const Handle value = array.fContainer;
  Close(value);
}

void JsonBuilder::EndObject() {
  Level& object = fLevels.back();
  fKeysSeen.resize(object.fFirstKey);
  if (object.fForm <= TagForm::kEmpty) [[likely]] {
    const Handle value = std::move(object.fContainer);
    Close(value);
    fLastIsKept = false;
    if (!fLastPlain.IsNull()) fLastPlain = Handle();
    return;
  }
  const bool isKept = object.fForm == TagForm::kJson && fLastIsKept;
  const Handle plain = object.fContainer;
  const Handle value = ValueOfTag(object);
  Close(value);
  fLastIsKept = isKept;
  fLastPlain = value.Handle() == plain.Handle() || isKept ? Handle() : plain;
}

// The value of an object whose members have the form of a tag.
Handle JsonBuilder::ValueOfTag(const Level& object) {
  switch (object.fForm) {
    case TagForm::kUnicode:
      return MakeUnicodeString(MemberText(object, kUnicodeTag));
    case TagForm::kBinaryWithBase64:
      if (auto data = MakeBinData(MemberText(object, kBinaryTag).c_str(),
                                  MemberText(object, kBase64Member))) {
        return *data;
      }
      break;
    case TagForm::kObject:
      if (!fLastPlain.IsNull()) return fLastPlain;
      break;
    case TagForm::kJson:
      if (fEscapesKept && fLastIsKept) return NewDictWith(kJsonTag, object.fContainer);
      break;
    default:
      break;
  }
  return object.fContainer;
}

std::string JsonBuilder::MemberText(const Level& object, const char* key) {
  POSObject* const value = Dicts::Call<"Get">(object.fContainer.Handle(), fKeys.Get(key).Handle());
  const Handle holder(NotNull(value), KAP_T_MT::KAPAdopt());
  return NotNull(Strings::Call<"Get">(value));
}

void JsonBuilder::Close(const Handle& value) {
  fClosedKey = std::move(fLevels.back().fOuterKey);
  fLevels.pop_back();
  if (fClosedKey.Handle()) fKey = &fClosedKey;
  Attach(value);
}

bool JsonBuilder::Key(std::string_view key, bool hasEscapes) {
  if (hasEscapes) RejectZero(key, "a key contains a zero character");
  Level& object = fLevels.back();
  fKey = &fKeys.Get(key);
  const bool isRepeated = IsRepeated(object, fKey->Handle());
  if (isRepeated) {
    // The next value replaces the only one, so that one no longer decides.
    const bool isOnly = fKeysSeen.size() - object.fFirstKey == 1;
    if (isOnly) object.fForm = NextForm(TagForm::kEmpty, key);
  } else if (object.fForm != TagForm::kNone) {
    object.fForm = NextForm(object.fForm, key);
  }
  return isRepeated;
}

// Returns whether the list of keys ended once and for all: the dictionary has the others.
bool JsonBuilder::HasManyKeys(const Level& object) const {
  return fKeysSeen.size() - object.fFirstKey > kFewKeys;
}

// Equal texts have one atom as long as a dictionary owns it.
bool JsonBuilder::IsRepeated(const Level& object, KAPStringAtom* key) {
  const auto first = fKeysSeen.begin() + static_cast<std::ptrdiff_t>(object.fFirstKey);
  bool isRepeated = false;
  if (!HasManyKeys(object)) {
    isRepeated = std::find(first, fKeysSeen.end(), key) != fKeysSeen.end();
  } else {
    const Handle holder(Dicts::Call<"Get">(object.fContainer.Handle(), key), KAP_T_MT::KAPAdopt());
    isRepeated = !holder.IsNull();
  }
  if (!isRepeated && !HasManyKeys(object)) fKeysSeen.push_back(key);
  return isRepeated;
}

// The dictionary no longer owns the atom of the current key; another text may get its address.
void JsonBuilder::ForgetKey(const Level& object) {
  if (HasManyKeys(object)) return;
  const auto first = fKeysSeen.begin() + static_cast<std::ptrdiff_t>(object.fFirstKey);
  fKeysSeen.erase(std::remove(first, fKeysSeen.end(), fKey->Handle()), fKeysSeen.end());
}

// The value that comes now is not a string, so the object around it is not a tag; but with `isKept`
// it may be that of a kept value.
void JsonBuilder::RequireForm(bool isKept) {
  if (fLevels.empty()) return;
  TagForm& form = fLevels.back().fForm;
  if (!isKept || form != TagForm::kJson) form = TagForm::kNone;
}

void JsonBuilder::AttachString(std::string_view text) {
  Attach(fStrings.Get(text, [text] { return Owned(Strings::Call<"NewPOSString">(text.data())); }));
}

void JsonBuilder::Attach(const Handle& value) {
  if (fLevels.empty()) {
    fRoot = value;
    return;
  }
  Level& level = fLevels.back();
  POSObject* const container = level.fContainer.Handle();
  if (!level.fIsArray) {
    Dicts::Call<"Put">(container, std::exchange(fKey, nullptr)->Handle(), value.Handle());
    return;
  }
  if (level.fEndsEmpty) {
    Arrays::Call<"SetAt">(container, static_cast<unsigned long>(level.fCount), value.Handle());
  } else {
    Arrays::Call<"Append">(container, value.Handle());
  }
  level.fEndsEmpty = false;
  ++level.fCount;
}

// Only a value makes an array longer, so this stores one after the empty slots and removes it.
void JsonBuilder::FillEmptyEnd(const Level& array) {
  const Handle value = NewNumber(0);
  const unsigned long end = array.fCount;
  Arrays::Call<"SetAt">(array.fContainer.Handle(), end, value.Handle());
  Arrays::Call<"Remove">(array.fContainer.Handle(), end);
}

std::string JsonBuilder::Path() const {
  std::string path;
  for (std::size_t i = 0; i < fLevels.size(); ++i) {
    const CKAPStringAtom* const key = i + 1 < fLevels.size() ? &fLevels[i + 1].fOuterKey : fKey;
    if (fLevels[i].fIsArray) {
      AppendIndex(path, fLevels[i].fCount);
    } else if (key) {
      AppendKey(path, key->Text());
    }
  }
  return path;
}

void JsonBuilder::Drop() {
  fLevels.clear();
  fKeysSeen.clear();
  fKey = nullptr;
  fLastIsKept = false;
  fLastPlain = Handle();
}

KAP_T_MT::CPOSObject JsonBuilder::Take() { return {NotNull(fRoot.Detach()), KAP_T_MT::KAPAdopt()}; }

}  // namespace PosUtil
