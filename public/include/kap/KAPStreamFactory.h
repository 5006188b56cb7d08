// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

#include "kap/KAPAdopt.h"
#include "kap/KAPClientStream.h"
#include "kap/KAPInterfaceClient.h"
#include "kap/KAPMemory.h"
#include "kap/KAPStreamInterfaces.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Typed calls of the host's stream factory.
using KAPStreamFactoryClient = TKAPInterfaceClient<KAPStreamFactoryInterface>;

// Loads the factory's table if it is stale. Whether it is loaded and current now.
inline bool GetGlobalKAPStreamFactoryInterfaceProcs() noexcept {
  return KAPStreamFactoryClient::TryRefresh();
}

// The factory's table: its slots, and the value of the unregister counter at which they were
// loaded. To read, for debugging; calls go through KAPStreamFactoryClient.
inline constexpr const auto& gKAPStreamFactoryInterface = KAPStreamFactoryClient::Slots();
inline constexpr const auto& gKAPStreamFactoryInterfaceCount = KAPStreamFactoryClient::LoadedAt();

// Makes streams of the host: over memory, over a file, or over a stream object of the component's
// own (KAPClientStream.h). For code that passes handles on; the constructors of the classes in
// KAPStream.h make the same streams.
//
//   *out = CKAPStreamFactory::NewClientSimpleStream(KAPNewClient<Lines>());
//
// Ownership: returns a handle with one reference for the caller. A client object that is handed
//   over belongs to the host afterwards; if the host makes no stream for it, it is deleted.
// Errors: throws the error that the host returns, and the core unknown error for a null client
//   object. Returns null when the factory's table cannot be loaded; the wrappers of streams turn
//   null into "invalid container".
// Threads: any.
class CKAPStreamFactory {
 public:
  // Empty, in memory.
  static TKAPNewHandle<KAPPositionableStream> NewPositionableMemoryStream();
  // Read-only, over a copy of the bytes.
  static TKAPNewHandle<KAPPositionableStream> NewPositionableBufferStream(const unsigned char* data,
                                                                          std::size_t size);
  // `mode` is one of fopen's.
  static TKAPNewHandle<KAPPositionableStream> NewPositionableFileStream(const char* path,
                                                                        const char* mode);
  // The same for a path without a terminator. TOQException for one that contains a zero byte.
  static TKAPNewHandle<KAPPositionableStream> NewPositionableFileStream(std::string_view path,
                                                                        const char* mode) {
    return NewPositionableFileStream(KAPTerminatedText(path).Text(), mode);
  }

  // Streams that forward to the client object.
  static TKAPNewHandle<KAPSimpleStream> NewClientSimpleStream(
      TKAPClientObject<KAPClientSimpleStream> client);
  static TKAPNewHandle<KAPRewindableStream> NewClientRewindableStream(
      TKAPClientObject<KAPClientRewindableStream> client);
  static TKAPNewHandle<KAPPositionableStream> NewClientPositionableStream(
      TKAPClientObject<KAPClientPositionableStream> client);
};

}  // namespace KAP_T_MT
