// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "base/RefCount.h"
#include "errors/Errors.h"
#include "kap/KAPFilterInterface.h"

// A sink of the host. Its callers check arguments.
// Threads: references may be counted on any thread; all else is for one thread at a time.
struct KAPDataSink {
 public:
  KAPDataSink(const KAPDataSink&) = delete;
  KAPDataSink& operator=(const KAPDataSink&) = delete;
  virtual ~KAPDataSink() = default;

  // All of the bytes, or an error.
  virtual KAPError* Write(const unsigned char* data, std::size_t count) noexcept = 0;
  // The sink that takes this one's bytes as they are; null when Write takes them.
  virtual KAPDataSink* PassesTo() const noexcept { return nullptr; }
  // The target and its reference, which the caller now owns; null when there is none.
  virtual KAPDataSink* TakeTarget() noexcept { return nullptr; }

  KAPHost::RefCount fCount;

 protected:
  KAPDataSink() = default;
};

namespace KAPHost {

// False when there was no reference to release: the sink is being destroyed. A loop: filters form
// chains of any length.
bool ReleaseSink(KAPDataSink& sink) noexcept;

// Discards its bytes.
class NullSink final : public KAPDataSink {
 public:
  KAPError* Write(const unsigned char*, std::size_t) noexcept override { return nullptr; }
};

// A sink or filter object of a component. It is handed to its delete procedure exactly once; an
// error of that is reported, since releasing returns no result.
class SinkClient {
 public:
  SinkClient(void* client, KAP_T_MT::KAPSinkWriteProc write,
             KAP_T_MT::KAPSinkDeleteProc deleteClient) noexcept
      : fClient(client), fWrite(write), fDelete(deleteClient) {}
  SinkClient(const SinkClient&) = delete;
  SinkClient& operator=(const SinkClient&) = delete;
  ~SinkClient();

  KAPError* Write(const unsigned char* data, std::size_t count) const noexcept {
    return CallComponent(fWrite, fClient, data, count);
  }
  void* Client() const noexcept { return fClient; }

 private:
  void* const fClient;
  const KAP_T_MT::KAPSinkWriteProc fWrite;
  const KAP_T_MT::KAPSinkDeleteProc fDelete;
};

class ClientSink final : public KAPDataSink {
 public:
  ClientSink(void* client, KAP_T_MT::KAPSinkWriteProc write,
             KAP_T_MT::KAPSinkDeleteProc deleteClient) noexcept
      : fClient(client, write, deleteClient) {}

  KAPError* Write(const unsigned char* data, std::size_t count) noexcept override {
    return fClient.Write(data, count);
  }

 private:
  const SinkClient fClient;
};

}  // namespace KAPHost
