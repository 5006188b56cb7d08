// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace KAPHost {

// A text to look up: its length and 48 bits of its hash. The hash depends on a secret that each
// process draws, so that no document can be made of keys that collide.
struct TextKey {
  explicit TextKey(const char* text) noexcept;

  // Draws the secret. The first call must precede the first key.
  static void DrawSeed() noexcept;

  const char* fText;
  std::size_t fLength;
  std::uint32_t fHash;
  std::uint16_t fTag;  // tells most texts apart whose hashes lead to the same place
};

}  // namespace KAPHost
