// SPDX-License-Identifier: MIT
#pragma once

#include "receivers/DataSink.h"

namespace KAPHost {

// A sink with a target, to which it holds a reference. A closed filter takes no bytes until the
// state of its chain is reset. The chain of a filter is the filter itself and the filters that
// follow it as targets, up to the first sink that is not a filter.
class Filter : public KAPDataSink {
 public:
  // Takes over a reference to the target.
  explicit Filter(KAPDataSink& target) noexcept : fTarget(&target) {}
  ~Filter() override;

  KAPError* Write(const unsigned char* data, std::size_t count) noexcept final;
  KAPDataSink* TakeTarget() noexcept final;

  KAPDataSink* Target() const noexcept { return fTarget; }
  bool IsClosed() const noexcept { return fIsClosed; }
  // An error when the filter would become its own target, directly or through others, and when the
  // target is being destroyed.
  KAPError* SetTarget(KAPDataSink& target) noexcept;

  // A no-op on a closed filter. After an error the filter is open.
  KAPError* Close() noexcept;
  // The number of closed filters in the chain.
  unsigned long ChainState() const noexcept;
  // Opens every filter of the chain.
  void ResetChainState() noexcept;

  // A new reference; null when there is none.
  virtual KAPError* GetVellumcodeFilter(KAPDataSink*& out) noexcept = 0;

 protected:
  virtual KAPError* DoWrite(const unsigned char* data, std::size_t count) noexcept = 0;
  virtual KAPError* DoClose() noexcept = 0;

 private:
  // Null at the end of the chain.
  Filter* Next() const noexcept { return dynamic_cast<Filter*>(fTarget); }

  KAPDataSink* fTarget;
  bool fIsClosed = false;
};

// Passes its bytes on as they are.
class IdentityFilter final : public Filter {
 public:
  using Filter::Filter;

  KAPDataSink* PassesTo() const noexcept override { return IsClosed() ? nullptr : Target(); }
  KAPError* GetVellumcodeFilter(KAPDataSink*& out) noexcept override;

 private:
  KAPError* DoWrite(const unsigned char* data, std::size_t count) noexcept override {
    return Target()->Write(data, count);
  }
  KAPError* DoClose() noexcept override { return nullptr; }
};

// The procedures of a component's filter object; the last two are for JPEG filters.
struct ClientFilterProcs {
  KAP_T_MT::KAPSinkWriteProc fWrite;
  KAP_T_MT::KAPSinkDeleteProc fDelete;
  KAP_T_MT::KAPFilterCloseProc fClose;
  KAP_T_MT::KAPFilterGetVellumcodeFilterProc fGetVellumcodeFilter;
  KAP_T_MT::KAPImageParmsProc fImageParms = nullptr;
  KAP_T_MT::KAPCompressionParmsProc fCompressionParms = nullptr;
};

// A component's filter, which writes to the target itself.
class ClientFilter : public Filter {
 public:
  ClientFilter(KAPDataSink& target, void* client, const ClientFilterProcs& procs) noexcept
      : Filter(target), fClient(client, procs.fWrite, procs.fDelete), fProcs(procs) {}

  KAPError* GetVellumcodeFilter(KAPDataSink*& out) noexcept final;

 protected:
  const SinkClient fClient;
  const ClientFilterProcs fProcs;

 private:
  KAPError* DoWrite(const unsigned char* data, std::size_t count) noexcept final {
    return fClient.Write(data, count);
  }
  KAPError* DoClose() noexcept final { return CallComponent(fProcs.fClose, fClient.Client()); }
};

class JPEGFilter final : public ClientFilter {
 public:
  using ClientFilter::ClientFilter;

  KAPError* SetImageParameters(int width, int height, int channels) noexcept {
    return CallComponent(fProcs.fImageParms, fClient.Client(), width, height, channels);
  }
  KAPError* SetCompressionParameters(float quality) noexcept {
    return CallComponent(fProcs.fCompressionParms, fClient.Client(), quality);
  }
};

}  // namespace KAPHost
