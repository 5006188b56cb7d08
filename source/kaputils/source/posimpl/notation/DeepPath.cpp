// SPDX-License-Identifier: MIT

// Deep paths: where a value is inside a dictionary.
//
//   path    := segment+             a path that does not begin with "." is read as if it did
//   segment := "." key | "[" index "]"
//   key     := any characters but "." and "[", or none
//   index   := decimal digits, at least one; any number of them, taken modulo 2^32, deliberately
//
// On < a < b [10 20 30] > > both "a.b[1]" and ".a.b[01]" lead to 20; "a.b[3]", "a.b[]", "a[0]" and
// "a.b.c" lead nowhere.

#include "posimpl/notation/DeepPath.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "pos/POSKinds.h"
#include "posimpl/objects/Array.h"

namespace NPOSObjectImpl {

namespace {

std::string_view TakeKey(const char*& rest) noexcept {
  const char* begin = rest;
  while (*rest != '\0' && *rest != '.' && *rest != '[') ++rest;
  return {begin, static_cast<std::size_t>(rest - begin)};
}

// The number before the "]", or false for anything else.
bool TakeIndex(const char*& rest, std::uint32_t& index) noexcept {
  const char* begin = rest;
  for (index = 0; *rest >= '0' && *rest <= '9'; ++rest) {
    index = index * 10 + static_cast<std::uint32_t>(*rest - '0');
  }
  return rest != begin && *rest++ == ']';
}

POSObject* Member(BaseObject* object, const char*& rest) noexcept {
  const Dict* dict = Dict::As(object);
  return dict ? dict->Find(TakeKey(rest)) : nullptr;
}

// The upper half of the index range is negative, and so past the end of any array; deliberate.
POSObject* Element(BaseObject* object, const char*& rest) noexcept {
  const Array* array = Array::As(object);
  std::uint32_t index = 0;
  if (!array || !TakeIndex(rest, index)) return nullptr;
  const auto widened = static_cast<std::uint64_t>(std::int64_t{static_cast<std::int32_t>(index)});
  return array->Find(widened);
}

// Also of a kind that is added later: a path would silently end at it.
static_assert(std::all_of(std::begin(KAP_T_MT::kPOSTypes), std::end(KAP_T_MT::kPOSTypes),
                          [](KAP_T_MT::POSType type) {
                            return KAP_T_MT::POSIsScalar(type) || type == Dict::kType ||
                                   type == Array::kType;
                          }),
              "a kind of POSType that holds objects has no step in deep paths");

POSObject* Step(BaseObject* object, const char*& rest) noexcept {
  switch (*rest++) {
    case '.':
      return Member(object, rest);
    case '[':
      return Element(object, rest);
    default:
      return nullptr;
  }
}

POSObject* lookup(BaseObject* root, const char* rest) noexcept {
  POSObject* value = *rest == '.' ? Step(root, rest) : Member(root, rest);
  while (value && *rest != '\0') value = Step(BaseObject::GetInstanceNoThrow(value), rest);
  return value;
}

}  // namespace

CPOSObject DeepGet(const Dict& dict, const char* path, bool noThrow) {
  try {
    if (POSObject* value = lookup(const_cast<Dict*>(&dict), path)) return BaseObject::Share(value);
  } catch (...) {  // whatever the reason, the path leads nowhere
  }
  if (!noThrow) throw POSException("Dict::DeepGet lookup failed");
  return {};
}

}  // namespace NPOSObjectImpl
