// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <utility>

#include "kap/KAPClientFilter.h"
#include "kap/KAPFilterInterface.h"
#include "kap/KAPReference.h"

// References to the host's sinks and filters. A sink takes bytes; a filter is a sink that
// transforms them and writes the result to a target, so filters form chains.
//
//   const CKAPDataSink end(KAPNewClient<Counter>());   // KAPClientFilter.h
//   CKAPFilter first = CKAPFilter::NewIdentityFilter(end);
//   first.Write(bytes, size);                          // Counter::Write
//   first.Close();
//
// Ownership: a reference holds one reference, released on destruction; copies share the sink. A
//   client object that is handed over belongs to the host afterwards; if the host makes no sink for
//   it, it is deleted.
// Errors: throws the error that the host returns. A table that cannot be loaded throws as
//   KAPInterfaceClient.h says. A null client object is the core unknown error, and so is a host
//   that returns neither an error nor a new sink. A null handle makes an empty reference; a call on
//   one throws what the host returns for it.
// Threads: one thread at a time per sink.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A sink of the host, or none.
class CKAPDataSink : public TKAPReference<KAPFilterInterface, KAPDataSink> {
 public:
  CKAPDataSink() noexcept = default;        // none
  [[nodiscard]] static CKAPDataSink New();  // discards its bytes
  // A sink that forwards to the client object.
  explicit CKAPDataSink(TKAPClientObject<KAPClientDataSink> client);
  using TKAPReference::TKAPReference;

  void Write(const unsigned char* data, std::size_t size);  // all bytes, or throws
  [[nodiscard]] bool IsFilter() const;                      // false for an empty reference

  // As the constructor, but returns a handle with one reference for the caller, and null instead of
  // throwing when the table cannot be loaded or the host returns neither an error nor a sink.
  static TKAPNewHandle<KAPDataSink> _NewClientDataSink(TKAPClientObject<KAPClientDataSink> client);
};

// A filter of the host, or none.
class CKAPFilter : public CKAPDataSink {
 public:
  CKAPFilter() noexcept = default;  // none
  // A filter that forwards to the client object. The filter holds a reference to the target, for
  // PeekTarget and the state of the chain. Deliberate: neither here nor in SetDataSink does the
  // client object learn of it; see KAPClientFilter.
  CKAPFilter(const CKAPDataSink& target, TKAPClientObject<KAPClientFilter> client);
  // Adds a reference; adopts the caller's, or that of a new handle.
  explicit CKAPFilter(KAPFilter* handle) : CKAPDataSink(handle) {}
  explicit CKAPFilter(TKAPNewHandle<KAPFilter> made) noexcept : CKAPDataSink(std::move(made)) {}
  CKAPFilter(KAPFilter* handle, KAPAdopt adopt) noexcept : CKAPDataSink(handle, adopt) {}

  // A filter that writes its bytes to the target unchanged. Not a constructor, which would look
  // like a copy.
  [[nodiscard]] static CKAPFilter NewIdentityFilter(const CKAPDataSink& target);

  void Close();                                    // afterwards Write is an error
  [[nodiscard]] CKAPFilter GetVellumcodeFilter();  // the reversing filter; empty when there is none
  void SetDataSink(const CKAPDataSink& target);    // an error when the chain would lead to itself
  [[nodiscard]] CKAPDataSink PeekTarget() const;   // empty for a sink that is not a filter
  // The number of closed filters from this one to the end of the chain.
  [[nodiscard]] unsigned long GetChainState() const;
  void ResetChainState();  // opens all of them

  // As CKAPDataSink::_NewClientDataSink.
  static TKAPNewHandle<KAPFilter> _NewClientFilter(const CKAPDataSink& target,
                                                   TKAPClientObject<KAPClientFilter> client);
};

// A filter that encodes images, or none. The coder is the client object's; the host forwards the
// parameters to it. Calling them on another filter is an error.
class CKAPFilterJPEG : public CKAPFilter {
 public:
  CKAPFilterJPEG() noexcept = default;  // none
  // A filter that forwards to the client object; the target as for CKAPFilter.
  CKAPFilterJPEG(const CKAPDataSink& target, TKAPClientObject<KAPClientFilterJPEG> client);
  // Adds a reference; adopts the caller's, or that of a new handle.
  explicit CKAPFilterJPEG(KAPFilter* handle) : CKAPFilter(handle) {}
  explicit CKAPFilterJPEG(TKAPNewHandle<KAPFilter> made) noexcept : CKAPFilter(std::move(made)) {}
  CKAPFilterJPEG(KAPFilter* handle, KAPAdopt adopt) noexcept : CKAPFilter(handle, adopt) {}

  void SetImageParameters(int width, int height, int channels);  // in pixels
  void SetCompressionParameters(float quality);                  // the coder defines the range

  // As CKAPDataSink::_NewClientDataSink.
  static TKAPNewHandle<KAPFilter> _NewFilterJPEG(const CKAPDataSink& target,
                                                 TKAPClientObject<KAPClientFilterJPEG> client);
};

}  // namespace KAP_T_MT
