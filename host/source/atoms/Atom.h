// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>

#include "kap/KAPTypes.h"

// An interned text. The text follows the record in the same block. The record is short, so that a
// text of up to 15 bytes takes 32: a table of many atoms is bound by memory.
struct KAPStringAtom {
  static constexpr std::uint8_t kLong = 255;

  std::atomic<long> fCount;  // references, those that threads keep for later included
  std::uint32_t fHash;
  std::uint16_t fTag;
  std::uint8_t fLength = 0;            // of the text; kLong: the end of the text says it
  std::atomic<bool> fIsCached{false};  // some thread may have references in its cache

  const char* Text() const noexcept { return reinterpret_cast<const char*>(this + 1); }
};

static_assert(sizeof(KAPStringAtom) == 16);
