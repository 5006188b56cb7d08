#pragma once

#include <cstddef>

#include "kap/KAPClientStream.h"
#include "kap/KAPInterfaceClient.h"
#include "kap/KAPStreamInterfaces.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

using KAPStreamFactoryClient = TKAPInterfaceClient<KAPStreamFactoryInterface>;

// Loads the factory's table if it is stale. Whether it is loaded and current now.
inline bool GetGlobalKAPStreamFactoryInterfaceProcs() noexcept {
  return KAPStreamFactoryClient::TryRefresh();
}

// Makes streams of the host: over memory, over a file, or over a stream object of the component's
// own (KAPClientStream.h). CKAPPositionableStream wraps the first two.
//
//   CKAPSimpleStream lines(CKAPStreamFactory::NewClientSimpleStream(KAPNewClient<Lines>()),
//                          KAPAdopt());
//
// Ownership: returns a handle with one reference for the caller. A client object that is handed
//   over belongs to the host afterwards; if the host makes no stream for it, it is deleted.
// Errors: throws the error that the host returns. Returns null when the factory's table cannot be
//   loaded; the wrappers of streams turn null into "invalid container".
// Threads: any.
class CKAPStreamFactory {
 public:
  static KAPPositionableStream* NewPositionableMemoryStream();
  // Read-only, over a copy of the bytes.
  static KAPPositionableStream* NewPositionableBufferStream(const unsigned char* data,
                                                            std::size_t size);
  // `mode` is one of fopen's.
  static KAPPositionableStream* NewPositionableFileStream(const char* path, const char* mode);

  static KAPSimpleStream* NewClientSimpleStream(TKAPClientObject<KAPClientSimpleStream> client);
  static KAPRewindableStream* NewClientRewindableStream(
      TKAPClientObject<KAPClientRewindableStream> client);
  static KAPPositionableStream* NewClientPositionableStream(
      TKAPClientObject<KAPClientPositionableStream> client);
};

}  // namespace KAP_T_MT
