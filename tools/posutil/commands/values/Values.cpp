// SPDX-License-Identifier: MIT
#include "commands/values/Values.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "formats/json/TaggedJson.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;

// The text of the only member "$json"; null for any other value.
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

bool IsContainer(const CPOSObject& value) {
  return !value.IsNull() && !POSIsScalar(static_cast<POSType>(value.GetType()));
}

}  // namespace

std::string KindText(int type) {
  const char* const name = POSTypeName(type);
  if (!name) return "a value of an unknown kind";
  if (type == kPOSBinData) return name;
  return (type == kPOSArray ? "an " : "a ") + std::string(name);
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

CPOSObject ValueAt(const CPOSObject& root, const ValuePath& path, LossMode loss) {
  CPOSObject value = root;
  for (const PathStep& step : path) {
    if (value.IsNull()) return value;
    if (loss == LossMode::kKeep) value = Unescaped(value);
    if (step.fIsIndex) {
      const CPOSArray array(value, true);
      value = array.IsNull() ? CPOSObject() : array.GetAt(step.fIndex, true);
    } else {
      const CPOSDict dict(value, true);
      value = dict.IsNull() ? CPOSObject() : dict.Get(step.fKey, true);
    }
  }
  return value;
}

// The library's equality ignores the members that only the second dictionary has.
bool IsSame(const CPOSObject& a, const CPOSObject& b) {
  if (a.IsNull() || b.IsNull()) return a.IsNull() == b.IsNull();
  return a.IsEqual(b) && b.IsEqual(a);
}

CPOSObject DeepCopy(const CPOSObject& value) {
  struct Pair {
    CPOSObject fSource;
    CPOSObject fCopy;
  };
  std::vector<Pair> pairs;
  // The members of a container follow later. Nothing changes scalars, so they are shared.
  const auto copy = [&](const CPOSObject& source) {
    if (!IsContainer(source)) return source;
    CPOSObject target =
        source.GetType() == kPOSArray ? CPOSObject(CPOSArray::New()) : CPOSObject(CPOSDict::New());
    pairs.push_back({source, target});
    return target;
  };
  CPOSObject root = copy(value);
  while (!pairs.empty()) {
    const Pair pair = std::move(pairs.back());
    pairs.pop_back();
    if (const CPOSDict source(pair.fSource, true); !source.IsNull()) {
      CPOSDict target(pair.fCopy);
      for (CPOSDictIterator i(source); !i.IsDone(); i.Next()) {
        target.Put(i.CurKey(), copy(source.Get(i.CurKey(), true)));
      }
    } else {
      std::vector<CPOSObject> values = ValuesFrom(CPOSArray(pair.fSource), 0);
      std::transform(values.begin(), values.end(), values.begin(), copy);
      CPOSArray target(pair.fCopy);
      ReplaceFrom(target, 0, values);
    }
  }
  return root;
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
