// SPDX-License-Identifier: MIT
#include "commands/values/Values.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "formats/json/JsonNumber.h"
#include "formats/json/TaggedJson.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;

// The text of the only member "$json", which lives as long as the value; null for any other value.
const char* KeptText(const CPOSObject& value) {
  const CPOSDict dict(value, true);
  if (dict.IsNull()) return nullptr;
  const CPOSString text = dict.GetString(kJsonTag, true);
  return !text.IsNull() && dict.NumKeys() == 1 ? text.Get() : nullptr;
}

// How many dictionaries, one in the other, have the only member "$json" and a kept text inside; 0
// if the innermost value is another.
std::size_t KeptDepth(CPOSObject value) {
  for (std::size_t depth = 1;; ++depth) {
    const CPOSDict dict(value, true);
    if (dict.IsNull() || dict.NumKeys() != 1) return 0;
    value = dict.Get(kJsonTag, true);
    if (const CPOSString text(value, true); !text.IsNull()) {
      return IsKeptText(text.Get()) ? depth : 0;
    }
  }
}

}  // namespace

bool IsContainer(const CPOSObject& value) {
  return !value.IsNull() && !POSIsScalar(static_cast<POSType>(value.GetType()));
}

std::string KindText(int type) {
  const char* const name = POSTypeName(type);
  if (!name) return "a value of an unknown kind";
  if (type == kPOSBinData) return name;
  return (type == kPOSArray ? "an " : "a ") + std::string(name);
}

std::optional<int> TypeOf(const CPOSObject& value, LossMode loss) {
  if (loss != LossMode::kKeep || !IsKeptValue(value)) return value.GetType();
  const char first = *KeptText(value);
  return first == '-' || IsDigit(first) ? std::optional<int>(kPOSNumber) : std::nullopt;
}

std::string KindText(const CPOSObject& value, LossMode loss) {
  const auto type = TypeOf(value, loss);
  return type ? KindText(*type) : KeptText(value);
}

std::vector<CPOSObject> ValuesFrom(const CPOSArray& array, std::size_t begin) {
  std::vector<CPOSObject> values;
  const std::size_t count = array.Count();
  for (std::size_t i = begin; i < count; ++i) values.push_back(array.GetAt(i, true));
  return values;
}

// Slots cannot be emptied or moved up, but they can be taken off the end and appended.
void ReplaceFrom(CPOSArray& array, std::size_t begin, const std::vector<CPOSObject>& values) {
  for (std::size_t i = array.Count(); i-- > begin;) array.Remove(i);
  std::size_t end = begin;
  for (const CPOSObject& value : values) {
    if (!value.IsNull()) array.SetAt(end, value);
    ++end;
  }
  if (values.empty() || !values.back().IsNull()) return;
  array.SetAt(end, CPOSNumber(0.0));  // only a value makes an array longer
  array.Remove(end);
}

CPOSObject Unescaped(const CPOSObject& value) {
  return KeptDepth(value) > 1 ? CPOSDict(value).Get(kJsonTag, true) : value;
}

CPOSObject Escaped(const CPOSObject& value) {
  if (KeptDepth(value) == 0) return value;
  CPOSDict outer = CPOSDict::New();
  outer.Put(kJsonTag, value);
  return outer;
}

bool IsKeptNull(const CPOSObject& value) {
  const char* const text = KeptText(value);
  return text && std::string_view(text) == "null";
}

bool IsKeptValue(const CPOSObject& value) {
  const char* const text = KeptText(value);
  return text && IsKeptText(text);
}

}  // namespace PosUtil
