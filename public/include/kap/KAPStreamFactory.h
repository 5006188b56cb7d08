#pragma once

#include <cstddef>

#include "kap/KAPClientStream.h"
#include "kap/KAPInterfaceClient.h"
#include "kap/KAPStreamInterfaces.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

using KAPStreamFactoryClient = TKAPInterfaceClient<KAPStreamFactoryInterface>;

// Whether the factory's table is there and current.
inline bool GetGlobalKAPStreamFactoryInterfaceProcs() noexcept {
  return KAPStreamFactoryClient::TryRefresh();
}

// Makes streams of the host. Static only. Any thread.
// Ownership: the result is a handle with one reference for the caller; null when the factory's
//   table cannot be loaded. A client object passes over in any case: where there is no stream for
//   it, it is deleted.
// Errors: an error of the host is raised.
class CKAPStreamFactory {
 public:
  static KAPPositionableStream* NewPositionableMemoryStream();
  // Read-only, over a copy of the bytes.
  static KAPPositionableStream* NewPositionableBufferStream(const unsigned char* data,
                                                            std::size_t size);
  // `mode` as for fopen.
  static KAPPositionableStream* NewPositionableFileStream(const char* path, const char* mode);

  static KAPSimpleStream* NewClientSimpleStream(TKAPClientObject<KAPClientSimpleStream> client);
  static KAPRewindableStream* NewClientRewindableStream(
      TKAPClientObject<KAPClientRewindableStream> client);
  static KAPPositionableStream* NewClientPositionableStream(
      TKAPClientObject<KAPClientPositionableStream> client);
};

}  // namespace KAP_T_MT
