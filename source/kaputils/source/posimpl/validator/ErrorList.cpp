// SPDX-License-Identifier: MIT
#include "posimpl/validator/ErrorList.h"

#include <algorithm>
#include <cstring>

#include "posimpl/validator/MessageText.h"

namespace NPOSValidatorImpl {

namespace {

// A line that grows at its end, and is cut back to where a context began.
class Line {
 public:
  std::uint32_t Length() const noexcept { return fLength; }
  void CutTo(std::uint32_t length) noexcept { fText[fLength = length] = '\0'; }
  void Append(const char* text) noexcept {
    const std::size_t length = std::min(std::strlen(text), kMessageSize - 1 - fLength);
    std::memcpy(fText + fLength, text, length);
    CutTo(fLength + static_cast<std::uint32_t>(length));
  }
  const char* Text() const noexcept { return fText; }

 private:
  char fText[kMessageSize] = "";
  std::uint32_t fLength = 0;
};

}  // namespace

void ErrorList::Append(const char* message) {
  Append([=] { return FormatIntoPOSString("%s", message); });
}

void ErrorList::AppendMade(CPOSObject message) {
  if (!fMessages) fMessages.emplace();
  fMessages->Append(std::move(message));
  ++fMade;
}

void ErrorList::AddContext(const Mark& begin, CPOSObject text) {
  if (!fContextTexts) fContextTexts.emplace();
  fContexts.Append({begin.fMessages, Count(), fContextTexts->Count(), 0});
  fContextTexts->Append(std::move(text));
}

void ErrorList::CutTo(const Mark& end) noexcept {
  while (Count() > end.fMessages) fMessages->Remove(Count() - 1);
  while (fContexts.Size() > end.fContexts) {
    fContexts.CutTo(fContexts.Size() - 1);
    fContextTexts->Remove(fContexts.Size());
  }
}

// In order of their first message, contexts are entered like the nodes of a tree. Those that were
// entered and not left stand at the front of the same buffer.
void ErrorList::Report(KAP_T_MT::POSMessageProc use) {
  Context* const contexts = fContexts.Data();
  const std::size_t contextCount = fContexts.Size();
  std::sort(contexts, contexts + contextCount,
            [](const Context& a, const Context& b) { return a.Precedes(b); });
  Line line;
  std::size_t next = 0;
  std::size_t open = 0;
  for (std::uint32_t i = 0; i < Count(); ++i) {
    while (open > 0 && contexts[open - 1].fEnd <= i) line.CutTo(contexts[--open].fOutside);
    for (; next < contextCount && contexts[next].fBegin == i; ++next) {
      contexts[open] = contexts[next];
      contexts[open++].fOutside = line.Length();
      line.Append(TextOfPOSString(fContextTexts->Find(contexts[next].fText)));
      line.Append(" ");
    }
    const std::uint32_t outside = line.Length();
    line.Append(TextOfPOSString(fMessages->Find(i)));
    use(line.Text());
    line.CutTo(outside);
  }
}

}  // namespace NPOSValidatorImpl
