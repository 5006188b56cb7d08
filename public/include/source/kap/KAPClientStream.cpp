// SPDX-License-Identifier: MIT
#include "kap/KAPClientStream.h"

#include "kap/KAPError.h"
#include "kap/TOQException.h"

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

TKAPClientObject<KAPClientPositionableStream>
KAPClientPositionableStream::CreateCheckedRewindableStream() {
  TKAPClientObject<KAPClientRewindableStream> made = CreateIndependentlyRewindableStream();
  auto* positionable = dynamic_cast<KAPClientPositionableStream*>(made.get());
  if (made && !positionable) throw TOQException("the new stream cannot be positioned");
  static_cast<void>(made.release());
  return TKAPClientObject<KAPClientPositionableStream>(positionable);
}

}  // namespace KAP_T_MT
