#include "formats/json/JsonBuilder.h"

#include <charconv>
#include <utility>

#include "base/DecimalText.h"
#include "base/ValueError.h"

namespace PosUtil {

namespace {

using KAP_T_MT::CKAPStringAtom;

[[noreturn]] void ThrowInexact() {
  throw ValueError("a number cannot represent this integer exactly");
}

void RejectZero(std::string_view text, const char* message) {
  if (text.find('\0') != std::string_view::npos) throw ValueError(message);
}

Handle NewNumber(double value) { return Owned(Numbers::Call<"NewPOSNumber">(value)); }

}  // namespace

void JsonBuilder::Null() {
  if (fTagged) fTagged->RejectValue();
  if (fLevels.empty()) throw ValueError("null is not an object");
  Level& level = fLevels.back();
  if (level.fKind == Kind::kArray) {
    level.fEndsEmpty = true;
    ++level.fCount;
  } else {
    // The last member of a name wins, so this undoes an earlier one.
    Dicts::Call<"Remove">(level.fContainer.Handle(), std::exchange(fKey, nullptr)->Handle());
  }
}

void JsonBuilder::Number(double value) {
  if (fTagged) fTagged->RejectValue();
  Attach(NewNumber(value));
}

void JsonBuilder::Signed(long long value) {
  // The largest values round to 2^63. Converting that back would overflow.
  const auto number = static_cast<double>(value);
  if (number >= 0x1p63 || static_cast<long long>(number) != value) ThrowInexact();
  Number(number);
}

void JsonBuilder::Unsigned(unsigned long long value) {
  const auto number = static_cast<double>(value);
  if (number >= 0x1p64 || static_cast<unsigned long long>(number) != value) ThrowInexact();
  Number(number);
}

void JsonBuilder::Integer(std::string_view digits, double nearest) {
  // The text has the exact digits of the double, not the shortest ones followed by zeros.
  if (DecimalText(nearest, DecimalText::kWithoutExponent).View() != digits) ThrowInexact();
  Number(nearest);
}

void JsonBuilder::String(std::string_view text) {
  RejectZero(text, "the string contains a zero character");
  if (fTagged) return fTagged->String(text);
  Attach(fStrings.Get(text, [text] { return Owned(Strings::Call<"NewPOSString">(text.data())); }));
}

void JsonBuilder::BeginArray() {
  if (fTagged) fTagged->RejectValue();
  Open(Kind::kArray, Owned(Arrays::Call<"NewPOSArray">()));
}

void JsonBuilder::BeginObject() {
  if (fTagged) fTagged->RejectValue();
  Open(Kind::kObject, Handle());
}

void JsonBuilder::Open(Kind kind, Handle container) {
  fLevels.push_back({kind, false, 0, std::move(container), fKey ? *fKey : CKAPStringAtom()});
  fKey = nullptr;
}

void JsonBuilder::EndArray() {
  Level& array = fLevels.back();
  if (array.fEndsEmpty) FillEmptyEnd(array);
  Close(std::move(array.fContainer));
}

void JsonBuilder::EndObject() {
  Level& object = fLevels.back();
  if (object.fKind == Kind::kTagged) {
    const TaggedJson tagged = *std::exchange(fTagged, std::nullopt);
    Close(tagged.Make());
  } else if (object.fKind == Kind::kObject) {
    Close(Owned(Dicts::Call<"NewPOSDict">()));
  } else {
    Close(std::move(object.fContainer));
  }
}

void JsonBuilder::Close(Handle&& value) {
  const Handle owned = std::move(value);  // `value` is a part of the level
  fClosedKey = std::move(fLevels.back().fOuterKey);
  fLevels.pop_back();
  if (fClosedKey.Handle()) fKey = &fClosedKey;
  Attach(owned);
}

void JsonBuilder::Key(std::string_view key) {
  RejectZero(key, "a key contains a zero character");
  if (fTagged) return fTagged->Key(key);
  Level& object = fLevels.back();
  if (IsJsonTag(key)) {
    fTagged = BeginTagged(object, key);
    object.fKind = Kind::kTagged;
    return fTagged->Key(key);
  }
  if (object.fKind == Kind::kObject) {
    object.fContainer = Owned(Dicts::Call<"NewPOSDict">());
    object.fKind = Kind::kDict;
  }
  ++object.fCount;
  fKey = &fKeys.Get(key);
}

// The first member shows whether an object is a tagged value; if that is "base64", the second does.
TaggedJson JsonBuilder::BeginTagged(const Level& object, std::string_view key) {
  if (object.fKind == Kind::kObject) return {};
  if (key == kBinaryTag && object.fCount == 1) {
    const auto& base64 = fKeys.Get(kBase64Member);
    POSObject* const value = Dicts::Call<"Get">(object.fContainer.Handle(), base64.Handle());
    const Handle holder(value, KAP_T_MT::KAPAdopt());
    if (Strings::Call<"IsPOSString">(value)) {
      return TaggedJson::WithBase64(NotNull(Strings::Call<"Get">(value)));
    }
  }
  throw ValueError(kTagMisused);
}

void JsonBuilder::Attach(const Handle& value) {
  if (fLevels.empty()) {
    fRoot = value;
    return;
  }
  Level& level = fLevels.back();
  POSObject* const container = level.fContainer.Handle();
  if (level.fKind == Kind::kDict) {
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
    if (fLevels[i].fKind == Kind::kArray) {
      AppendIndex(path, fLevels[i].fCount);
    } else if (key) {
      AppendKey(path, key->Text());
    }
  }
  return path;
}

KAP_T_MT::CPOSObject JsonBuilder::Take() { return {NotNull(fRoot.Detach()), KAP_T_MT::KAPAdopt()}; }

}  // namespace PosUtil
