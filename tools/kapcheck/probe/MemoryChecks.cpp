// SPDX-License-Identifier: MIT
#include <cstring>

#include "probe/Checks.h"
#include "probe/Services.h"

namespace KAPProbe {

namespace {

using Memory = KAPMemoryInterface;

bool IsFilled(const void* block, std::size_t count, int byte) {
  const auto* const bytes = static_cast<const unsigned char*>(block);
  for (std::size_t i = 0; i < count; ++i) {
    if (bytes[i] != byte) return false;
  }
  return true;
}

// A block of the host, filled with a byte.
class Block {
 public:
  Block(std::size_t size, int byte) : fSize(size), fByte(byte) {
    fBlock = Call<Memory, "Alloc">(size);
    Need<Memory, "Alloc">(fBlock, "returns null for " + std::to_string(size) + " bytes");
    std::memset(fBlock, byte, size);
  }
  Block(Block&& other) noexcept
      : fBlock(std::exchange(other.fBlock, nullptr)), fSize(other.fSize), fByte(other.fByte) {}
  ~Block() {
    if (fBlock) Call<Memory, "Free">(fBlock);
  }

  void* Get() const { return fBlock; }
  void Resize(std::size_t size) {
    void* const resized = Call<Memory, "Realloc">(fBlock, size);
    Need<Memory, "Realloc">(resized, "returns null for " + std::to_string(size) + " bytes");
    fBlock = resized;
  }
  // Whether the first bytes are those that it was filled with.
  bool Holds(std::size_t count) const { return IsFilled(fBlock, count, fByte); }
  bool Holds() const { return Holds(fSize); }

 private:
  void* fBlock;
  std::size_t fSize;
  int fByte;
};

constexpr std::size_t kSizes[] = {1,   7,    8,    15,   16,   17,   63,     64,
                                  100, 1023, 1024, 1025, 4095, 4097, 65'537, 1'000'000};
// No machine has as much.
constexpr std::size_t kTooMuch = ~std::size_t{0} / 2;

void CheckUsableSizes() {
  std::vector<std::pair<Block, std::size_t>> blocks;
  for (const std::size_t size : kSizes) {
    Block block(size, 0);
    const std::size_t usable = Call<Memory, "GetBlockSize">(block.Get());
    Expect(usable >= size,
           "a block of " + std::to_string(size) + " bytes has a size of " + std::to_string(usable));
    blocks.emplace_back(std::move(block), usable);
  }
  // What is not usable may belong to another block.
  int byte = 1;
  for (const auto& [block, usable] : blocks) std::memset(block.Get(), byte++, usable);
  byte = 1;
  for (const auto& [block, usable] : blocks) {
    Expect(IsFilled(block.Get(), usable, byte++), "two blocks share usable bytes");
  }
}

constexpr Check kChecks[] = {
    {"memory.alignment", "KAPMemoryInterface", "Alloc",
     "A block of at least `size` bytes, 16-byte aligned, not initialised.",
     [] {
       for (const std::size_t size : kSizes) {
         const Block block(size, 0xA5);
         Expect(reinterpret_cast<std::size_t>(block.Get()) % 16 == 0,
                "a block of " + std::to_string(size) + " bytes is not 16-byte aligned");
       }
     }},
    {"memory.blocks", "KAPMemoryInterface", "Alloc",
     "A block of at least `size` bytes, 16-byte aligned, not initialised.",
     [] {
       std::vector<Block> blocks;
       for (int i = 0; i < 200; ++i) {
         blocks.emplace_back(kSizes[static_cast<std::size_t>(i) % std::size(kSizes)], i);
       }
       for (const Block& block : blocks) Expect(block.Holds(), "two live blocks overlap");
     }},
    {"memory.too-large", "KAPMemoryInterface", "Alloc", "Null: out of memory.",
     [] { Expect(!Call<Memory, "Alloc">(kTooMuch), "Alloc returns a block of 8 EiB"); }},
    {"memory.size", "KAPMemoryInterface", "GetBlockSize",
     "The usable size in bytes, at least the size that was requested.", &CheckUsableSizes},
    {"memory.resize", "KAPMemoryInterface", "Realloc",
     "Resizes `block`, which may move, and keeps the bytes that fit; with a null block as Alloc.",
     [] {
       for (const std::size_t size : kSizes) {
         Block block(size, 0x5A);
         block.Resize(size * 3);
         Expect(block.Holds(size), "a grown block has other bytes");
         block.Resize(size / 2 + 1);
         Expect(block.Holds(size / 2 + 1), "a shrunk block has other bytes");
       }
       void* const block = Call<Memory, "Realloc">(nullptr, std::size_t{100});
       Expect(block, "Realloc of null returns null");
       Call<Memory, "Free">(block);
     }},
    {"memory.resize-fails", "KAPMemoryInterface", "Realloc",
     "Null: out of memory, and the block is unchanged.",
     [] {
       const Block block(100, 0x5A);
       Expect(!Call<Memory, "Realloc">(block.Get(), kTooMuch), "Realloc returns a block of 8 EiB");
       Expect(block.Holds(), "the block has other bytes");
     }},
    {"memory.free", "KAPMemoryInterface", "Free",
     "Frees a block of this interface; null is ignored.",
     [] {
       Call<Memory, "Free">(nullptr);
       CheckNothingStays([] { const Block block(kMebibyte, 1); });
     }},
};

}  // namespace

std::span<const Check> MemoryChecks() { return kChecks; }

}  // namespace KAPProbe
