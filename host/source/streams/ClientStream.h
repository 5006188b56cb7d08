// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPStreamInterfaces.h"
#include "streams/Stream.h"

namespace KAPHost {

// The procedures of a component's stream object; those beyond its capability are null.
struct ClientStreamProcs {
  KAP_T_MT::KAPClientReadProc fRead;
  KAP_T_MT::KAPClientWriteProc fWrite;
  KAP_T_MT::KAPClientDeleteProc fDelete;
  KAP_T_MT::KAPClientCreateStreamProc fCreateRewindable = nullptr;
  KAP_T_MT::KAPClientRewindProc fRewind = nullptr;
  KAP_T_MT::KAPClientCreateStreamProc fCreatePositionable = nullptr;
  KAP_T_MT::KAPClientMarkProc fMark = nullptr;
  KAP_T_MT::KAPClientSeekProc fSeek = nullptr;

  bool IsComplete(StreamCapability capability) const noexcept;
};

// A stream object of a component. It is handed to its delete procedure exactly once; an error of
// that is reported, since releasing returns no result.
class ClientStream final : public Stream {
 public:
  ClientStream(StreamCapability capability, void* client, const ClientStreamProcs& procs) noexcept
      : Stream(capability, "client"), fClient(client), fProcs(procs) {}
  ~ClientStream() override;

  // Leaves the object to its maker: it is not deleted.
  void Disown() noexcept { fIsOwner = false; }

  KAPError* Read(std::size_t& outCount, unsigned char* buffer, std::size_t count) noexcept override;
  KAPError* Write(const unsigned char* bytes, std::size_t count) noexcept override;
  KAPError* Rewind() noexcept override;
  KAPError* Mark(long& outPosition) noexcept override;
  KAPError* Seek(long offset, int origin) noexcept override;
  KAPError* CreateIndependent(std::unique_ptr<Stream>& out,
                              StreamCapability capability) noexcept override;

 private:
  void* const fClient;
  const ClientStreamProcs fProcs;
  bool fIsOwner = true;
};

}  // namespace KAPHost
