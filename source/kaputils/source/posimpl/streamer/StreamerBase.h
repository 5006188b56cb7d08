// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPClientBase.h"
#include "kap/KAPStream.h"
#include "pos/POSObject.h"
#include "posimpl/streamer/ICharStream.h"
#include "posimpl/streamer/OCharStream.h"

namespace NPOSStreamerImpl {

// A format of documents: writes one property object to a stream and reads one back. Made anew for
// each document. Failures are POSExceptions, or errors of the host.
class StreamerBase : public KAP_T_MT::CKAPVirtualClientBase {
 public:
  using Owner = KAP_T_MT::TKAPClientObject<StreamerBase>;

  // The name of the version, a constant.
  virtual const char* GetVersion() const noexcept = 0;

  virtual void SerializeObject(const KAP_T_MT::CKAPPositionableStream& stream,
                               const KAP_T_MT::CPOSObject& object) = 0;
  // Empty when the end of the construct comes instead of a value.
  virtual KAP_T_MT::CPOSObject DeserializeObject(
      const KAP_T_MT::CKAPPositionableStream& stream) = 0;
  virtual void SerializeObject(NTypeAImpl::OCharStream& out,
                               const KAP_T_MT::CPOSObject& object) = 0;
  virtual KAP_T_MT::CPOSObject DeserializeObject(NTypeAImpl::ICharStream& in) = 0;

  // The message for an object of a kind that the format does not have.
  static constexpr const char* kCannotBeWritten = "Cannot determine writing params";

  // The parameters of the values that begin with the character, and of those of the object's type.
  virtual const NTypeAImpl::StreamParams& GetReadingParams(char open) const = 0;
  virtual const NTypeAImpl::StreamParams& GetWritingParams(KAP_T_MT::POSType type) const = 0;
};

}  // namespace NPOSStreamerImpl
