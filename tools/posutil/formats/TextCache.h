// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "kap/KAPStringAtom.h"

namespace PosUtil {

// A cache of the objects made from short texts: documents repeat their keys and many of their
// strings. `Made` is a handle class. A text may replace another one.
template <class Made>
class TextCache {
 public:
  // Returns the result of `make()` for this text, cached or new, valid until the next call.
  template <class Make>
  const Made& Get(std::string_view text, Make make) {
    if (text.size() > kLongest) return fLong = make();
    Slot& slot = fSlots[SlotOf(text)];
    if (slot.fMade.Handle() && text == std::string_view(slot.fText, slot.fLength)) {
      return slot.fMade;
    }
    slot.fMade = make();
    slot.fLength = static_cast<unsigned char>(text.size());
    std::memcpy(slot.fText, text.data(), text.size());
    return slot.fMade;
  }

 private:
  static constexpr unsigned kSlotBits = 9;
  static constexpr std::size_t kLongest = 39;

  struct Slot {
    Made fMade;
    unsigned char fLength = 0;
    char fText[kLongest];
  };

  static std::uint64_t Word(const char* bytes, std::size_t count) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, count);
    return word;
  }

  static std::size_t SlotOf(std::string_view text) {
    const std::size_t count = std::min<std::size_t>(text.size(), 8);
    std::uint64_t hash = Word(text.data(), count);
    hash =
        hash * 0x9E3779B97F4A7C15U ^ Word(text.data() + text.size() - count, count) ^ text.size();
    hash *= 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>(hash >> (64 - kSlotBits));
  }

  std::unique_ptr<Slot[]> fSlots = std::make_unique<Slot[]>(std::size_t{1} << kSlotBits);
  Made fLong;
};

// The atoms of dictionary keys. The host makes one for a key that many dictionaries share.
class KeyAtoms {
 public:
  // `key` is zero-terminated. The atom stays valid until the next call.
  const KAP_T_MT::CKAPStringAtom& Get(std::string_view key) {
    return fCache.Get(key, [key] { return KAP_T_MT::CKAPStringAtom(key.data()); });
  }

 private:
  TextCache<KAP_T_MT::CKAPStringAtom> fCache;
};

}  // namespace PosUtil
