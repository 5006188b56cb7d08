// SPDX-License-Identifier: MIT
#include <new>

#include "accounting/Accounting.h"
#include "binder/Registration.h"
#include "errors/Errors.h"
#include "faults/Gate.h"
#include "receivers/Filter.h"

// The procedures of KAPFilterInterface.

namespace KAPHost {

namespace {

using namespace KAP_T_MT;

// Makes a sink with one reference.
template <class Sink, class... Args>
KAPError* New(KAPDataSink** out, Args&&... args) noexcept {
  *out = new (std::nothrow) Sink(args...);
  if (!*out) return MemoryError();
  Count(KAPResource::kSink, 1, 1);
  return nullptr;
}

KAPError* NewNullDataSink(KAPDataSink** out) noexcept { return New<NullSink>(out); }

KAPError* NewClientDataSink(KAPDataSink** out, void* client, KAPSinkWriteProc write,
                            KAPSinkDeleteProc deleteClient) noexcept {
  if (!client || !write || !deleteClient) return InvalidArgument();
  return New<ClientSink>(out, client, write, deleteClient);
}

// Makes a filter with one reference, which holds one to the target.
template <class Kind, class... Args>
KAPError* NewFilter(KAPDataSink** out, KAPDataSink& target, Args&&... args) noexcept {
  if (!target.fCount.Add()) return MakeError("the target is being destroyed");
  KAPError* const error = New<Kind>(out, target, args...);
  if (error) ReleaseSink(target);
  return error;
}

KAPError* NewIdentityFilter(KAPDataSink** out, KAPDataSink* target) noexcept {
  if (!target) return InvalidArgument();
  return NewFilter<IdentityFilter>(out, *target);
}

bool IsComplete(const ClientFilterProcs& procs) noexcept {
  return procs.fWrite && procs.fDelete && procs.fClose && procs.fGetVellumcodeFilter;
}

template <class Kind>
KAPError* NewOfClient(KAPDataSink** out, KAPDataSink* target, void* client,
                      const ClientFilterProcs& procs) noexcept {
  if (!target || !client || !IsComplete(procs)) return InvalidArgument();
  return NewFilter<Kind>(out, *target, client, procs);
}

KAPError* NewClientFilter(KAPDataSink** out, KAPDataSink* target, void* client,
                          KAPSinkWriteProc write, KAPSinkDeleteProc deleteClient,
                          KAPFilterCloseProc close,
                          KAPFilterGetVellumcodeFilterProc getVellumcodeFilter) noexcept {
  return NewOfClient<ClientFilter>(out, target, client,
                                   {write, deleteClient, close, getVellumcodeFilter});
}

KAPError* NewFilterJPEG(KAPDataSink** out, KAPDataSink* target, void* client,
                        KAPSinkWriteProc write, KAPSinkDeleteProc deleteClient,
                        KAPFilterCloseProc close,
                        KAPFilterGetVellumcodeFilterProc getVellumcodeFilter,
                        KAPImageParmsProc imageParms,
                        KAPCompressionParmsProc compressionParms) noexcept {
  const bool complete = imageParms && compressionParms;
  return NewOfClient<JPEGFilter>(
      out, target, complete ? client : nullptr,
      {write, deleteClient, close, getVellumcodeFilter, imageParms, compressionParms});
}

void AddRef(KAPDataSink* sink) noexcept {
  if (sink && sink->fCount.Add()) Count(KAPResource::kSink, 0, 1);
}

// Without a host, the component whose procedure deletes the object may be unloaded as well.
void Release(KAPDataSink* sink) noexcept {
  if (sink && !IsClosed() && ReleaseSink(*sink)) Count(KAPResource::kSink, 0, -1);
}

// Without a host, nothing is forwarded to a component, here and below. A loop, since filters that
// pass bytes on form chains of any length.
KAPError* Write(KAPDataSink* sink, const unsigned char* data, std::size_t count) noexcept {
  if (!sink || (!data && count != 0)) return InvalidArgument();
  if (IsClosed()) return MemoryError();
  while (KAPDataSink* const next = sink->PassesTo()) sink = next;
  return sink->Write(data, count);
}

bool IsFilter(KAPDataSink* sink) noexcept { return dynamic_cast<Filter*>(sink); }

// Runs operation(filter), or returns an error when the sink is not a filter of that kind.
template <class Kind, class Operation>
KAPError* WithFilter(KAPDataSink* sink, Operation operation) noexcept {
  if (IsClosed()) return MemoryError();
  auto* const filter = dynamic_cast<Kind*>(sink);
  return filter ? operation(*filter) : MakeError("invalid filter");
}

KAPError* Close(KAPDataSink* sink) noexcept {
  return WithFilter<Filter>(sink, [](Filter& filter) { return filter.Close(); });
}

KAPError* GetVellumcodeFilter(KAPDataSink** out, KAPDataSink* sink) noexcept {
  return WithFilter<Filter>(sink, [&](Filter& filter) { return filter.GetVellumcodeFilter(*out); });
}

KAPError* SetDataSink(KAPDataSink* sink, KAPDataSink* target) noexcept {
  if (!target) return InvalidArgument();
  return WithFilter<Filter>(sink, [&](Filter& filter) { return filter.SetTarget(*target); });
}

KAPDataSink* PeekTarget(KAPDataSink* sink) noexcept {
  const auto* const filter = dynamic_cast<Filter*>(sink);
  return filter ? filter->Target() : nullptr;
}

KAPError* SetImageParameters(KAPDataSink* sink, int width, int height, int channels) noexcept {
  return WithFilter<JPEGFilter>(
      sink, [&](JPEGFilter& filter) { return filter.SetImageParameters(width, height, channels); });
}

KAPError* SetCompressionParameters(KAPDataSink* sink, float quality) noexcept {
  return WithFilter<JPEGFilter>(
      sink, [&](JPEGFilter& filter) { return filter.SetCompressionParameters(quality); });
}

KAPError* GetChainState(unsigned long* out, KAPDataSink* sink) noexcept {
  return WithFilter<Filter>(sink, [&](const Filter& filter) -> KAPError* {
    *out = filter.ChainState();
    return nullptr;
  });
}

KAPError* ResetChainState(KAPDataSink* sink) noexcept {
  return WithFilter<Filter>(sink, [](Filter& filter) -> KAPError* {
    filter.ResetChainState();
    return nullptr;
  });
}

}  // namespace

template <>
void RegisterService<KAPFilterInterface>(Binder& binder) {
  RegisterProcs<KAPFilterInterface, &NewNullDataSink, &NewClientDataSink, &NewIdentityFilter,
                &NewClientFilter, &NewFilterJPEG, &AddRef, &Release, &Write, &IsFilter, &Close,
                &GetVellumcodeFilter, &SetDataSink, &PeekTarget, &SetImageParameters,
                &SetCompressionParameters, &GetChainState, &ResetChainState>(binder);
}

}  // namespace KAPHost
