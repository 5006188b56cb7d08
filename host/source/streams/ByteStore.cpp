// SPDX-License-Identifier: MIT
#include "streams/ByteStore.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace KAPHost {

ByteStore::~ByteStore() { std::free(fBytes); }

std::size_t ByteStore::Read(std::size_t position, unsigned char* buffer,
                            std::size_t count) const noexcept {
  if (position >= fSize) return 0;
  const std::size_t read = std::min(count, fSize - position);
  if (read != 0) std::memcpy(buffer, fBytes + position, read);
  return read;
}

bool ByteStore::Write(std::size_t position, const unsigned char* bytes,
                      std::size_t count) noexcept {
  if (count == 0) return true;
  const std::size_t end = position + count;
  if (end < position || !Reserve(end)) return false;
  if (position > fSize) std::memset(fBytes + fSize, 0, position - fSize);
  std::memcpy(fBytes + position, bytes, count);
  fSize = std::max(fSize, end);
  return true;
}

// realloc moves large blocks without copying them; a vector cannot.
bool ByteStore::Reserve(std::size_t size) noexcept {
  if (size <= fCapacity) return true;
  std::size_t capacity = std::max(size, 2 * fCapacity);
  void* moved = std::realloc(fBytes, capacity);
  if (!moved && capacity > size) moved = std::realloc(fBytes, capacity = size);
  if (!moved) return false;
  fBytes = static_cast<unsigned char*>(moved);
  fCapacity = capacity;
  return true;
}

}  // namespace KAPHost
