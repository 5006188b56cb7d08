// SPDX-License-Identifier: MIT
#include <cstring>

#include "probe/Checks.h"
#include "probe/Services.h"

namespace KAPProbe {

namespace {

using Buffers = KAPSharedBuffInterface;

void Count(void* count) { ++*static_cast<int*>(count); }

Buffer MakeBuffer(std::size_t size, void* data = nullptr, KAPDeleteProc deleteData = nullptr) {
  Buffer buffer(Call<Buffers, "NewBuffer">(size, data, deleteData, nullptr, nullptr));
  Need<Buffers, "NewBuffer">(buffer, "returns null");
  return buffer;
}

constexpr Check kChecks[] = {
    {"buffers.zeroed", "KAPSharedBuffInterface", "NewBuffer",
     "`data` null: zeroed storage of the host.",
     [] {
       for (const std::size_t size : {1ul, 100ul, 100'000ul, 100ul}) {
         const Buffer buffer = MakeBuffer(size);
         unsigned char* const bytes = Call<Buffers, "GetBuffer">(buffer);
         Need<Buffers, "GetBuffer">(bytes, "returns null for a buffer");
         for (std::size_t i = 0; i < size; ++i) Expect(bytes[i] == 0, "a byte is not zero");
         std::memset(bytes, 0xA5, size);
       }
     }},
    {"buffers.size", "KAPSharedBuffInterface", "GetSize", "The size in bytes; 0 for null.",
     [] {
       for (const std::size_t size : {1ul, 100ul, 100'000ul}) {
         Expect(Call<Buffers, "GetSize">(MakeBuffer(size)) == size, "the size is another one");
       }
       Expect(Call<Buffers, "GetSize">(nullptr) == 0, "null has a size");
     }},
    {"buffers.data", "KAPSharedBuffInterface", "NewBuffer",
     "Otherwise the buffer takes over `data`, and the last release passes it to `deleteProc`, which"
     " may be null;",
     [] {
       int deleted = 0;
       CheckLastRelease<Buffers>(MakeBuffer(sizeof deleted, &deleted, &Count), deleted,
                                 "deletes the data");
       MakeBuffer(sizeof deleted, &deleted);
     }},
    {"buffers.bytes", "KAPSharedBuffInterface", "GetBuffer",
     "The bytes, borrowed: they live as long as the buffer. Null for null.",
     [] {
       unsigned char data[4] = {};
       Expect(Call<Buffers, "GetBuffer">(MakeBuffer(sizeof data, &data[0])) == &data[0],
              "the buffer has other bytes");
       Expect(!Call<Buffers, "GetBuffer">(nullptr), "null has bytes");
     }},
    {"buffers.references", "KAPSharedBuffInterface", "AddRef",
     "Adds one reference; null is ignored.",
     [] {
       Call<Buffers, "AddRef">(nullptr);
       int deleted = 0;
       CheckLastRelease<Buffers>(MakeBuffer(sizeof deleted, &deleted, &Count), deleted,
                                 "deletes the data");
     }},
    {"buffers.release", "KAPSharedBuffInterface", "Release",
     "Releases one reference; null is ignored.",
     [] {
       Call<Buffers, "Release">(nullptr);
       int deleted = 0;
       MakeBuffer(sizeof deleted, &deleted, &Count).Reset();
       Expect(deleted == 1, "a new buffer outlives one release");
       CheckNothingStays([] { MakeBuffer(kMebibyte); });
     }},
    {"buffers.owned", "KAPSharedBuffInterface", "DeleteUnowned",
     "Deletes a buffer that has no reference; otherwise does nothing.",
     [] {
       int deleted = 0;
       Buffer buffer = MakeBuffer(sizeof deleted, &deleted, &Count);
       Call<Buffers, "DeleteUnowned">(buffer);
       if (deleted != 0) buffer.Detach();
       Expect(deleted == 0, "a buffer with a reference is deleted");
     }},
};

}  // namespace

std::span<const Check> BufferChecks() { return kChecks; }

}  // namespace KAPProbe
