#include "formats/HeapReserve.h"

#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

namespace PosUtil {

namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;
constexpr int kLargestHeapBlock = 32 << 20;  // malloc accepts no larger threshold
constexpr std::size_t kPart = kLargestHeapBlock - 4096;

void AdviseLargePages(void* block, std::size_t size) {
  const auto begin = reinterpret_cast<std::uintptr_t>(block);
  const std::size_t skipped = (kLargePage - begin % kLargePage) % kLargePage;
  if (size < skipped + kLargePage) return;
  const std::size_t usable = (size - skipped) / kLargePage * kLargePage;
  static_cast<void>(::madvise(static_cast<char*>(block) + skipped, usable, MADV_HUGEPAGE));
}

}  // namespace

void ReserveHeapFor(std::size_t textSize) {
  const std::size_t size = 10 * textSize;  // what property objects take, compared with their text
  if (size < 2 * kLargePage) return;
  mallopt(M_MMAP_THRESHOLD, kLargestHeapBlock);
  mallopt(M_TRIM_THRESHOLD, INT_MAX);
  mallopt(M_TOP_PAD, kLargestHeapBlock);
  // Freed at the end of this function; the thresholds above keep them in the heap.
  std::vector<std::unique_ptr<void, decltype(&std::free)>> blocks;
  try {
    blocks.reserve(size / kPart + 1);
  } catch (const std::bad_alloc&) {
    return;
  }
  for (std::size_t left = size; left > 0;) {
    const std::size_t part = std::min(left, kPart);
    blocks.emplace_back(std::malloc(part), &std::free);
    if (!blocks.back()) return;
    AdviseLargePages(blocks.back().get(), part);
    left -= part;
  }
}

}  // namespace PosUtil
