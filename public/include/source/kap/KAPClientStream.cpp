// SPDX-License-Identifier: MIT
#include "kap/KAPClientStream.h"

#include "kap/KAPError.h"

namespace KAP_T_MT {

TKAPClientObject<KAPClientRewindableStream>
KAPClientPositionableStream::CreateIndependentlyRewindableStream() {
  return CreateIndependentlyPositionableStream();
}

void KAPClientPositionableStream::Rewind() { Seek(0, kKAPSeekFromStart); }

TKAPClientObject<KAPClientPositionableStream>
KAPClientPositionableStream::CreateIndependentlyPositionableStream() {
  CKAPError::ThrowError(kUnknownErrorID);
}

}  // namespace KAP_T_MT
