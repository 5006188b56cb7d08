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
    const std::uint64_t hash = IsShort() ? HashWords() : HashBytes(text, fLength);
    fHash = static_cast<std::uint32_t>(hash);
    fTag = static_cast<std::uint16_t>(hash >> 32);
  }

  // Draws the secrets. The first call must precede the first key.
  static void DrawSeed() noexcept;

  bool IsTextOf(const KAPStringAtom& atom) const noexcept {
    return atom.fHash == fHash && IsTextOfSameHash(atom);
  }
  // The same for an atom that is known to have the hash.
  bool IsTextOfSameHash(const KAPStringAtom& atom) const noexcept {
    if (IsShort()) return atom.fLength == fLength && ShortWords(atom.Text()) == fWords;
    return atom.fLength == ShownLength() && IsLongText(fText, fLength, atom);
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
    Put(bytes, fWords.fFirst >> 32);
    Put(bytes + middle, fWords.fFirst);
    Put(bytes + fLength - 4, fWords.fLast >> 32);
    Put(bytes + fLength - 4 - middle, fWords.fLast);
    bytes[fLength] = '\0';
  }

  const char* fText;
  std::size_t fLength;
  std::uint32_t fHash;
  std::uint16_t fTag;  // distinguishes most texts whose hashes select the same bucket

 private:
  struct Words {  // an array would be compared in memory
    std::uint64_t fFirst = 0;
    std::uint64_t fLast = 0;
    bool operator==(const Words&) const = default;
  };

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
    return Mix(fWords.fFirst ^ gSeeds[0], fWords.fLast ^ gSeeds[1] ^ fLength);
  }
  // Static: a key whose address nothing takes stays in registers.
  static std::uint64_t HashBytes(const char* text, std::size_t length) noexcept;
  static bool IsLongText(const char* text, std::size_t length, const KAPStringAtom& atom) noexcept;

  [[gnu::visibility("hidden")]] static std::array<std::uint64_t, 2> gSeeds;

  Words fWords{};
};

}  // namespace KAPHost
