// SPDX-License-Identifier: MIT
#include "streams/ClientStream.h"

#include "errors/Errors.h"

namespace KAPHost {

bool ClientStreamProcs::IsComplete(StreamCapability capability) const noexcept {
  const bool simple = fRead && fWrite && fDelete;
  const bool rewindable = fCreateRewindable && fRewind;
  const bool positionable = fCreatePositionable && fMark && fSeek;
  return simple && (capability == StreamCapability::kSimple || rewindable) &&
         (capability != StreamCapability::kPositionable || positionable);
}

ClientStream::~ClientStream() {
  if (fIsOwner) ReportError(CallComponent(fProcs.fDelete, fClient));
}

KAPError* ClientStream::Read(std::size_t& outCount, unsigned char* buffer,
                             std::size_t count) noexcept {
  std::size_t read = 0;
  if (KAPError* error = CallComponent(fProcs.fRead, &read, fClient, buffer, count)) return error;
  if (read > count) return MakeError("a client stream read more than it was asked for");
  outCount = read;
  return nullptr;
}

KAPError* ClientStream::Write(const unsigned char* bytes, std::size_t count) noexcept {
  return CallComponent(fProcs.fWrite, fClient, bytes, count);
}

KAPError* ClientStream::Rewind() noexcept { return CallComponent(fProcs.fRewind, fClient); }

KAPError* ClientStream::Mark(long& outPosition) noexcept {
  long position = 0;
  if (KAPError* error = CallComponent(fProcs.fMark, &position, fClient)) return error;
  outPosition = position;
  return nullptr;
}

KAPError* ClientStream::Seek(long offset, int origin) noexcept {
  return CallComponent(fProcs.fSeek, fClient, offset, origin);
}

// The new object has the capability of this one, which is at least the requested one.
KAPError* ClientStream::CreateIndependent(std::unique_ptr<Stream>& out,
                                          StreamCapability capability) noexcept {
  const auto create = capability == StreamCapability::kPositionable ? fProcs.fCreatePositionable
                                                                    : fProcs.fCreateRewindable;
  void* client = nullptr;
  if (KAPError* error = CallComponent(create, &client, fClient)) return error;
  if (!client) return MakeError("a client stream returned no independent stream");
  out.reset(new (std::nothrow) ClientStream(Capability(), client, fProcs));
  if (out) return nullptr;
  ReportError(CallComponent(fProcs.fDelete, client));
  return MemoryError();
}

}  // namespace KAPHost
