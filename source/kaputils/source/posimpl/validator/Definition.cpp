// SPDX-License-Identifier: MIT
#include "posimpl/validator/Definition.h"

namespace NPOSValidatorImpl {

Definition::Definition(const Dict& attributes, const Keywords& words, const Category& category,
                       AtomText categoryName, bool mayChange) noexcept
    : fCategory(&category), fCategoryName(categoryName) {
  if (mayChange) {
    fChanging = &attributes;
    fWords = &words;
    return;
  }
  const DictEntry* entry = attributes.Entries().First();
  for (; entry; entry = DictTree::Next(entry)) {
    for (std::size_t i = 0; i < std::size(kAttributeNames); ++i) {
      if ((words.*kAttributeNames[i]).Is(entry->GetKey().Text())) fFound[i] = entry->Value();
    }
  }
}

}  // namespace NPOSValidatorImpl
