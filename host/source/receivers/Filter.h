#pragma once

#include "receivers/DataSink.h"

namespace KAPHost {

// A sink with a target, which it holds by a reference. Once closed it takes no bytes until the
// state of its chain is reset. The chain of a filter is the filter itself and those that follow it
// as targets, up to the first sink that is no filter.
class Filter : public KAPDataSink {
 public:
  explicit Filter(KAPDataSink& target) noexcept;
  ~Filter() override;

  KAPError* Write(const unsigned char* data, std::size_t count) noexcept final;
  KAPDataSink* TakeTarget() noexcept final;

  KAPDataSink* Target() const noexcept { return fTarget; }
  // An error when the filter would lead to itself.
  KAPError* SetTarget(KAPDataSink& target) noexcept;

  // Does nothing when it is closed already. A filter that could not be closed is open.
  KAPError* Close() noexcept;
  // How many of the chain are closed.
  unsigned long ChainState() const noexcept;
  // Opens all of the chain.
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

// Hands on what it is given.
class IdentityFilter final : public Filter {
 public:
  using Filter::Filter;

  KAPError* GetVellumcodeFilter(KAPDataSink*& out) noexcept override;

 private:
  KAPError* DoWrite(const unsigned char* data, std::size_t count) noexcept override {
    return Target()->Write(data, count);
  }
  KAPError* DoClose() noexcept override { return nullptr; }
};

// What a component hands over with a filter object; the last two are those of a JPEG filter.
struct ClientFilterProcs {
  KAP_T_MT::KAPSinkWriteProc fWrite;
  KAP_T_MT::KAPSinkDeleteProc fDelete;
  KAP_T_MT::KAPFilterCloseProc fClose;
  KAP_T_MT::KAPFilterGetVellumcodeFilterProc fGetVellumcodeFilter;
  KAP_T_MT::KAPImageParmsProc fImageParms = nullptr;
  KAP_T_MT::KAPCompressionParmsProc fCompressionParms = nullptr;
};

// The client's object writes to the target itself.
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
  KAPError* DoClose() noexcept final { return fProcs.fClose(fClient.Client()); }
};

class JPEGFilter final : public ClientFilter {
 public:
  using ClientFilter::ClientFilter;

  KAPError* SetImageParameters(int width, int height, int channels) noexcept {
    return fProcs.fImageParms(fClient.Client(), width, height, channels);
  }
  KAPError* SetCompressionParameters(float quality) noexcept {
    return fProcs.fCompressionParms(fClient.Client(), quality);
  }
};

}  // namespace KAPHost
