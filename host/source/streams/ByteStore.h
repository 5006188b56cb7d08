// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace KAPHost {

// Bytes that grow. Growing at least doubles the capacity when there is memory for that; the first
// write reserves exactly what it needs.
class ByteStore {
 public:
  ByteStore() = default;
  ByteStore(const ByteStore&) = delete;
  ByteStore& operator=(const ByteStore&) = delete;
  ~ByteStore();

  std::size_t Size() const noexcept { return fSize; }
  // Copies bytes from `position` on, as far as there are any; returns how many.
  std::size_t Read(std::size_t position, unsigned char* buffer, std::size_t count) const noexcept;
  // Fills a gap before `position` with zeros. False when out of memory; nothing changes then.
  bool Write(std::size_t position, const unsigned char* bytes, std::size_t count) noexcept;

 private:
  bool Reserve(std::size_t size) noexcept;

  unsigned char* fBytes = nullptr;
  std::size_t fSize = 0;
  std::size_t fCapacity = 0;
};

}  // namespace KAPHost
