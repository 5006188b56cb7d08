// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "kap/KAPStringAtom.h"
#include "kapimpl/base/Required.h"

namespace NPOSObjectImpl {

// The text of an atom. Equal texts are one: they are compared as pointers.
using AtomText = const char*;

// The text of an atom that is borrowed for the call; POSException when there is none.
inline AtomText TextOf(KAPStringAtom* atom) {
  return Required(KAP_T_MT::KAPStringClient::Call<"GetCString">(Required(atom)));
}

// The first bytes of a text as numbers, padded with zeros: they compare as strcmp compares the
// bytes. Most keys differ or end within them, so most comparisons in a tree touch neither the atom
// nor its text.
//
// Measured in bench/bench_dict.cpp: with two words, keys of 20 bytes that share 16 take 1.6 times
// as long among 1 000; four words fill the block that an entry takes anyhow. A hash index by the
// atom's text pointer beside the tree was tried: it makes "Get" at least twice as fast among 1 000
// keys, but inserting them then takes longer than in a std::map (1.06 to 1.10 times), and it cannot
// be built lazily, since reading must not change a dictionary.
class TextPrefix {
 public:
  static constexpr std::size_t kSize = 4 * sizeof(std::uint64_t);

  explicit TextPrefix(std::string_view text) noexcept : fFirst(Word(text)) {
    if (text.size() <= sizeof fFirst) return;
    fSecond = Word(text.substr(8));
    if (text.size() <= 16) return;
    fThird = Word(text.substr(16));
    if (text.size() > 24) fFourth = Word(text.substr(24));
  }

  bool HoldsAll() const noexcept { return (fFourth & 0xff) == 0; }  // no zero in a text

  // Negative, 0 or positive, as strcmp.
  int Compare(const TextPrefix& other) const noexcept {
    if (fFirst != other.fFirst) return fFirst < other.fFirst ? -1 : 1;
    if (fSecond != other.fSecond) return fSecond < other.fSecond ? -1 : 1;
    if (fThird != other.fThird) return fThird < other.fThird ? -1 : 1;
    if (fFourth != other.fFourth) return fFourth < other.fFourth ? -1 : 1;
    return 0;
  }

 private:
  // The first eight bytes, the first one highest.
  static std::uint64_t Word(std::string_view text) noexcept {
    if (text.size() < sizeof(std::uint64_t)) return ShortWord(text);
    std::uint64_t word = 0;
    std::memcpy(&word, text.data(), sizeof word);
    return __builtin_bswap64(word);
  }
  static std::uint64_t ShortWord(std::string_view text) noexcept;

  // No array: the compiler would guard the stack of each function that looks a text up.
  std::uint64_t fFirst;
  std::uint64_t fSecond = 0;
  std::uint64_t fThird = 0;
  std::uint64_t fFourth = 0;
};

// A text to look a key up by. Borrowed.
class SortableText {
 public:
  explicit SortableText(std::string_view text) noexcept : fPrefix(text), fText(text) {}

  const TextPrefix& Prefix() const noexcept { return fPrefix; }
  std::string_view Text() const noexcept { return fText; }

 private:
  TextPrefix fPrefix;
  std::string_view fText;
};

// A key: an atom, ordered by the bytes of its text.
class SortableStringAtom {
 public:
  explicit SortableStringAtom(KAP_T_MT::CKAPStringAtom atom, const TextPrefix& prefix) noexcept
      : fAtom(std::move(atom)), fPrefix(prefix) {}

  const KAP_T_MT::CKAPStringAtom& Atom() const noexcept { return fAtom; }
  const char* Text() const noexcept { return fAtom.Text(); }
  const TextPrefix& Prefix() const noexcept { return fPrefix; }

  // Negative, 0 or positive: `text` comes before, at, or after `key`.
  static int Compare(const SortableText& text, const SortableStringAtom& key) noexcept {
    const int order = text.Prefix().Compare(key.Prefix());
    return order != 0 || text.Prefix().HoldsAll() ? order : CompareRest(text.Text(), key.Text());
  }
  static int Compare(const SortableStringAtom& a, const SortableStringAtom& b) noexcept {
    return a.Text() == b.Text() ? 0 : CompareOther(a, b);
  }

 private:
  static int CompareOther(const SortableStringAtom& a, const SortableStringAtom& b) noexcept;
  static int CompareRest(std::string_view text, const char* key) noexcept;

  KAP_T_MT::CKAPStringAtom fAtom;
  TextPrefix fPrefix;
};

}  // namespace NPOSObjectImpl
