#pragma once

#include <exception>

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The exception of the property-object layer: one static message text, which must outlive the
// exception.
class POSException : public std::exception {
 public:
  explicit POSException(const char* message) noexcept : fMessage(message) {}
  const char* what() const noexcept override { return fMessage; }

 private:
  const char* fMessage;
};

}  // namespace KAP_T_MT
