// SPDX-License-Identifier: MIT
#include "posimpl/validator/ErrorList.h"

#include "posimpl/validator/MessageText.h"

namespace NPOSValidatorImpl {

void ErrorList::Append(const char* message) {
  Append([=] { return FormatIntoPOSString("%s", message); });
}

void ErrorList::AppendMade(CPOSObject message) {
  if (!fMessages) fMessages.emplace();
  fMessages->Append(std::move(message));
}

const char* ErrorList::TextAt(std::uint32_t index) const {
  return TextOfPOSString(fMessages->Find(index));
}

void AppendErrorsInContext(ErrorList& destination, const ErrorList& source, const char* context) {
  for (std::uint32_t i = 0; i < source.Count(); ++i) {
    destination.Append([&] { return FormatIntoPOSString("%s %s", context, source.TextAt(i)); });
  }
}

}  // namespace NPOSValidatorImpl
