// SPDX-License-Identifier: MIT
#include "files/Source.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "files/InputFile.h"

namespace PosUtil {

namespace {

constexpr std::size_t kFirstRead = 64 * 1024;  // for input of unknown size

}  // namespace

void Source::Free::operator()(char* block) const noexcept { std::free(block); }

Source::Block Source::Resize(Block block, std::size_t size) {
  auto* resized = static_cast<char*>(std::realloc(block.get(), size));
  if (!resized) throw std::bad_alloc();
  static_cast<void>(block.release());  // realloc has freed it
  return Block(resized);
}

Source::Source(std::string name, Block bytes, std::size_t size)
    : fName(std::move(name)), fBytes(std::move(bytes)), fSize(size) {
  fBytes.get()[fSize] = '\0';
}

Source::Source(std::string name, std::string_view bytes)
    : Source(std::move(name), Resize(nullptr, bytes.size() + 1), bytes.size()) {
  std::memcpy(fBytes.get(), bytes.data(), bytes.size());
}

SyntaxError Source::ErrorAt(std::size_t offset, const std::string& message) const {
  return {fName, {{}, Bytes()}, offset, message};
}

Source Source::Read(const std::string& fileName) {
  InputFile file(fileName);
  // One byte for the final zero, and one so that the read that finds the end needs no larger block.
  std::size_t capacity = (file.Size() ? file.Size() : kFirstRead) + 2;
  Block block = Resize(nullptr, capacity);
  std::size_t size = 0;
  while (const std::size_t count = file.Read(block.get() + size, capacity - size - 1)) {
    size += count;
    if (size + 1 < capacity) continue;
    capacity *= 2;
    block = Resize(std::move(block), capacity);
  }
  return {file.Name(), std::move(block), size};
}

}  // namespace PosUtil
