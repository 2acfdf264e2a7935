// Colour arithmetic of the row step, one pixel or four at a time, for the
// rasteriser's own files.
#pragma once

#include <emmintrin.h>

#include "movie/dd_base.h"

// ddColor_scale for s up to 255, two channels per multiply.
inline ddColor scaleWord(ddColor c, uint32_t s) {
  return ((((c & 0x00FF00FFu) * s) >> 8) & 0x00FF00FFu) |
         (((c >> 8) & 0x00FF00FFu) * s & 0xFF00FF00u);
}

// ddColor_scale of four pixels, each by its own s of 0 to 255.
inline __m128i scaleVec(__m128i colour, __m128i s32) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i s16 = _mm_packs_epi32(s32, s32);
  const __m128i pairs = _mm_unpacklo_epi16(s16, s16);
  const __m128i sLo = _mm_unpacklo_epi32(pairs, pairs), sHi = _mm_unpackhi_epi32(pairs, pairs);
  const __m128i lo = _mm_srli_epi16(_mm_mullo_epi16(_mm_unpacklo_epi8(colour, zero), sLo), 8);
  const __m128i hi = _mm_srli_epi16(_mm_mullo_epi16(_mm_unpackhi_epi8(colour, zero), sHi), 8);
  return _mm_packus_epi16(lo, hi);
}
