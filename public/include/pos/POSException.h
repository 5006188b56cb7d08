// SPDX-License-Identifier: MIT
#pragma once

#include <exception>

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// What the classes of property objects throw, besides CKAPError for what the host fails at. A
// registered procedure turns it into a report (kap/KAPBoundary.h), so it does not leave a
// component. "ValidateSchema" of POSStructValidatorInterface is the one exception.
//
// It carries the pointer to a message, so that throwing takes no memory but the exception's own.
// The message must outlive the exception: a literal, as a rule.
class [[nodiscard]] POSException : public std::exception {
 public:
  // `message` is kept, not copied.
  [[nodiscard]] explicit POSException(const char* message) noexcept : fMessage(message) {}
  const char* what() const noexcept override { return fMessage; }

 private:
  const char* fMessage;
};

}  // namespace KAP_T_MT
