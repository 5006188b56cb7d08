// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "TestHost.h"
#include "Threads.h"

// Pages of small blocks: who frees a block, and when, must not matter.

namespace {

class HeapTest : public ::testing::Test {
 protected:
  static constexpr std::uintptr_t kPageSize = 65536;
  using Blocks = std::vector<unsigned char*>;

  // Blocks of several sizes, each filled with a byte of its own.
  Blocks Make(std::size_t count) {
    Blocks blocks(count);
    for (std::size_t i = 0; i < count; ++i) {
      blocks[i] = static_cast<unsigned char*>(fAlloc(Size(i)));
      std::memset(blocks[i], static_cast<int>(i % 251), Size(i));
    }
    return blocks;
  }
  // Expects that no block was made twice at a time.
  void Free(const Blocks& blocks) {
    for (std::size_t i = 0; i < blocks.size(); ++i) {
      ASSERT_EQ(blocks[i][0], i % 251);
      ASSERT_EQ(blocks[i][Size(i) - 1], i % 251);
      fFree(blocks[i]);
    }
  }
  static std::set<std::uintptr_t> PagesOf(const Blocks& blocks) {
    std::set<std::uintptr_t> pages;
    for (auto* block : blocks) pages.insert(reinterpret_cast<std::uintptr_t>(block) / kPageSize);
    return pages;
  }
  static std::size_t Size(std::size_t i) { return std::array{16ul, 40ul, 48ul, 200ul}[i % 4]; }

