#include "files/Source.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "files/InputFile.h"

namespace PosUtil {

namespace {

constexpr std::size_t kFirstRead = 64 * 1024;  // for input of unknown size
constexpr std::size_t kPage = 4096;

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

void Source::Forget(std::size_t end) {
  // Whole pages only. The last ones stay: an excerpt may show them.
  const auto begin = reinterpret_cast<std::uintptr_t>(fBytes.get());
  if (end < fForgotten + 2 * kPage) return;
  const std::size_t upTo = (begin + end - kPage) / kPage * kPage - begin;
  const std::size_t from = (begin + fForgotten + kPage - 1) / kPage * kPage - begin;
  fBefore.Add(Bytes().substr(fForgotten, upTo - fForgotten));
  fForgotten = upTo;
  static_cast<void>(::madvise(fBytes.get() + from, upTo - from, MADV_DONTNEED));
}

SyntaxError Source::ErrorAt(std::size_t offset, const std::string& message) const {
  const TextPart remembered = {fBefore, Bytes().substr(fForgotten)};
  return {fName, remembered, offset - std::min(offset, fForgotten), message};
}

Source Source::Read(const std::string& fileName) {
  const InputFile file(fileName);
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
