#include "posimpl/streamer/OCharStream.h"

namespace NPOSStreamerImpl::NTypeAImpl {

OCharStream::OCharStream(const KAP_T_MT::CKAPPositionableStream& stream) : fStream(stream) {}

OCharStream::~OCharStream() noexcept(false) {
  fFinishing.Run([this] {
    if (fUsed != 0) Flush();
  });
}

// The bytes leave the buffer once the stream has taken them: after a failure they are written again
// at the end. Everything outside a kept entry is already
// kept.
void OCharStream::Flush() {
  if (fScalar && !fKeptScalar) fKeptScalar = *fScalar;
  for (ContainerInUse* use = fContainer; use && !use->fIsKept; use = use->fOuter) use->Keep();
  fStream.Write(reinterpret_cast<const unsigned char*>(fBytes), fUsed);
  fWritten += fUsed;
  fUsed = 0;
}

void ContainerInUse::Keep() {
  if (!fKeptContainer) fKeptContainer = *fContainer;
  if (fKey) {
    fKeptValue = *fValue;
    fValue = &fKeptValue;
    fKey = &fKeptKey.emplace(*fKey);
  }
  fIsKept = true;
}

void OCharStream::PutText(const char* text) {
  const StreamParams& context = Context();
  for (;; ++text) {
    const char letter = context.HowToWrite(*text);
    if (letter == StreamParams::kPlain) [[likely]] {
      PutRaw(*text);
    } else if (*text != '\0') {
      PutEscaped(*text, letter);
    } else {
      return;
    }
  }
}

void OCharStream::PutAcrossBlocks(std::string_view text) { PutRaw(text); }

void OCharStream::PutEscaped(char ch, char letter) {
  PutRaw('\\');
  if (letter != StreamParams::kOctal) return PutRaw(letter);
  const auto byte = static_cast<unsigned char>(ch);
  for (int shift = 6; shift >= 0; shift -= 3) PutRaw(static_cast<char>('0' + (byte >> shift & 7)));
}

}  // namespace NPOSStreamerImpl::NTypeAImpl
