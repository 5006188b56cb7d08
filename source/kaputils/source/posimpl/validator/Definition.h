#pragma once

#include <optional>

#include "posimpl/validator/Keywords.h"
#include "posimpl/validator/PropertyObjects.h"

namespace NPOSValidatorImpl {

// The attributes of a type definition. They are read where they are needed and never ahead of it:
// an error in a definition is an error of the check that meets it, and a changed schema takes
// effect at once. An absent attribute is null; one of another kind is a POSException. Borrowed.
class Definition {
 public:
  // With `mustKeep` callbacks may run during the check, see Kept.
  Definition(const Dict& attributes, const Keywords& words, bool mustKeep) noexcept
      : fAttributes(attributes), fWords(words), fMustKeep(mustKeep) {}

  bool MustKeep() const noexcept { return fMustKeep; }

  const Keywords& Words() const noexcept { return fWords; }

  const CPOSObject* Find(KeywordName name) const noexcept { return fAttributes.Find(fWords.*name); }
  template <class Kind>
  const Kind* Get(KeywordName name) const {
    const CPOSObject* attribute = Find(name);
    return attribute ? &Downcast<Kind>(attribute->Handle()) : nullptr;
  }

  // The same, for use while parts of the object are checked.
  template <class Kind>
  Kept<Kind> GetKept(KeywordName name) const {
    const CPOSObject* attribute = Find(name);
    return attribute ? Kept<Kind>(*attribute, fMustKeep) : Kept<Kind>();
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
  const bool fMustKeep;
};

}  // namespace NPOSValidatorImpl
