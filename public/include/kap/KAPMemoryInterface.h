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
          // memory. Callers never ask for 0 bytes. [any thread]
          TKAPMethod<"Alloc", "KAPMemAllocProc", void*(std::size_t size),
                     KAPMakes(KAPResource::kBlock, KAPFault::kBlock)>,
          // Resizes `block`, which may move, and keeps its bytes as far as they fit; a null block
          // asks for a new one. Null: out of memory, and the block is as it was. [exclusive]
          TKAPMethod<"Realloc", "KAPMemReallocProc", void*(void* block, std::size_t size),
                     KAPFails(KAPFault::kBlock)>,
          // Frees a block of this interface; null is ignored. [any thread]
          TKAPMethod<"Free", "KAPMemFreeProc", void(void* block), kKAPReleases>,
          // The usable size in bytes; it can exceed what was asked for. [any thread]
          TKAPMethod<"GetBlockSize", "KAPMemGetBlockSizeProc", std::size_t(void* block)>> {};

}  // namespace KAP_T_MT
