// SPDX-License-Identifier: MIT
#include "checks/GuardedMemory.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <mutex>
#include <new>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "accounting/Accounting.h"
#include "binder/Registration.h"
#include "checks/Misuse.h"
#include "heap/Heap.h"
#include "kap/KAPMemoryInterface.h"

namespace KAPHost {

namespace {

constexpr std::size_t kGuardSize = 16;
constexpr unsigned char kGuard = 0xFB;
constexpr unsigned char kFreed = 0xDD;
constexpr std::size_t kMostFreed = std::size_t{16} << 20;  // bytes kept after their Free

struct Blocks {
  std::mutex fMutex;
  std::unordered_map<const void*, std::size_t> fLive;
  std::deque<std::pair<unsigned char*, std::size_t>> fFreed;
  std::size_t fFreedBytes = 0;
};

// Of the process: components may hold blocks longer than a host lives.
Blocks& TheBlocks() {
  static auto* const blocks = new Blocks;
  return *blocks;
}

bool Holds(const unsigned char* bytes, std::size_t size, unsigned char value) {
  return std::all_of(bytes, bytes + size, [=](unsigned char byte) { return byte == value; });
}

bool IsIntact(const void* block, std::size_t size) {
  return Holds(static_cast<const unsigned char*>(block) + size, kGuardSize, kGuard);
}

void CheckGuard(const void* block, std::size_t size) {
  if (IsIntact(block, size)) return;
  ReportMisuse("a block of " + std::to_string(size) + " bytes was written past its end", block);
}

void CheckFreed(const unsigned char* block, std::size_t size) {
  if (Holds(block, size + kGuardSize, kFreed)) return;
  ReportMisuse("a block of " + std::to_string(size) + " bytes was written after it was freed",
               block);
}

// The size of a live block, which is taken out of the list; false when it is not one.
bool TakeOut(const void* block, std::size_t& size) {
  Blocks& blocks = TheBlocks();
  const std::lock_guard lock(blocks.fMutex);
  const auto found = blocks.fLive.find(block);
  if (found == blocks.fLive.end()) return false;
  size = found->second;
  blocks.fLive.erase(found);
  return true;
}

void GiveBack(unsigned char* block, std::size_t size) {
  CheckFreed(block, size);
  ForgetThing(block);
  Deallocate(block);
}

void* Alloc(std::size_t size) noexcept {
  if (size > ~std::size_t{0} - kGuardSize) return nullptr;
  auto* const block = static_cast<unsigned char*>(Allocate(size + kGuardSize));
  if (!block) return nullptr;
  std::memset(block + size, kGuard, kGuardSize);
  try {
    Blocks& blocks = TheBlocks();
    std::size_t former = 0;
    if (TakeOut(block, former)) {
      ReportMisuse(
          "a block of " + std::to_string(former) + " bytes was freed without the host's Free",
          block);
    }
    const std::lock_guard lock(blocks.fMutex);
    blocks.fLive.emplace(block, size);
  } catch (const std::bad_alloc&) {
    Deallocate(block);
    return nullptr;
  }
  Count(KAPResource::kBlock, 1, static_cast<long>(UsableSize(block)));
  NoteThing(KAPResource::kBlock, block);
  return block;
}

// The block stays in memory for a while, filled with a pattern.
void Retire(unsigned char* block, std::size_t size) {
  CheckGuard(block, size);
  Count(KAPResource::kBlock, -1, -static_cast<long>(UsableSize(block)));
  EndThing(block, "block of " + std::to_string(size) + " bytes");
  std::memset(block, kFreed, size + kGuardSize);
  std::vector<std::pair<unsigned char*, std::size_t>> old;
  {
    Blocks& blocks = TheBlocks();
    const std::lock_guard lock(blocks.fMutex);
    blocks.fFreed.emplace_back(block, size);
    blocks.fFreedBytes += size;
    while (blocks.fFreedBytes > kMostFreed) {
      old.push_back(blocks.fFreed.front());
      blocks.fFreed.pop_front();
      blocks.fFreedBytes -= old.back().second;
    }
  }
  for (const auto& [oldBlock, oldSize] : old) GiveBack(oldBlock, oldSize);
}

void Free(void* block) noexcept {
  if (!block) return;
  try {
    std::size_t size = 0;
    const bool isHeld = TakeOut(block, size);
    if (!HasMisuseChecks()) {
      Count(KAPResource::kBlock, -1, -static_cast<long>(UsableSize(block)));
      ForgetThing(block);
      Deallocate(block);
    } else if (!isHeld) {
      ReportMisuse(IsDeadThing(block) ? "Free of a block that is already freed"
                                      : "Free of memory that is not the host's",
                   block);
    } else {
      Retire(static_cast<unsigned char*>(block), size);
    }
  } catch (const std::bad_alloc&) {
    // The block is lost: remembering it takes memory as well.
  }
}

// Without checks, blocks of a former host count too.
std::size_t GetBlockSize(void* block) noexcept {
  return IsGuarded(block) || HasMisuseChecks() ? GuardedSize(block) : UsableSize(block);
}

// Always moves: a pointer to the former place is then found out.
void* Realloc(void* block, std::size_t size) noexcept {
  if (!block) return Alloc(size);
  const std::size_t before = GetBlockSize(block);
  if (HasMisuseChecks() && !IsGuarded(block)) {
    ReportMisuse(IsDeadThing(block) ? "Realloc of a block that is already freed"
                                    : "Realloc of memory that is not the host's",
                 block);
    return nullptr;
  }
  void* const moved = Alloc(size);
  if (!moved) return nullptr;
  std::memcpy(moved, block, std::min(before, size));
  Free(block);
  return moved;
}

}  // namespace

bool IsGuarded(const void* block) noexcept {
  Blocks& blocks = TheBlocks();
  const std::lock_guard lock(blocks.fMutex);
  return blocks.fLive.contains(block);
}

std::size_t GuardedSize(const void* block) noexcept {
  Blocks& blocks = TheBlocks();
  const std::lock_guard lock(blocks.fMutex);
  const auto found = blocks.fLive.find(block);
  return found == blocks.fLive.end() ? 0 : found->second;
}

void RegisterGuardedMemory(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPMemoryInterface, &Alloc, &Realloc, &Free, &GetBlockSize>(binder);
}

void EndGuardedMemory() noexcept {
  try {
    Blocks& blocks = TheBlocks();
    std::deque<std::pair<unsigned char*, std::size_t>> freed;
    std::unordered_map<const void*, std::size_t> live;
    {
      const std::lock_guard lock(blocks.fMutex);
      freed.swap(blocks.fFreed);
      blocks.fFreedBytes = 0;
      live = blocks.fLive;
    }
    for (const auto& [block, size] : freed) GiveBack(block, size);
    for (const auto& [block, size] : live) CheckGuard(block, size);
  } catch (const std::bad_alloc&) {
  }
}

}  // namespace KAPHost
