#pragma once

#include <atomic>
#include <cstddef>

#include "kap/KAPFilterInterface.h"

// A sink of the host. Arguments have been checked when it is called.
// Threads: references may be counted on any thread, else one at a time.
struct KAPDataSink {
 public:
  KAPDataSink(const KAPDataSink&) = delete;
  KAPDataSink& operator=(const KAPDataSink&) = delete;
  virtual ~KAPDataSink() = default;

  // All of the bytes, or an error.
  virtual KAPError* Write(const unsigned char* data, std::size_t count) noexcept = 0;
  // The target, whose reference passes over to the caller; null when there is none.
  virtual KAPDataSink* TakeTarget() noexcept { return nullptr; }

  std::atomic<long> fCount{1};

 protected:
  KAPDataSink() = default;
};

namespace KAPHost {

void AddSinkRef(KAPDataSink& sink) noexcept;
// Null is allowed. A loop, since filters make chains of any length.
void ReleaseSink(KAPDataSink* sink) noexcept;

// Forgets what it is given.
class NullSink final : public KAPDataSink {
 public:
  KAPError* Write(const unsigned char*, std::size_t) noexcept override { return nullptr; }
};

// A sink or filter object of a component. It is handed back exactly once, and what its Delete has
// to complain of is reported.
class SinkClient {
 public:
  SinkClient(void* client, KAP_T_MT::KAPSinkWriteProc write,
             KAP_T_MT::KAPSinkDeleteProc deleteClient) noexcept
      : fClient(client), fWrite(write), fDelete(deleteClient) {}
  SinkClient(const SinkClient&) = delete;
  SinkClient& operator=(const SinkClient&) = delete;
  ~SinkClient();

  KAPError* Write(const unsigned char* data, std::size_t count) const noexcept {
    return fWrite(fClient, data, count);
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
