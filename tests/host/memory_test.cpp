#include <cstdint>
#include <cstring>

#include "TestHost.h"

namespace {

using KAP_T_MT::KAPResource;

class MemoryTest : public HostTest {};

TEST_F(MemoryTest, BlocksAreAlignedAndCounted) {
  for (const std::size_t size : {0ul, 1ul, 15ul, 16ul, 17ul, 100ul, 1000000ul}) {
    SCOPED_TRACE(size);
    void* block = fHost.Memory<"Alloc">(size);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u);
    const std::size_t usable = fHost.Memory<"GetBlockSize">(block);
    EXPECT_GE(usable, size);
    EXPECT_EQ(fHost.TakeSnapshot().Total(KAPResource::kBlock).fNumber, 1);
    EXPECT_EQ(fHost.TakeSnapshot().Total(KAPResource::kBlock).fExtent, static_cast<long>(usable));
    std::memset(block, 1, size);
    fHost.Memory<"Free">(block);
    EXPECT_TRUE(fHost.TakeSnapshot().IsEmpty());
  }
}

TEST_F(MemoryTest, ReallocKeepsContentsAndCounts) {
  auto* block = static_cast<char*>(fHost.Memory<"Realloc">(nullptr, 8ul));
  std::memcpy(block, "content", 8);
  for (const std::size_t size : {100000ul, 8ul}) {
    block = static_cast<char*>(fHost.Memory<"Realloc">(block, size));
    EXPECT_STREQ(block, "content");
    EXPECT_EQ(fHost.TakeSnapshot().Total(KAPResource::kBlock).fNumber, 1);
    EXPECT_GE(fHost.TakeSnapshot().Total(KAPResource::kBlock).fExtent, static_cast<long>(size));
  }
  EXPECT_EQ(fHost.Memory<"Realloc">(block, SIZE_MAX), nullptr);
  EXPECT_STREQ(block, "content");
  void* shrunk = fHost.Memory<"Realloc">(block, 0ul);
  EXPECT_NE(shrunk, nullptr);
  fHost.Memory<"Free">(shrunk);
  EXPECT_EQ(fHost.Memory<"Alloc">(SIZE_MAX), nullptr);
  EXPECT_EQ(fHost.Memory<"GetBlockSize">(nullptr), 0u);
  fHost.Memory<"Free">(nullptr);
}

}  // namespace
