// SPDX-License-Identifier: MIT
#include "posimpl/streamer/POSStreamerImpl.h"

#include <string_view>

#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"
#include "kapimpl/base/ContainedObject.h"
#include "kapimpl/base/KAPUtilsAtoms.h"
#include "pos/POSInterfaceSets.h"
#include "posimpl/base/BaseObject.h"
#include "posimpl/procs/RegisteredSet.h"
#include "posimpl/streamer/StreamerVersions.h"

namespace NPOSStreamerImpl {

using KAP_T_MT::CKAPPositionableStream;
using KAP_T_MT::CPOSObject;
using KAP_T_MT::KAPReportingError;
using KAP_T_MT::POSException;

namespace {

// The version's name before a document. A longer one is cut: no version has such a name.
class Tag {
 public:
  // Reads byte by byte: what follows the tag's space belongs to the format.
  explicit Tag(CKAPPositionableStream& stream) {
    char next = ReadChar(stream);
    while (next == ' ') next = ReadChar(stream);
    while (next != ' ') {
      fText[fLength++] = next;
      if (fLength == kMaxLength) break;
      next = ReadChar(stream);
    }
  }

  std::string_view Text() const noexcept { return {fText, fLength}; }

 private:
  static constexpr std::size_t kMaxLength = 64;

  static char ReadChar(CKAPPositionableStream& stream) {
    unsigned char next = 0;
    if (stream.Read(&next, 1) == 0) throw POSException("getNextChar unexpected EOF");
    return static_cast<char>(next);
  }

  char fText[kMaxLength];
  std::size_t fLength = 0;
};

void Write(CKAPPositionableStream& stream, std::string_view text) {
  stream.Write(reinterpret_cast<const unsigned char*>(text.data()), text.size());
}

}  // namespace

void KAPImpl::Serialize(CKAPPositionableStream stream, const CPOSObject& object,
                        const char* version) {
  const std::string_view name = version ? version : GetDefaultVersion();
  const StreamerBase::Owner streamer = LookupStreamer(name);
  Write(stream, name);
  Write(stream, " ");
  streamer->SerializeObject(stream, object);
}

CPOSObject KAPImpl::Deserialize(CKAPPositionableStream stream) {
  const Tag tag(stream);
  const StreamerBase::Owner streamer = LookupStreamer(tag.Text());
  CPOSObject object = streamer->DeserializeObject(stream);
  if (object.IsNull()) throw POSException("POSObjectStreamerImpl::Deserialize failure");
  return object;
}

namespace {

void ExpectStreamer(POSStreamer* streamer) {
  static_cast<void>(KAPInstanceOf<KAPImpl>(streamer, KAPUtilsAtoms::Get().POSStreamerImpl));
}

POSStreamer* NewStreamer() {
  const KAPUtilsAtoms& atoms = KAPUtilsAtoms::Get();
  return KAPContain(KAPInstanceOwner(KAP_T_MT::KAPNewClient<KAPImpl>()), atoms.POSStreamerImpl,
                    atoms.POSStreamerInterface, &DeletePOSStreamerImpl);
}

POSStreamer* POSStreamerNewPOSStreamerProc() noexcept { return KAPReportingError(&NewStreamer); }

void POSStreamerSerializeProc(POSStreamer* streamer, KAPPositionableStream* stream,
                              POSObject* object, const char* version) noexcept {
  KAPReportingError([=] {
    ExpectStreamer(streamer);
    KAPImpl::Serialize(CKAPPositionableStream(stream),
                       NPOSObjectImpl::BaseObject::Reference(object), version);
  });
}

POSObject* POSStreamerDeserializeProc(POSStreamer* streamer,
                                      KAPPositionableStream* stream) noexcept {
  return KAPReportingError([=] {
    ExpectStreamer(streamer);
    return KAPImpl::Deserialize(CKAPPositionableStream(stream)).Detach();
  });
}

}  // namespace

void DeletePOSStreamerImpl(void* streamer) noexcept {
  KAP_T_MT::KAPDeleteVirtualClientBase(streamer);
}

}  // namespace NPOSStreamerImpl

template <>
bool NPOSObjectImpl::RegisterProcs<KAP_T_MT::POSStreamerInterface>() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSStreamerInterface>(
      &NPOSStreamerImpl::POSStreamerNewPOSStreamerProc, &NPOSStreamerImpl::POSStreamerSerializeProc,
      &NPOSStreamerImpl::POSStreamerDeserializeProc);
}

namespace NPOSStreamerImpl {

bool RegisterPOSStreamerImpl() {
  return NPOSObjectImpl::RegisterSet<KAP_T_MT::POSStreamerInterfaceSet>();
}

void UnregisterPOSStreamerImpl() {
  NPOSObjectImpl::UnregisterSet<KAP_T_MT::POSStreamerInterfaceSet>();
}

}  // namespace NPOSStreamerImpl
