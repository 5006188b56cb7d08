// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "pos/POSKinds.h"

namespace NPOSStreamerImpl::NTypeAImpl {

// A character that must be escaped, and the letter that is written for it after a backslash.
struct EscapePair {
  char fCharacter;
  char fLetter;
};

constexpr bool IsWhitespace(char c) noexcept {
  constexpr std::uint64_t kWhitespace = 1ULL << ' ' | 1ULL << '\t' | 1ULL << '\n' | 1ULL << '\r';
  const auto code = static_cast<unsigned char>(c);
  return code <= ' ' && (kWhitespace >> code & 1) != 0;
}

// The rules inside a construct: what ends it and what is escaped in it. A constant per kind of
// value. The tables, made at compile time, decide about a character in one step: documents are read
// and written character by character.
class StreamParams {
 public:
  // What a character that is read means.
  enum class Meaning : unsigned char { kItself, kSpace, kClose, kBackslash };

  static constexpr KAP_T_MT::POSType kNoType = {};
  static constexpr std::size_t kMaxEscapes = 5;
  static constexpr char kPlain = '\0';  // written as it is
  static constexpr char kOctal = '\1';  // written as a backslash and three octal digits

  // `escapes` alternates: a character, then the letter that is written for it. White space that is
  // not escaped is read as a space, in all of them.
  constexpr StreamParams(KAP_T_MT::POSType type, char open, char close,
                         std::string_view escapes) noexcept
      : kType(type), kOpen(open), kClose(close) {
    for (std::size_t i = 0; i + 1 < escapes.size(); i += 2) {
      fEscapes[i / 2] = {escapes[i], escapes[i + 1]};
    }
    for (int code = 0; code < 256; ++code) {
      const char c = static_cast<char>(code);
      const auto index = static_cast<std::size_t>(code);
      fMeanings[index] = MeaningOf(IsWhitespace(c) ? ' ' : c, c);
      fLetters[index] = LetterOf(code);
    }
  }

  Meaning HowToRead(char c) const noexcept { return fMeanings[static_cast<unsigned char>(c)]; }

  // kPlain, kOctal, or the letter to be written after a backslash.
  constexpr char HowToWrite(char c) const noexcept {
    return fLetters[static_cast<unsigned char>(c)];
  }

  // The pair of the letter, null when there is none.
  const EscapePair* FindLetter(char letter) const noexcept {
    for (const EscapePair& pair : fEscapes) {
      if (pair.fCharacter == '\0') break;
      if (pair.fLetter == letter) return &pair;
    }
    return nullptr;
  }

  const KAP_T_MT::POSType kType;  // of the values; kNoType at the top level
  const char kOpen;
  const char kClose;

 private:
  constexpr Meaning MeaningOf(char read, char raw) const noexcept {
    if (read == '\\') return Meaning::kBackslash;
    if (read == kClose) return Meaning::kClose;
    return read == raw ? Meaning::kItself : Meaning::kSpace;
  }
  constexpr char LetterOf(int code) const noexcept {
    const char c = static_cast<char>(code);
    const bool isPrintable = code >= 32 && code < 127;
    if (!isPrintable && c != '\t' && c != '\n' && c != '\r') return kOctal;
    for (const EscapePair& pair : fEscapes) {
      if (pair.fCharacter == c) return pair.fLetter;
    }
    return kPlain;
  }

  std::array<EscapePair, kMaxEscapes + 1> fEscapes = {};  // ends at a NUL character
  std::array<Meaning, 256> fMeanings = {};
  std::array<char, 256> fLetters = {};
};

// Outside all values.
inline constexpr StreamParams kTopLevelParams(StreamParams::kNoType, '\0', '\0', R"(\\)");

}  // namespace NPOSStreamerImpl::NTypeAImpl
