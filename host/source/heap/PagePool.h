// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "heap/Page.h"

namespace KAPHost {

// Addresses for all pages are reserved once, in one region, so that one comparison tells a block of
// a page from one of malloc. 64 GiB take nothing but addresses until they are used; what does not
// fit comes from malloc.
inline constexpr std::uintptr_t kRegionSize = std::uintptr_t{64} << 30;
// Not the distance of any address that a process may have.
inline constexpr std::uintptr_t kNoRegion = std::uintptr_t{1} << 63;

[[gnu::visibility("hidden")]] inline constinit std::atomic<std::uintptr_t> gRegion{kNoRegion};

// Whether the block is from a page. A thread that has a block of a page got it after the region was
// reserved, so it sees the region.
inline bool IsFromPage(const void* block) noexcept {
  return reinterpret_cast<std::uintptr_t>(block) - gRegion.load(std::memory_order_relaxed) <
         kRegionSize;
}

// The empty pages that no thread keeps. A few keep their memory; that of all others the system may
// take. Thread-safe.
class PagePool {
 public:
  constexpr PagePool() = default;

  // Null when out of memory, and when no addresses can be reserved.
  Page* Take() noexcept;
  void Put(Page& page) noexcept;
  // Puts pages that are linked by fLinks.fNext.
  void PutAll(Page* pages) noexcept;

  std::mutex& Mutex() noexcept { return fMutex; }

 private:
  static constexpr std::size_t kMostWarm = 256;  // 16 MiB

  Page* NewPage() noexcept;
  bool NewExtent() noexcept;
  bool Reserve() noexcept;
  bool PutWarm(Page& page) noexcept;

  std::mutex fMutex;
  Page* fWarm = nullptr;  // linked by fLinks.fNext
  Page* fCold = nullptr;
  std::size_t fWarmCount = 0;
  bool fIsReserved = false;
  Page* fNew = nullptr;  // the records of the newest extent
  std::size_t fNewTaken = kPagesPerExtent;
  std::uintptr_t fNextExtent = 0;  // its distance from the start of the region
};

extern constinit PagePool gPagePool;

}  // namespace KAPHost
