// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include "pos/POSValidatorInterfaces.h"
#include "posimpl/base/GrowingBuffer.h"
#include "posimpl/validator/PropertyObjects.h"

namespace NPOSValidatorImpl {

// What a check returns: how many errors it found. A failed union counts as one however many
// messages it appends. Only whether it is zero decides anything.
using ErrorCount = std::int64_t;

// The messages of a check in order, and the contexts they stand in. Where messages are not wanted
// none is made, and the list takes no memory before the first one.
//
// A context is put before its messages when they are reported, once for all levels: a message that
// was made anew at each level made the time of a deep union grow like the third power of its depth.
class ErrorList {
 public:
  enum class Wanted : bool { kNo, kYes };

  explicit ErrorList(Wanted wanted) noexcept : fWanted(wanted) {}

  // Appends the property string that `makeMessage` returns; it is not called where messages are not
  // wanted.
  template <class MakeMessage>
  void Append(MakeMessage makeMessage) {
    if (AreWanted()) AppendMade(makeMessage());
  }
  void Append(const char* message);

  bool AreWanted() const noexcept { return fWanted == Wanted::kYes; }
  // Whether so many messages were made (some may be removed since) that an object and a type that
  // had theirs get none again.
  bool IsLong() const noexcept { return fMade > kEnough && Count() > 0; }

  // A place in the list, from which a part of the check begins.
  struct Mark {
    std::uint32_t fMessages;
    std::size_t fContexts;
  };
  Mark End() const noexcept { return {Count(), fContexts.Size()}; }

  bool HasMessagesFrom(const Mark& begin) const noexcept { return Count() > begin.fMessages; }
  // Puts the messages from a mark on in the context, a property string.
  void AddContext(const Mark& begin, CPOSObject text);
  // Removes the messages from a mark on.
  void CutTo(const Mark& end) noexcept;

  // Calls `use` for each message in order: its contexts, the outermost first, a blank after each,
  // then its text. What is longer than a message is cut. Ends the list.
  void Report(KAP_T_MT::POSMessageProc use);

 private:
  // Messages from one to before another, and how they are reported.
  struct Context {
    std::uint32_t fBegin;
    std::uint32_t fEnd;
    std::uint32_t fText;     // its place in fContextTexts; later ones are further out
    std::uint32_t fOutside;  // while it is open, how much text the outer ones take
    bool Precedes(const Context& other) const noexcept {
      return fBegin != other.fBegin ? fBegin < other.fBegin : fText > other.fText;
    }
  };

  static constexpr std::uint64_t kEnough = 200'000;  // a second and 100 MB

  std::uint32_t Count() const noexcept { return fMessages ? fMessages->Count() : 0; }
  void AppendMade(CPOSObject message);

  const Wanted fWanted;
  std::optional<Array> fMessages;
  std::optional<Array> fContextTexts;
  NPOSObjectImpl::GrowingBuffer<Context> fContexts;
  std::uint64_t fMade = 0;
};

// Puts the messages that were appended from a mark on in the context, a property string that
// `makeContext` returns. It is not called where there are none.
template <class MakeContext>
void AppendErrorsInContext(ErrorList& errors, const ErrorList::Mark& begin,
                           MakeContext makeContext) {
  if (errors.HasMessagesFrom(begin)) errors.AddContext(begin, makeContext());
}

}  // namespace NPOSValidatorImpl
