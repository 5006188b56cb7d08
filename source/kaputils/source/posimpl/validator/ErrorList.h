// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include "pos/POSValidatorInterfaces.h"
#include "posimpl/validator/PropertyObjects.h"

namespace NPOSValidatorImpl {

// What a check returns: how many errors it found. A failed union counts as one however many
// messages it appends. Only whether it is zero decides anything.
using ErrorCount = std::int64_t;

// The messages of a check in order, one property string each. Where messages are not wanted none is
// made, and the list takes no memory before the first one.
class ErrorList {
 public:
  enum class Wanted : bool { kNo, kYes };

  explicit ErrorList(Wanted wanted) noexcept : fWanted(wanted) {}
  // An empty list, for a part of what `whole` is for.
  static ErrorList ForPartOf(const ErrorList& whole) noexcept { return ErrorList(whole.fWanted); }

  // Appends the property string that `makeMessage` returns; it is not called where messages are not
  // wanted.
  template <class MakeMessage>
  void Append(MakeMessage makeMessage) {
    if (fWanted == Wanted::kYes) AppendMade(makeMessage());
  }
  void Append(const char* message);

  bool AreWanted() const noexcept { return fWanted == Wanted::kYes; }
  bool IsEmpty() const noexcept { return Count() == 0; }
  std::uint32_t Count() const noexcept { return fMessages ? fMessages->Count() : 0; }
  const char* TextAt(std::uint32_t index) const;

 private:
  void AppendMade(CPOSObject message);

  const Wanted fWanted;
  std::optional<Array> fMessages;
};

// Appends each message of the source, with the context and a blank before it.
void AppendErrorsInContext(ErrorList& destination, const ErrorList& source, const char* context);

}  // namespace NPOSValidatorImpl
