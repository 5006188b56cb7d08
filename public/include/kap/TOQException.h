#pragma once

#include <exception>

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The library's base exception: one fixed message. The message is not copied and must outlive the
// exception, so it is a literal.
class TOQException : public std::exception {
 public:
  explicit TOQException(const char* message) noexcept : fMessage(message) {}
  const char* what() const noexcept override { return fMessage; }

 private:
  const char* fMessage;
};

// For a size or a count that does not fit: throws TOQException "Math overflow exception".
[[noreturn]] inline void KAPThrowMathOverflow() { throw TOQException("Math overflow exception"); }

}  // namespace KAP_T_MT
