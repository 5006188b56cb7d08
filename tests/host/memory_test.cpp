// SPDX-License-Identifier: MIT
#include <cstdint>
#include <cstring>
#include <vector>

#include "TestHost.h"

namespace {

using KAP_T_MT::KAPResource;

class MemoryTest : public testing::TestWithParam<KAPHost::HostMemory> {
 protected:
  KAPHost::Holding Held() { return fHost.TakeSnapshot().Total(KAPResource::kBlock); }

  TestHost fHost{false, GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Memory, MemoryTest,
                         testing::Values(KAPHost::HostMemory::kPages, KAPHost::HostMemory::kPlain));

// Sizes around each border between classes of sizes, and between pages and malloc.
const std::vector<std::size_t> kSizes = {1,   15,  16,  17,  32,   33,   255,  256,    257,     320,
                                         321, 512, 513, 640, 1023, 1024, 1025, 100000, 10000000};

TEST_P(MemoryTest, BlocksAreAlignedAndCounted) {
  for (const std::size_t size : kSizes) {
    SCOPED_TRACE(size);
    void* block = fHost.Memory<"Alloc">(size);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u);
    const std::size_t usable = fHost.Memory<"GetBlockSize">(block);
    EXPECT_GE(usable, size);
    EXPECT_EQ(Held(), (KAPHost::Holding{1, static_cast<long>(usable)}));
    std::memset(block, 1, usable);
    fHost.Memory<"Free">(block);
    EXPECT_TRUE(fHost.TakeSnapshot().IsEmpty());
  }
}

// From each size to each other.
TEST_P(MemoryTest, ReallocKeepsContents) {
  for (const std::size_t before : kSizes) {
    for (const std::size_t after : kSizes) {
      SCOPED_TRACE(testing::Message() << before << " to " << after);
      auto* block = static_cast<unsigned char*>(fHost.Memory<"Realloc">(nullptr, before));
      std::memset(block, 0x5A, before);
      block = static_cast<unsigned char*>(fHost.Memory<"Realloc">(block, after));
      const std::size_t kept = std::min(before, after);
      EXPECT_EQ(block[0], 0x5A);
      EXPECT_EQ(block[kept - 1], 0x5A);
      const std::size_t usable = fHost.Memory<"GetBlockSize">(block);
      EXPECT_GE(usable, after);
      EXPECT_EQ(Held(), (KAPHost::Holding{1, static_cast<long>(usable)}));
      fHost.Memory<"Free">(block);
    }
  }
}

TEST_P(MemoryTest, SizesAtTheLimits) {
  void* block = fHost.Memory<"Alloc">(0ul);
  EXPECT_NE(block, nullptr);
  fHost.Memory<"Free">(block);
  EXPECT_EQ(fHost.Memory<"Alloc">(SIZE_MAX), nullptr);
  for (const std::size_t size : {8ul, 2000ul}) {
    block = fHost.Memory<"Alloc">(size);
    std::memcpy(block, "content", 8);
    EXPECT_EQ(fHost.Memory<"Realloc">(block, SIZE_MAX), nullptr);
    EXPECT_STREQ(static_cast<char*>(block), "content");
    block = fHost.Memory<"Realloc">(block, 0ul);
    EXPECT_NE(block, nullptr);
    fHost.Memory<"Free">(block);
  }
  EXPECT_EQ(fHost.Memory<"GetBlockSize">(nullptr), 0u);
  fHost.Memory<"Free">(nullptr);
}

}  // namespace
