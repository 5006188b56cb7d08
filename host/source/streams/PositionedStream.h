// SPDX-License-Identifier: MIT
#pragma once

#include "streams/Stream.h"

namespace KAPHost {

// A positionable stream that keeps its position as a number. The position may lie past the end:
// reading there returns no bytes, writing there fills the gap with zeros.
class PositionedStream : public Stream {
 public:
  KAPError* Rewind() noexcept final { return Seek(0, 0); }
  KAPError* Mark(long& outPosition) noexcept final {
    outPosition = fPosition;
    return nullptr;
  }
  KAPError* Seek(long offset, int origin) noexcept override;

 protected:
  explicit PositionedStream(const char* kind) noexcept
      : Stream(StreamCapability::kPositionable, kind) {}

  virtual KAPError* GetSize(long& outSize) noexcept = 0;

  long fPosition = 0;
};

}  // namespace KAPHost
