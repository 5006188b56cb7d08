#include <malloc.h>

#include <cstdlib>

#include "accounting/Accounting.h"
#include "binder/Registration.h"
#include "kap/KAPMemoryInterface.h"

// The procedures of KAPMemoryInterface. Blocks come straight from malloc, which knows their sizes:
// no header, no pool, so that AddressSanitizer sees every block as it is.

namespace KAPHost {

namespace {

long UsableSize(void* block) noexcept { return static_cast<long>(malloc_usable_size(block)); }

// A size of 0 also returns a block.
void* Alloc(std::size_t size) noexcept {
  void* block = std::malloc(size);
  if (block) Count(KAPResource::kBlock, 1, UsableSize(block));
  return block;
}

void* Realloc(void* block, std::size_t size) noexcept {
  if (!block) return Alloc(size);
  const long before = UsableSize(block);
  void* moved = std::realloc(block, size != 0 ? size : 1);  // a size of 0 would free the block
  if (moved) Count(KAPResource::kBlock, 0, UsableSize(moved) - before);
  return moved;
}

void Free(void* block) noexcept {
  if (!block) return;
  Count(KAPResource::kBlock, -1, -UsableSize(block));
  std::free(block);
}

std::size_t GetBlockSize(void* block) noexcept { return malloc_usable_size(block); }

}  // namespace

template <>
void RegisterService<KAP_T_MT::KAPMemoryInterface>(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPMemoryInterface, &Alloc, &Realloc, &Free, &GetBlockSize>(binder);
}

}  // namespace KAPHost
