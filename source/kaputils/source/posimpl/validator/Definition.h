// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <iterator>
#include <optional>

#include "posimpl/validator/Keywords.h"
#include "posimpl/validator/PropertyObjects.h"

namespace NPOSValidatorImpl {

struct Category;

// The attributes of definitions, by the names of their keywords: one list makes the enumerators
// (kMinLen) and, at the same positions, the keywords.
#define KAP_ATTRIBUTES(X) \
  X(KeyType)              \
  X(IllegalChars)         \
  X(Max)                  \
  X(MaxExcl)              \
  X(MaxLen)               \
  X(MemberType)           \
  X(Min)                  \
  X(MinExcl)              \
  X(MinLen)               \
  X(OneOf)                \
  X(Optional)             \
  X(Required)             \
  X(Set)                  \
  X(ValueType)

#define KAP_ATTRIBUTE(keyword) k##keyword,
enum class Attribute : unsigned char { KAP_ATTRIBUTES(KAP_ATTRIBUTE) };
#undef KAP_ATTRIBUTE

#define KAP_ATTRIBUTE(keyword) &Keywords::keyword,
inline constexpr KeywordName kAttributeNames[] = {KAP_ATTRIBUTES(KAP_ATTRIBUTE)};
#undef KAP_ATTRIBUTE

// The definition of a type. What the attributes hold is read where it is needed and never ahead of
// it: an error in a definition is an error of the check that meets it. An absent attribute is null;
// one of another kind is a POSException. Borrowed.
class Definition {
 public:
  // The definition that the attributes make. Where callbacks may change the schema, each use looks
  // an attribute up, so that a change takes effect at once. Elsewhere all are looked up now: a walk
  // over the few that there are takes less time than a search for each that there may be.
  Definition(const Dict& attributes, const Keywords& words, const Category& category,
             AtomText categoryName, bool mayChange) noexcept;

  const Category& GetCategory() const noexcept { return *fCategory; }
  AtomText CategoryName() const noexcept { return fCategoryName; }

  POSObject* Find(Attribute name) const noexcept {
    const auto index = static_cast<std::size_t>(name);
    return fChanging ? fChanging->Find(fWords->*kAttributeNames[index]) : fFound[index];
  }
  template <class Kind>
  const Kind* Get(Attribute name) const {
    POSObject* attribute = Find(name);
    return attribute ? &Downcast<Kind>(attribute) : nullptr;
  }

  // The same, for use while parts of the object are checked.
  template <class Kind>
  Kept<Kind> GetKept(Attribute name) const {
    POSObject* attribute = Find(name);
    return attribute ? Kept<Kind>(attribute, fChanging != nullptr) : Kept<Kind>();
  }

  std::optional<double> GetNumber(Attribute name) const {
    const auto* number = Get<Number>(name);
    return number ? std::optional(number->Get()) : std::nullopt;
  }
  AtomText GetText(Attribute name) const {
    const auto* string = Get<String>(name);
    return string ? string->Get() : nullptr;
  }

 private:
  const Category* fCategory = nullptr;
  AtomText fCategoryName = nullptr;
  const Dict* fChanging = nullptr;  // where each use looks up
  const Keywords* fWords = nullptr;
  POSObject* fFound[std::size(kAttributeNames)] = {};
};

}  // namespace NPOSValidatorImpl
