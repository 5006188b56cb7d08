#pragma once

#include <optional>

#include "posimpl/validator/Keywords.h"
#include "posimpl/validator/PropertyObjects.h"

namespace NPOSValidatorImpl {

// The attributes of a type definition. They are read where they are needed, so that an error in a
// definition is an error of the check that comes upon it, and a schema that its owner changes
// between two validations counts as it stands. An absent attribute is null; one of another kind is
// POSException. Borrowed.
class Definition {
 public:
  Definition(const Dict& attributes, const Keywords& words) noexcept
      : fAttributes(attributes), fWords(words) {}

  const Keywords& Words() const noexcept { return fWords; }

  const CPOSObject* Find(KeywordName name) const noexcept { return fAttributes.Find(fWords.*name); }
  template <class Kind>
  const Kind* Get(KeywordName name) const {
    const CPOSObject* attribute = Find(name);
    return attribute ? &Downcast<Kind>(attribute->Handle()) : nullptr;
  }

  std::optional<double> GetNumber(KeywordName name) const {
    const auto* number = Get<Number>(name);
    return number ? std::optional(number->Get()) : std::nullopt;
  }
  AtomText GetText(KeywordName name) const {
    const auto* string = Get<String>(name);
    return string ? string->Get() : nullptr;
  }

 private:
  const Dict& fAttributes;
  const Keywords& fWords;
};

}  // namespace NPOSValidatorImpl
