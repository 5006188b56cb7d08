// SPDX-License-Identifier: MIT
#include "atoms/TextKey.h"

#include <sys/random.h>

#include <cstring>

namespace KAPHost {

namespace {

constinit std::uint64_t gSeed = 0;

__extension__ using Wide = unsigned __int128;

std::uint64_t Mix(std::uint64_t a, std::uint64_t b) noexcept {
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

std::uint64_t Word(const char* bytes, std::size_t count) noexcept {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, count);
  return word;
}

// Hashes eight bytes at a time.
std::uint64_t Hash(const char* bytes, std::size_t left) noexcept {
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
  std::uint64_t hash = gSeed ^ (left * kFactor);
  for (; left > 8; bytes += 8, left -= 8) hash = Mix(hash ^ Word(bytes, 8), kFactor);
  // The last one to eight bytes: two overlapping halves avoid a loop.
  std::uint64_t tail = 0;
  if (left >= 4) {
    tail = Word(bytes, 4) | Word(bytes + left - 4, 4) << 32;
  } else if (left > 0) {
    tail = Word(bytes, 1) | Word(bytes + left / 2, 1) << 8 | Word(bytes + left - 1, 1) << 16;
  }
  return Mix(hash ^ tail, kFactor);
}

}  // namespace

TextKey::TextKey(const char* text) noexcept : fText(text), fLength(std::strlen(text)) {
  const std::uint64_t hash = Hash(text, fLength);
  fHash = static_cast<std::uint32_t>(hash);
  fTag = static_cast<std::uint16_t>(hash >> 32);
}

// Early in the start of a system there may be no random bytes yet; the address of a variable, which
// differs from process to process, then has to do.
void TextKey::DrawSeed() noexcept {
  static const std::uint64_t seed = [] {
    std::uint64_t drawn = 0;
    if (getrandom(&drawn, sizeof drawn, GRND_NONBLOCK) != sizeof drawn) {
      drawn = reinterpret_cast<std::uintptr_t>(&gSeed);
    }
    return drawn;
  }();
  gSeed = seed;
}

}  // namespace KAPHost
