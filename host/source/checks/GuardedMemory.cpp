// SPDX-License-Identifier: MIT
#include "checks/GuardedMemory.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "accounting/Accounting.h"
#include "binder/Registration.h"
#include "checks/Misuse.h"
#include "heap/Heap.h"
#include "kap/KAPMemoryInterface.h"
#include "quarantine/Quarantine.h"

namespace KAPHost {

namespace {

constexpr std::size_t kGuardSize = 16;  // on each side; keeps the alignment
constexpr unsigned char kGuard = 0xFB;
constexpr unsigned char kFreed = 0xDD;
constexpr std::size_t kMostFreed = std::size_t{16} << 20;  // bytes kept after their Free
constexpr std::size_t kRecordSize = 640;                   // of the ledger and here, about

// The bytes of a component.
struct Block {
  unsigned char* fBytes;
  std::size_t fSize;
  unsigned fHost;  // the number of the host that made it

  unsigned char* Start() const { return fBytes - kGuardSize; }
  unsigned char* End() const { return fBytes + fSize; }
  std::size_t WholeSize() const { return fSize + 2 * kGuardSize; }
  std::string Name() const { return "block of " + std::to_string(fSize) + " bytes"; }
};

struct Blocks {
  std::mutex fMutex;
  std::unordered_map<const void*, Block> fLive;
  std::deque<Block> fFreed;
  std::size_t fFreedBytes = 0;
  unsigned fHost = 0;
  bool fHasPlain = false;
};

// Of the process: components may hold blocks longer than a host lives.
Blocks& TheBlocks() {
  static auto* const blocks = new Blocks;
  return *blocks;
}

bool Holds(const unsigned char* bytes, std::size_t size, unsigned char value) {
  return std::all_of(bytes, bytes + size, [=](unsigned char byte) { return byte == value; });
}

void CheckGuards(const Block& block) {
  const bool isBeforeIntact = Holds(block.Start(), kGuardSize, kGuard);
  const bool isAfterIntact = Holds(block.End(), kGuardSize, kGuard);
  if (!isBeforeIntact) {
    ReportMisuse("a " + block.Name() + " was written before its start", block.fBytes);
  }
  if (!isAfterIntact) {
    ReportMisuse("a " + block.Name() + " was written past its end", block.fBytes);
  }
}

void CheckFreed(const Block& block) {
  if (Holds(block.Start(), block.WholeSize(), kFreed)) return;
  ReportMisuse("a " + block.Name() + " was written after it was freed", block.fBytes);
}

// A live block, which is taken out of the list.
std::optional<Block> TakeOut(const void* block) {
  Blocks& blocks = TheBlocks();
  const std::lock_guard lock(blocks.fMutex);
  const auto entry = blocks.fLive.extract(block);
  return entry ? std::optional(entry.mapped()) : std::nullopt;
}

std::optional<Block> Find(const void* block) {
  Blocks& blocks = TheBlocks();
  const std::lock_guard lock(blocks.fMutex);
  const auto found = blocks.fLive.find(block);
  return found != blocks.fLive.end() ? std::optional(found->second) : std::nullopt;
}

void GiveBack(const Block& block) {
  CheckFreed(block);
  ForgetThing(block.fBytes);
  Deallocate(block.Start());
}

// Of a host that has no ledger, or of a former one.
void* PlainAlloc(std::size_t size) noexcept {
  void* const block = Allocate(size);
  if (block) Count(KAPResource::kBlock, 1, static_cast<long>(UsableSize(block)));
  return block;
}

void PlainFree(void* block) noexcept {
  Count(KAPResource::kBlock, -1, -static_cast<long>(UsableSize(block)));
  Deallocate(block);
}

bool TakesPlain() noexcept { return !HasMisuseChecks() || TheBlocks().fHasPlain; }

void* Alloc(std::size_t size) noexcept {
  if (!IsFollowing()) return PlainAlloc(size);
  if (size > ~std::size_t{0} - 2 * kGuardSize) return nullptr;
  auto* const start = static_cast<unsigned char*>(Allocate(size + 2 * kGuardSize));
  if (!start) return nullptr;
  Blocks& blocks = TheBlocks();
  const Block block = {start + kGuardSize, size, blocks.fHost};
  std::memset(block.Start(), kGuard, kGuardSize);
  std::memset(block.End(), kGuard, kGuardSize);
  try {
    {
      const std::lock_guard lock(blocks.fMutex);
      blocks.fLive.emplace(block.fBytes, block);
    }
    NoteThing(KAPResource::kBlock, block.fBytes, block.Name());
  } catch (const std::bad_alloc&) {
    TakeOut(block.fBytes);
    Deallocate(start);
    return nullptr;
  }
  Count(KAPResource::kBlock, 1, static_cast<long>(size));
  return block.fBytes;
}

// The block stays in memory for a while, filled with a pattern.
void Retire(const Block& block) {
  CheckGuards(block);
  EndThing(block.fBytes, block.Name());
  std::memset(block.Start(), kFreed, block.WholeSize());
  std::vector<Block> old;
  {
    Blocks& blocks = TheBlocks();
    const std::lock_guard lock(blocks.fMutex);
    blocks.fFreed.push_back(block);
    blocks.fFreedBytes += block.WholeSize() + kRecordSize;
    while (blocks.fFreedBytes > kMostFreed) {
      old.push_back(blocks.fFreed.front());
      blocks.fFreed.pop_front();
      blocks.fFreedBytes -= old.back().WholeSize() + kRecordSize;
    }
  }
  for (const Block& one : old) GiveBack(one);
}

void Free(void* bytes) noexcept {
  if (!bytes) return;
  try {
    const auto block = TakeOut(bytes);
    if (!block) {
      if (TakesPlain() && !IsDeadThing(bytes)) return PlainFree(bytes);
      return ReportMisuse(IsDeadThing(bytes) ? "Free of a block that is already freed"
                                             : "Free of memory that is not the host's",
                          bytes);
    }
    Count(KAPResource::kBlock, -1, -static_cast<long>(block->fSize));
    if (HasMisuseChecks()) return Retire(*block);
    ForgetThing(bytes);
    Deallocate(block->Start());
  } catch (const std::bad_alloc&) {
    // The block is lost: remembering it takes memory as well.
  }
}

std::size_t GetBlockSize(void* bytes) noexcept {
  if (const auto block = Find(bytes)) return block->fSize;
  return bytes && TakesPlain() ? UsableSize(bytes) : 0;
}

// Always moves, so that a use of the old pointer is detected.
void* Realloc(void* bytes, std::size_t size) noexcept {
  if (!bytes) return Alloc(size);
  if (!Find(bytes) && (!TakesPlain() || IsDeadThing(bytes))) {
    ReportMisuse(IsDeadThing(bytes) ? "Realloc of a block that is already freed"
                                    : "Realloc of memory that is not the host's",
                 bytes);
    return nullptr;
  }
  const std::size_t before = GetBlockSize(bytes);
  void* const moved = Alloc(size);
  if (!moved) return nullptr;
  std::memcpy(moved, bytes, std::min(before, size));
  Free(bytes);
  return moved;
}

}  // namespace

std::size_t GuardedBlocks() noexcept {
  Blocks& blocks = TheBlocks();
  const std::lock_guard lock(blocks.fMutex);
  return blocks.fLive.size();
}

void RegisterGuardedMemory(Binder& binder, bool hasPlainBlocks) {
  Blocks& blocks = TheBlocks();
  ++blocks.fHost;
  blocks.fHasPlain = hasPlainBlocks;
  RegisterProcs<KAP_T_MT::KAPMemoryInterface, &Alloc, &Realloc, &Free, &GetBlockSize>(binder);
}

void EndGuardedMemory() noexcept {
  if (!HasMisuseChecks()) return;
  try {
    Blocks& blocks = TheBlocks();
    std::deque<Block> freed;
    std::vector<Block> live;
    {
      const std::lock_guard lock(blocks.fMutex);
      freed.swap(blocks.fFreed);
      blocks.fFreedBytes = 0;
      for (const auto& [bytes, block] : blocks.fLive) {
        if (block.fHost == blocks.fHost) live.push_back(block);
      }
    }
    for (const Block& block : freed) GiveBack(block);
    for (const Block& block : live) CheckGuards(block);
  } catch (const std::bad_alloc&) {
  }
}

}  // namespace KAPHost
