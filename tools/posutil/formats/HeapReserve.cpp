#include "formats/HeapReserve.h"

#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

namespace PosUtil {

namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;
constexpr int kLargestHeapBlock = 32 << 20;  // larger blocks never come from the heap

void AdviseLargePages(void* block, std::size_t size) {
  const auto begin = reinterpret_cast<std::uintptr_t>(block);
  const std::size_t skipped = (kLargePage - begin % kLargePage) % kLargePage;
  if (size < skipped + kLargePage) return;
  const std::size_t usable = (size - skipped) / kLargePage * kLargePage;
  static_cast<void>(::madvise(static_cast<char*>(block) + skipped, usable, MADV_HUGEPAGE));
}

}  // namespace

void ReserveHeap(std::size_t size) {
  if (size < 2 * kLargePage) return;
  mallopt(M_MMAP_THRESHOLD, kLargestHeapBlock);
  mallopt(M_TRIM_THRESHOLD, INT_MAX);
  mallopt(M_TOP_PAD, kLargestHeapBlock);
  // Freed at once: the heap keeps them.
  std::vector<std::unique_ptr<void, decltype(&std::free)>> blocks;
  for (std::size_t left = size; left > 0;) {
    const std::size_t part = std::min<std::size_t>(left, kLargestHeapBlock - 4096);
    blocks.emplace_back(std::malloc(part), &std::free);
    if (!blocks.back()) return;
    AdviseLargePages(blocks.back().get(), part);
    left -= part;
  }
}

}  // namespace PosUtil
