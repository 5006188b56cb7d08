// SPDX-License-Identifier: MIT
#include "posimpl/base/SortableStringAtom.h"

#include <algorithm>
#include <cstring>

namespace NPOSObjectImpl {

namespace {

std::uint64_t BigEndian32(const char* bytes) noexcept {
  std::uint32_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return __builtin_bswap32(word);
}

std::uint64_t Byte(const char* byte) noexcept { return static_cast<unsigned char>(*byte); }

}  // namespace

// Reads nothing but the text: where it is shorter than a word, two shorter loads overlap.
std::uint64_t TextPrefix::ShortWord(std::string_view text) noexcept {
  const char* const bytes = text.data();
  const std::size_t count = text.size();
  const std::size_t unused = 64 - 8 * count;
  if (count >= 4) return BigEndian32(bytes) << 32 | BigEndian32(bytes + count - 4) << unused;
  if (count == 0) return 0;
  const std::uint64_t first = Byte(bytes) << 56;
  if (count == 1) return first;
  return first | Byte(bytes + 1) << 48 | Byte(bytes + count - 1) << unused;
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
