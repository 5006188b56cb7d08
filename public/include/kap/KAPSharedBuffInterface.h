// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Resizes the storage of a buffer. Null: out of memory, and the storage is unchanged.
using KAPGrowProc = void* (*)(void* data, std::size_t size, void* clientData);

// Shared buffers: blocks of bytes with reference counts, for several components. See
// KAPHostInterfaces.h for the conventions and KAPSharedBuff.h for the classes.
struct KAPSharedBuffInterface
    : TKAPInterface<
          "KAPSharedBuffInterface",
          // A buffer of `size` bytes: one reference. `data` null: zeroed storage of the host.
          // Otherwise the buffer takes over `data`, and the last release passes it to `deleteProc`,
          // which may be null; so may `growProc` and its `clientData`. Null: out of memory, and the
          // data stays the caller's. [any thread]
          TKAPMethod<"NewBuffer", "KAPSharedBuffNewBufferV3Proc",
                     KAPSharedBuffer*(std::size_t size, void* data, KAPDeleteProc deleteProc,
                                      KAPGrowProc growProc, void* clientData),
                     KAPMakes(KAPResource::kBuffer, KAPFault::kBuffer)>,
          // Deletes a buffer that has no reference; otherwise does nothing. [any thread]
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
