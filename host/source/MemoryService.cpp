#include <malloc.h>

#include <cstdlib>

#include "Gate.h"
#include "Services.h"
#include "Tally.h"

// The procedures of KAPMemoryInterface. Blocks come straight from malloc, which knows their sizes:
// no header, no pool, so that AddressSanitizer sees every block as it is.

namespace KAPHost {

namespace {

long UsableSize(void* block) noexcept { return static_cast<long>(malloc_usable_size(block)); }

// Of 0 bytes it gives a block too.
void* Alloc(std::size_t size) noexcept {
  if (Fails(KAPFault::kBlock, size)) return nullptr;
  void* block = std::malloc(size);
  if (block != nullptr) Count(kBlockSlot, 1, UsableSize(block));
  return block;
}

// A null block asks for a new one. When the result is null the block stays as it was.
void* Realloc(void* block, std::size_t size) noexcept {
  if (block == nullptr) return Alloc(size);
  if (Fails(KAPFault::kBlock, size)) return nullptr;
  const long before = UsableSize(block);
  void* moved = std::realloc(block, size != 0 ? size : 1);  // of 0 bytes it would be freed
  if (moved != nullptr) Count(kBlockSlot, 0, UsableSize(moved) - before);
  return moved;
}

void Free(void* block) noexcept {
  if (block == nullptr) return;
  Count(kBlockSlot, -1, -UsableSize(block));
  std::free(block);
}

// All of it may be used; it can be more than was asked for.
std::size_t GetBlockSize(void* block) noexcept { return malloc_usable_size(block); }

void RegisterMemory(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPMemoryInterface>(binder, &Alloc, &Realloc, &Free, &GetBlockSize);
}

void CountBlocks(Snapshot& books) { books.Add(KAPResource::kBlock, "", TallyTotal(kBlockSlot)); }

}  // namespace

const Service kMemoryService = {&RegisterMemory, &CountBlocks};

}  // namespace KAPHost
