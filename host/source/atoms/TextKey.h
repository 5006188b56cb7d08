// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "atoms/Atom.h"

namespace KAPHost {

// A text to look up: its length and 48 bits of its hash. The hash depends on secrets that each
// process draws, so that no document can be made of keys that collide.
//
// Most texts have 4 to 16 bytes. For these, hashing, comparing and copying take four words of four
// bytes, which overlap when the text is shorter than 16, and do not branch on the length: the
// lengths of the texts of a document vary at random, and each wrong guess of the processor costs as
// much as all the rest.
class TextKey {
 public:
  explicit TextKey(const char* text) noexcept : fText(text), fLength(std::strlen(text)) {
    if (IsShort()) fWords = ShortWords(text);
    const std::uint64_t hash = IsShort() ? HashWords() : HashBytes();
    fHash = static_cast<std::uint32_t>(hash);
    fTag = static_cast<std::uint16_t>(hash >> 32);
  }

  // Draws the secrets. The first call must precede the first key.
  static void DrawSeed() noexcept;

  bool IsTextOf(const KAPStringAtom& atom) const noexcept {
    if (atom.fHash != fHash || atom.fLength != ShownLength()) return false;
    if (IsShort()) return ShortWords(atom.Text()) == fWords;
    return atom.fLength == KAPStringAtom::kLong ? std::strcmp(atom.Text(), fText) == 0
                                                : std::memcmp(atom.Text(), fText, fLength) == 0;
  }
  // The length as an atom has it.
  std::uint8_t ShownLength() const noexcept {
    return static_cast<std::uint8_t>(std::min<std::size_t>(fLength, KAPStringAtom::kLong));
  }
  // Copies the text and its end.
  void CopyTo(char* bytes) const noexcept {
    if (!IsShort()) {
      std::memcpy(bytes, fText, fLength + 1);
      return;
    }
    const std::size_t middle = Middle();
    Put(bytes, fWords[0] >> 32);
    Put(bytes + middle, fWords[0]);
    Put(bytes + fLength - 4, fWords[1] >> 32);
    Put(bytes + fLength - 4 - middle, fWords[1]);
    bytes[fLength] = '\0';
  }

  const char* fText;
  std::size_t fLength;
  std::uint32_t fHash;
  std::uint16_t fTag;  // distinguishes most texts whose hashes select the same bucket

 private:
  using Words = std::array<std::uint64_t, 2>;

  static constexpr std::size_t kLeastShort = 4;
  static constexpr std::size_t kMostShort = 16;

  static std::uint64_t Mix(std::uint64_t a, std::uint64_t b) noexcept {
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
  }
  static std::uint64_t Get(const char* bytes) noexcept {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
  }
  static void Put(char* bytes, std::uint64_t value) noexcept {
    const auto word = static_cast<std::uint32_t>(value);
    std::memcpy(bytes, &word, sizeof word);
  }

  bool IsShort() const noexcept { return fLength - kLeastShort <= kMostShort - kLeastShort; }
  // From 8 bytes on, the words begin at 0, 4 or 8, and so many bytes before the end less four.
  std::size_t Middle() const noexcept { return fLength / 8 * 4; }
  Words ShortWords(const char* text) const noexcept {
    const std::size_t middle = Middle();
    const char* const last = text + fLength - 4;
    return {Get(text) << 32 | Get(text + middle), Get(last) << 32 | Get(last - middle)};
  }
  std::uint64_t HashWords() const noexcept {
    return Mix(fWords[0] ^ gSeeds[0], fWords[1] ^ gSeeds[1] ^ fLength);
  }
  std::uint64_t HashBytes() const noexcept;

  static std::array<std::uint64_t, 2> gSeeds;

  Words fWords{};
};

}  // namespace KAPHost
