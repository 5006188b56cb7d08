#pragma once

#include <cstddef>

#include "kap/KAPClientFilter.h"
#include "kap/KAPFilterInterface.h"
#include "kap/KAPReference.h"

// References to sinks and filters of the host.
// Ownership: each holds one reference, released on destruction; copies share the sink. A client
//   object passes over in any case: where there is no sink for it, it is deleted.
// Errors: an error of the host is raised; "Missing Interface" for a client object that could not
//   be handed over. A null handle gives an empty reference, which the host refuses where a sink is
//   needed.
// Threads: one sink is used by one thread at a time.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

class CKAPDataSink : public TKAPReference<KAPFilterInterface, KAPDataSink> {
 public:
  CKAPDataSink();  // one that forgets what it is given
  explicit CKAPDataSink(TKAPClientObject<KAPClientDataSink> client);
  using TKAPReference::TKAPReference;

  void Write(const unsigned char* data, std::size_t size);  // all of them
  bool IsFilter() const;

  // Hands the object over. One reference for the caller; null when the table cannot be loaded.
  static KAPDataSink* _NewClientDataSink(TKAPClientObject<KAPClientDataSink> client);
};

// A sink that hands what it makes of its bytes to a target.
class CKAPFilter : public CKAPDataSink {
 public:
  CKAPFilter(const CKAPDataSink& target, TKAPClientObject<KAPClientFilter> client);
  explicit CKAPFilter(KAPFilter* handle) : CKAPDataSink(handle) {}
  CKAPFilter(KAPFilter* handle, KAPAdopt adopt) noexcept : CKAPDataSink(handle, adopt) {}

  // A filter that hands on what it is given. Not a constructor, which would look like a copy.
  static CKAPFilter NewIdentityFilter(const CKAPDataSink& target);

  void Close();
  CKAPFilter GetVellumcodeFilter();  // empty when there is none
  void SetDataSink(const CKAPDataSink& target);
  CKAPDataSink PeekTarget() const;
  unsigned long GetChainState() const;
  void ResetChainState();

  static KAPFilter* _NewClientFilter(const CKAPDataSink& target,
                                     TKAPClientObject<KAPClientFilter> client);
};

// A filter whose coder is the client's; the host forwards the parameters to it.
class CKAPFilterJPEG : public CKAPFilter {
 public:
  CKAPFilterJPEG(const CKAPDataSink& target, TKAPClientObject<KAPClientFilterJPEG> client);
  explicit CKAPFilterJPEG(KAPFilter* handle) : CKAPFilter(handle) {}
  CKAPFilterJPEG(KAPFilter* handle, KAPAdopt adopt) noexcept : CKAPFilter(handle, adopt) {}

  void SetImageParameters(int width, int height, int channels);
  void SetCompressionParameters(float quality);

  static KAPFilter* _NewFilterJPEG(const CKAPDataSink& target,
                                   TKAPClientObject<KAPClientFilterJPEG> client);
};

}  // namespace KAP_T_MT
