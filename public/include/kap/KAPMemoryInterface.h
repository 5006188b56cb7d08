// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Memory of the host, for what crosses the binder and for the objects of components. See
// KAPHostInterfaces.h for the conventions.
struct KAPMemoryInterface
    : TKAPInterface<
          "KAPMemoryInterface",
          // A block of at least `size` bytes, 16-byte aligned, not initialised. Null: out of
          // memory. `size` is not 0. [any thread]
          TKAPMethod<"Alloc", "KAPMemAllocProc", void*(std::size_t size),
                     KAPMakes(KAPResource::kBlock, KAPFault::kBlock)>,
          // Resizes `block`, which may move, and keeps the bytes that fit; with a null block as
          // Alloc. Null: out of memory, and the block is unchanged. [exclusive]
          TKAPMethod<"Realloc", "KAPMemReallocProc", void*(void* block, std::size_t size),
                     KAPFails(KAPFault::kBlock)>,
          // Frees a block of this interface; null is ignored. [any thread]
          TKAPMethod<"Free", "KAPMemFreeProc", void(void* block), kKAPReleases>,
          // The usable size in bytes, at least the size that was requested. [any thread]
          TKAPMethod<"GetBlockSize", "KAPMemGetBlockSizeProc", std::size_t(void* block)>> {};

}  // namespace KAP_T_MT
