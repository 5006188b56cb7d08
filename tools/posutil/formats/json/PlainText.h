// SPDX-License-Identifier: MIT
#pragma once

#include <emmintrin.h>

namespace PosUtil {

// A bit for each of the 16 bytes that must be escaped in a JSON string or needs a closer look:
// quotes, backslashes, control characters and everything past ASCII.
inline unsigned UnusualBytes(const char* text) {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
  // As signed numbers, the bytes past ASCII are below the space as well.
  const __m128i special = _mm_or_si128(_mm_cmplt_epi8(bytes, _mm_set1_epi8(' ')),
                                       _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('"')),
                                                    _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'))));
  return static_cast<unsigned>(_mm_movemask_epi8(special));
}

}  // namespace PosUtil
