#pragma once

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Gives a buffer's storage another size; null when it cannot, and the storage is as it was.
using KAPGrowProc = void* (*)(void* data, std::size_t size, void* clientData);

// Blocks of bytes that several components share. See KAPHostInterfaces.h for the conventions.
struct KAPSharedBuffInterface
    : TKAPInterface<
          "KAPSharedBuffInterface",
          // `data` null: the host's own zeroed storage of that size. Otherwise the buffer is
          // `data`, handed to `deleteProc` at its end. Null: out of memory, the data stays the
          // caller's.
          TKAPMethod<"NewBuffer", "KAPSharedBuffNewBufferV3Proc",
                     KAPSharedBuffer*(std::size_t size, void* data, KAPDeleteProc deleteProc,
                                      KAPGrowProc growProc, void* clientData)>,
          // Destroys the buffer when no reference is left.
          TKAPMethod<"DeleteUnowned", "KAPSharedBuffDelUnownedProc", void(KAPSharedBuffer* buffer)>,
          TKAPMethod<"AddRef", "KAPSharedBuffAddRefProc", void(KAPSharedBuffer* buffer)>,
          TKAPMethod<"Release", "KAPSharedBuffReleaseProc", void(KAPSharedBuffer* buffer)>,
          TKAPMethod<"GetBuffer", "KAPSharedBuffGetBufferProc",
                     unsigned char*(KAPSharedBuffer* buffer)>,
          TKAPMethod<"GetSize", "KAPSharedBuffGetSizeProc", std::size_t(KAPSharedBuffer* buffer)>> {
};

}  // namespace KAP_T_MT
