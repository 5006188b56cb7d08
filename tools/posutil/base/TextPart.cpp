// SPDX-License-Identifier: MIT
#include "base/TextPart.h"

#include <emmintrin.h>

#include <algorithm>

namespace PosUtil {

namespace {

struct Lines {
  std::size_t operator()(char c) const { return c == '\n'; }
  __m128i operator()(__m128i bytes) const { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\n')); }
};

// Every byte but those that continue a character, 0x80 to 0xBF.
struct Characters {
  std::size_t operator()(char c) const { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }
  __m128i operator()(__m128i bytes) const { return _mm_cmpgt_epi8(bytes, _mm_set1_epi8(-65)); }
};

// All of an input goes through here, and the compiler does not make vectors of it.
template <class IsCounted>
std::size_t Count(std::string_view bytes, IsCounted isCounted) {
  std::size_t count = 0;
  while (bytes.size() >= 16) {
    // Sixteen counters of a byte, for as many blocks as a byte can count.
    const std::size_t blocks = std::min<std::size_t>(bytes.size() / 16, 255);
    __m128i counters = _mm_setzero_si128();
    for (std::size_t i = 0; i < blocks; ++i) {
      const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes.data()) + i);
      counters = _mm_sub_epi8(counters, isCounted(block));  // a counted byte is -1
    }
    const __m128i sums = _mm_sad_epu8(counters, _mm_setzero_si128());
    count += static_cast<std::size_t>(_mm_extract_epi16(sums, 0) + _mm_extract_epi16(sums, 4));
    bytes.remove_prefix(blocks * 16);
  }
  for (const char c : bytes) count += isCounted(c);
  return count;
}

}  // namespace

void LineCounter::Add(std::string_view bytes) {
  const std::size_t end = bytes.rfind('\n');
  if (end != std::string_view::npos) {
    fLines += Count(bytes.substr(0, end + 1), Lines());
    fColumns = 0;
    bytes.remove_prefix(end + 1);
  }
  fColumns += Count(bytes, Characters());
}

}  // namespace PosUtil