  TestHost fHost{false, KAPHost::HostMemory::kPages};
  void* (*fAlloc)(std::size_t) = fHost.Proc<KAP_T_MT::KAPMemoryInterface, "Alloc">();
  void (*fFree)(void*) = fHost.Proc<KAP_T_MT::KAPMemoryInterface, "Free">();
};

// Whatever thread frees the blocks, they are used again: the pages stay few over many cycles.
TEST_F(HeapTest, BlocksAreUsedAgain) {
  const auto onThread = [](const std::function<void()>& body) { std::thread(body).join(); };
  const struct {
    const char* fWhy;
    std::function<void(std::set<std::uintptr_t>& pages)> fCycle;
  } rows[] = {
      {"the same thread",
       [&](auto& pages) {
         const Blocks blocks = Make(4000);
         pages.merge(PagesOf(blocks));
         Free(blocks);
       }},
      {"another thread, while the owner lives",
       [&](auto& pages) {
         const Blocks blocks = Make(4000);
         pages.merge(PagesOf(blocks));
         onThread([&] { Free(blocks); });
       }},
      {"another thread, after the owner ended",
       [&](auto& pages) {
         Blocks blocks;
         onThread([&] { blocks = Make(4000); });
         pages.merge(PagesOf(blocks));
         Free(blocks);
       }},
      {"a thread without blocks of its own, after the owner ended",
       [&](auto& pages) {
         Blocks blocks;
         onThread([&] { blocks = Make(4000); });
         pages.merge(PagesOf(blocks));
         onThread([&] { Free(blocks); });
       }},
      {"no thread, for half of the blocks: the next thread goes on with the pages",
       [&](auto& pages) {
         Blocks kept;
         onThread([&] {
           Blocks blocks = Make(4000);
           pages.merge(PagesOf(blocks));
           for (std::size_t i = 0; i < blocks.size(); ++i) {
             i % 8 < 4 ? fFree(blocks[i]) : kept.push_back(blocks[i]);
           }
         });
         onThread([&] {
           const Blocks blocks = Make(2000);
           pages.merge(PagesOf(blocks));
           Free(blocks);
         });
         for (auto* block : kept) fFree(block);
       }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.fWhy);
    std::set<std::uintptr_t> pages;
    for (int cycle = 0; cycle < 100; ++cycle) row.fCycle(pages);
    // A cycle needs 8, and a thread keeps up to 256 empty ones; without reuse it would be 800.
    EXPECT_LT(pages.size(), 300u);
  }
}

// Each thread frees what the others make, while threads end and start. The pages stay few.
TEST_F(HeapTest, ThreadsFreeEachOthersBlocks) {
  std::array<std::atomic<Blocks*>, 16> places{};
  std::mutex mutex;
  std::set<std::uintptr_t> pages;
  for (int generation = 0; generation < 20; ++generation) {
    RunOnThreads([&](int thread) {
      std::set<std::uintptr_t> own;
      for (std::size_t round = 0; round < 200; ++round) {
        const std::size_t place = (round * 7 + static_cast<std::size_t>(thread)) % places.size();
        auto* const made = new Blocks(Make(60));
        own.merge(PagesOf(*made));
        const std::unique_ptr<Blocks> others(places[place].exchange(made));
        if (others) Free(*others);
      }
      const std::lock_guard lock(mutex);
      pages.merge(own);
    });
  }
  for (auto& place : places) {
    const std::unique_ptr<Blocks> blocks(place.exchange(nullptr));
    if (blocks) Free(*blocks);
  }
  // Without reuse it would be 1100.
  EXPECT_LT(pages.size(), 200u);
}

// Blocks of random sizes, in pages and beyond them, which any thread resizes and frees.
TEST_F(HeapTest, RandomSizesOnThreads) {
  struct Block {
    unsigned char* fBytes = nullptr;
    std::size_t fSize = 0;
    unsigned char fByte = 0;
  };
  const auto isFilled = [](const Block& block, std::size_t size) {
    return std::all_of(block.fBytes, block.fBytes + size,
                       [&](unsigned char byte) { return byte == block.fByte; });
  };
  void* (*const resize)(void*, std::size_t) = fHost.Proc<KAP_T_MT::KAPMemoryInterface, "Realloc">();
  std::array<std::atomic<Block*>, 32> places{};
  std::atomic<unsigned> damaged{0};
  const auto free = [&](const std::unique_ptr<Block>& block) {
    if (!block) return;
    damaged += isFilled(*block, block->fSize) ? 0 : 1;
    fFree(block->fBytes);
  };
  RunOnThreads([&](int thread) {
    std::mt19937 random(static_cast<unsigned>(thread));
    for (int i = 0; i < 4000; ++i) {
      auto& place = places[random() % places.size()];
      std::unique_ptr<Block> block(place.exchange(nullptr));
      if (!block) block = std::make_unique<Block>();
      const std::size_t size = 1 + random() % (random() % 2 == 0 ? 64 : 2000);
      block->fBytes = static_cast<unsigned char*>(resize(block->fBytes, size));
      damaged += isFilled(*block, std::min(size, block->fSize)) ? 0 : 1;
      block->fSize = size;
      block->fByte = static_cast<unsigned char>(random());
      std::memset(block->fBytes, block->fByte, size);
      free(std::unique_ptr<Block>(place.exchange(block.release())));
      if (random() % 4 == 0) free(std::unique_ptr<Block>(place.exchange(nullptr)));
    }
  });
  for (auto& place : places) free(std::unique_ptr<Block>(place.exchange(nullptr)));
  EXPECT_EQ(damaged, 0u);
}

// The bytes that the mapping around an address keeps: those that the system may take do not count.
std::size_t KeptAround(const void* address) {
  const auto place = reinterpret_cast<std::uintptr_t>(address);
  std::ifstream maps("/proc/self/smaps");
  bool isHere = false;
  std::size_t kept = 0;
  for (std::string line; std::getline(maps, line);) {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    std::size_t kilobytes = 0;
    if (std::sscanf(line.c_str(), "%lx-%lx ", &begin, &end) == 2) {
      isHere = begin <= place && place < end;
    } else if (isHere && std::sscanf(line.c_str(), "Anonymous: %lu", &kilobytes) == 1) {
      kept += kilobytes * 1024;
    } else if (isHere && std::sscanf(line.c_str(), "LazyFree: %lu", &kilobytes) == 1) {
      kept -= kilobytes * 1024;
    }
  }
  return kept;
}

// 96 MB are freed; a thread and the pool keep 16 MiB each. The system may take the rest when it
// runs short, and clears what it takes.
TEST_F(HeapTest, EmptyPagesAreGivenBack) {
  const Blocks blocks = Make(1'250'000);
  EXPECT_GT(KeptAround(blocks[0]), 90u << 20);
  Free(blocks);
  EXPECT_LT(KeptAround(blocks[0]), 36u << 20);
}

}  // namespace
