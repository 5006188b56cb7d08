#include "SortableStringAtom.h"

#include <algorithm>
#include <cstring>

namespace NPOSObjectImpl {

namespace {

std::uint64_t BigEndian(const char* bytes) noexcept {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return __builtin_bswap64(word);
}

}  // namespace

TextPrefix::TextPrefix(std::string_view text) noexcept {
  char bytes[kSize] = {};
  std::memcpy(bytes, text.data(), std::min(text.size(), kSize));
  fHigh = BigEndian(bytes);
  fLow = BigEndian(bytes + sizeof fHigh);
}

int SortableStringAtom::Compare(const SortableStringAtom& a, const SortableStringAtom& b) noexcept {
  const int order = a.fPrefix.Compare(b.fPrefix);
  return order != 0 || a.Text() == b.Text() ? order : std::strcmp(a.Text(), b.Text());
}

int SortableStringAtom::CompareRest(std::string_view text, const char* key) noexcept {
  const std::string_view rest = text.substr(TextPrefix::kSize);
  const int order = std::strncmp(rest.data(), key + TextPrefix::kSize, rest.size());
  return order != 0 ? order : -static_cast<int>(key[text.size()] != '\0');
}

}  // namespace NPOSObjectImpl
