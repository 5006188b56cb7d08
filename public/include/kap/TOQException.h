// SPDX-License-Identifier: MIT
#pragma once

#include <exception>

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The library's base exception: one fixed message. At the boundary it becomes a host error with
// that message, component "TOQ" and code 0, or a report.
// Ownership: none. The message is not copied and must outlive the exception: use a literal. So
//   making and copying one needs no memory, and works without a host.
class [[nodiscard]] TOQException : public std::exception {
 public:
  // `message` is kept, not copied.
  [[nodiscard]] explicit TOQException(const char* message) noexcept : fMessage(message) {}
  const char* what() const noexcept override { return fMessage; }

 private:
  const char* fMessage;
};

// Throws TOQException "Math overflow exception": a size or a count does not fit.
[[noreturn]] inline void KAPThrowMathOverflow() { throw TOQException("Math overflow exception"); }

}  // namespace KAP_T_MT
