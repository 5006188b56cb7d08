#pragma once

#include <cstddef>

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Gives a buffer's storage another size; null when it cannot, and the storage is as it was.
using KAPGrowProc = void* (*)(void* data, std::size_t size, void* clientData);

// Blocks of bytes that several components share, with reference counts. See KAPHostInterfaces.h for
// the conventions.
struct KAPSharedBuffInterface
    : TKAPInterface<
          "KAPSharedBuffInterface",
          // A buffer of `size` bytes: one reference. `data` null: zeroed storage of the host.
          // Otherwise the buffer takes `data` over and hands it to `deleteProc` (may be null) at
          // its end; `growProc` and its `clientData` may be null. Null: out of memory, and the data
          // stays the caller's. [any thread]
          TKAPMethod<"NewBuffer", "KAPSharedBuffNewBufferV3Proc",
                     KAPSharedBuffer*(std::size_t size, void* data, KAPDeleteProc deleteProc,
                                      KAPGrowProc growProc, void* clientData),
                     KAPMakes(KAPResource::kBuffer, KAPFault::kBuffer)>,
          // Destroys the buffer when it has no reference, else does nothing. [any thread]
          TKAPMethod<"DeleteUnowned", "KAPSharedBuffDelUnownedProc", void(KAPSharedBuffer* buffer),
                     kKAPReleases>,
          // Adds one reference; null is ignored. [any thread]
          TKAPMethod<"AddRef", "KAPSharedBuffAddRefProc", void(KAPSharedBuffer* buffer)>,
          // Releases one reference; null is ignored. [any thread]
          TKAPMethod<"Release", "KAPSharedBuffReleaseProc", void(KAPSharedBuffer* buffer),
                     kKAPReleases>,
          // The bytes, borrowed: they live as long as the buffer. Null for null. [any thread]
          TKAPMethod<"GetBuffer", "KAPSharedBuffGetBufferProc",
                     unsigned char*(KAPSharedBuffer* buffer)>,
          // The size in bytes; 0 for null. [any thread]
          TKAPMethod<"GetSize", "KAPSharedBuffGetSizeProc", std::size_t(KAPSharedBuffer* buffer)>> {
};

}  // namespace KAP_T_MT
