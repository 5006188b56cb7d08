// SPDX-License-Identifier: MIT
#include "streams/PositionedStream.h"

#include <cerrno>

#include "errors/Errors.h"
#include "kap/KAPStreamInterfaces.h"

namespace KAPHost {

KAPError* PositionedStream::Seek(long offset, int origin) noexcept {
  long base = 0;
  switch (origin) {
    case KAP_T_MT::kKAPSeekFromStart:
      break;
    case KAP_T_MT::kKAPSeekFromPosition:
      base = fPosition;
      break;
    case KAP_T_MT::kKAPSeekFromEnd:
      if (KAPError* error = GetSize(base)) return error;
      break;
    default:
      return MakeError("unknown origin of a seek", EINVAL);
  }
  long position = 0;
  if (__builtin_add_overflow(base, offset, &position)) {
    return MakeError("seek out of range", EOVERFLOW);
  }
  if (position < 0) return MakeError("seek before the start of the stream", EINVAL);
  fPosition = position;
  return nullptr;
}

}  // namespace KAPHost
