// SPDX-License-Identifier: MIT
#include "posimpl/base/SortableStringAtom.h"

#include <algorithm>
#include <cstring>

namespace NPOSObjectImpl {

namespace {

std::uint64_t BigEndian64(const char* bytes) noexcept {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return __builtin_bswap64(word);
}

std::uint64_t BigEndian32(const char* bytes) noexcept {
  std::uint32_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return __builtin_bswap32(word);
}

std::uint64_t Byte(const char* byte) noexcept { return static_cast<unsigned char>(*byte); }

// Up to eight bytes as a number, the first one highest. Reads nothing but them: where they are
// fewer than a word, two shorter loads overlap.
std::uint64_t Word(const char* bytes, std::size_t count) noexcept {
  if (count >= 8) return BigEndian64(bytes);
  const std::size_t unused = 64 - 8 * count;
  if (count >= 4) return BigEndian32(bytes) << 32 | BigEndian32(bytes + count - 4) << unused;
  if (count == 0) return 0;
  const std::uint64_t first = Byte(bytes) << 56;
  if (count == 1) return first;
  return first | Byte(bytes + 1) << 48 | Byte(bytes + count - 1) << unused;
}

}  // namespace

TextPrefix::TextPrefix(std::string_view text) noexcept {
  for (std::size_t i = 0; i < kWords; ++i) {
    const std::size_t begin = i * sizeof(std::uint64_t);
    fWords[i] = text.size() > begin ? Word(text.data() + begin, text.size() - begin) : 0;
  }
}

int SortableStringAtom::CompareOther(const SortableStringAtom& a,
                                     const SortableStringAtom& b) noexcept {
  const int order = a.fPrefix.Compare(b.fPrefix);
  return order != 0 ? order : std::strcmp(a.Text(), b.Text());
}

// Keys that share their prefix mostly differ soon after: a few bytes in a loop cost less
// than a call.
int SortableStringAtom::CompareRest(std::string_view text, const char* key) noexcept {
  constexpr std::size_t kInLoop = TextPrefix::kSize + 16;
  std::size_t i = TextPrefix::kSize;
  for (const std::size_t end = std::min(text.size(), kInLoop); i < end; ++i) {
    const int order = static_cast<unsigned char>(text[i]) - static_cast<unsigned char>(key[i]);
    if (order != 0) return order;
  }
  const int order = std::strncmp(text.data() + i, key + i, text.size() - i);
  return order != 0 ? order : -static_cast<int>(key[text.size()] != '\0');
}

}  // namespace NPOSObjectImpl
