// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

#include "posimpl/streamer/StreamParams.h"

namespace NPOSStreamerImpl::NTypeAImpl {

// Characters that are read: 512 bytes of them are buffered, and the context says which are escaped
// and which one ends the construct.
class CharStream {
 public:
  static constexpr std::size_t kCapacity = 512;

  CharStream(const CharStream&) = delete;
  CharStream& operator=(const CharStream&) = delete;

  const StreamParams& Context() const noexcept { return *fContext; }

 protected:
  CharStream() = default;
  ~CharStream() = default;

 private:
  friend class ContextScope;

  const StreamParams* fContext = &kTopLevelParams;
};

// Changes the context while one value is read or written.
class ContextScope {
 public:
  ContextScope(CharStream& stream, const StreamParams& context) noexcept
      : fStream(stream), fSaved(std::exchange(stream.fContext, &context)) {}
  ContextScope(const ContextScope&) = delete;
  ContextScope& operator=(const ContextScope&) = delete;
  ~ContextScope() { fStream.fContext = fSaved; }

 private:
  CharStream& fStream;
  const StreamParams* const fSaved;
};

}  // namespace NPOSStreamerImpl::NTypeAImpl
