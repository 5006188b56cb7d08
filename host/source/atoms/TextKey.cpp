// SPDX-License-Identifier: MIT
#include "atoms/TextKey.h"

#include <sys/random.h>

namespace KAPHost {

namespace {

std::uint64_t Word(const char* bytes, std::size_t count) noexcept {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, count);
  return word;
}

}  // namespace

constinit std::array<std::uint64_t, 2> TextKey::gSeeds{};

// Hashes texts of less than 4 bytes, and of more than 16: sixteen bytes at a time, the last sixteen
// of which may overlap the others.
std::uint64_t TextKey::HashBytes(const char* text, std::size_t length) noexcept {
  std::uint64_t hash = gSeeds[1] ^ length;
  if (length < kLeastShort) return Mix(Word(text, length) ^ gSeeds[0], hash);
  const char* const last = text + length - 16;
  for (const char* bytes = text; bytes < last; bytes += 16) {
    hash = Mix(Word(bytes, 8) ^ gSeeds[0], Word(bytes + 8, 8) ^ hash);
  }
  return Mix(Word(last, 8) ^ gSeeds[0], Word(last + 8, 8) ^ hash);
}

bool TextKey::IsLongText(const char* text, std::size_t length, const KAPStringAtom& atom) noexcept {
  return atom.fLength == KAPStringAtom::kLong ? std::strcmp(atom.Text(), text) == 0
                                              : std::memcmp(atom.Text(), text, length) == 0;
}

// Early in the start of a system there may be no random bytes yet; the address of a variable, which
// differs from process to process, then has to do.
void TextKey::DrawSeed() noexcept {
  [[maybe_unused]] static const bool isDrawn = [] {
    std::array<std::uint64_t, 2> drawn{};
    if (getrandom(drawn.data(), sizeof drawn, GRND_NONBLOCK) != sizeof drawn) {
      const auto address = reinterpret_cast<std::uintptr_t>(&gSeeds);
      drawn = {Mix(address, 0x9E3779B97F4A7C15), address};
    }
    gSeeds = drawn;
    return true;
  }();
}

}  // namespace KAPHost
