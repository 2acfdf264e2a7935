// Paints over a row of coverage: solid colours, gradients through their stop
// cursor and a table square root, and smoothed bitmaps, each with a branch for
// the identity colour transform.
#include <emmintrin.h>

#include <algorithm>
#include <cstring>

#include "movie/render/dd_render.h"
#include "movie/render/dd_simd.h"

namespace {

inline uint32_t level(uint32_t cell) {
  return ddCoverage_level(cell);
}

inline void merge(ddColor* p, uint32_t c, ddColor colour) {
  if (c == 255)
    *p = colour;
  else if (c)
    *p += scaleWord(colour, c);
}

struct Walk {
  int64_t u, v;
  int64_t du, dv;
  void step() {
    u = ddWrap(u + du);
    v = ddWrap(v + dv);
  }
};

Walk startWalk(const ddPaint* paint, int x, int y) {
  ddFixed u, v;
  ddMatrix_transform(paint->inverse, ddWrap(int64_t(x) << 10), ddWrap(int64_t(y) << 10), &u, &v);
  return Walk{u, v, paint->inverse.a, paint->inverse.c};
}

// floor(16 * sqrt(i)).
struct SqrtTable {
  uint8_t v[256];
  constexpr SqrtTable() : v() {
    for (int i = 0; i < 256; i++) {
      int r = 0;
      while ((r + 1) * (r + 1) <= 256 * i) r++;
      v[i] = uint8_t(r);
    }
  }
};
constexpr SqrtTable sqrtTable;

inline int32_t floorMod(int64_t a, int64_t m) {
  int64_t r = a % m;
  return int32_t(r < 0 ? r + m : r);
}

inline void solidCell(ddColor* p, uint32_t c, ddColor colour) {
  if (c == 255) {
    *p = colour;
  } else if (c) {
    uint32_t a = *p >> 24;
    uint32_t s = a + c > 255 ? 255 - a : c;
    if (s) *p += scaleWord(colour, s);
  }
}

// Reads and clears the cells four at a time. A cell that is not whole adds
// the colour scaled by its coverage, or by what the pixel's alpha leaves if
// that is less: min(c, 255 - a) is both cases of the one-cell rule.
void fillSolid(ddPaint* paint, ddColor* row, const ddCxform& cxform) {
  const ddColor colour = ddColor_premultiply(ddCxform_apply(cxform, paint->data.color));
  uint32_t* cells = paint->coverage;
  const __m128i byte = _mm_set1_epi32(255), zero = _mm_setzero_si128();
  const __m128i fill = _mm_set1_epi32(int(colour));
  int x = paint->minX;
  for (; x + 4 <= paint->maxX; x += 4) {
    __m128i* at = reinterpret_cast<__m128i*>(cells + x);
    const __m128i c = _mm_and_si128(_mm_srli_epi32(_mm_loadu_si128(at), 12), byte);
    _mm_storeu_si128(at, zero);
    if (_mm_movemask_epi8(_mm_cmpeq_epi32(c, byte)) == 0xFFFF) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(row + x), fill);
      continue;
    }
    if (_mm_movemask_epi8(_mm_cmpeq_epi32(c, zero)) == 0xFFFF) continue;
    __m128i* px = reinterpret_cast<__m128i*>(row + x);
    const __m128i p = _mm_loadu_si128(px);
    // Levels and alphas are below 256, so 16-bit minima serve.
    const __m128i s = _mm_min_epi16(c, _mm_sub_epi32(byte, _mm_srli_epi32(p, 24)));
    const __m128i whole = _mm_cmpeq_epi32(c, byte);
    const __m128i added = _mm_add_epi32(p, scaleVec(fill, s));
    _mm_storeu_si128(px, _mm_or_si128(_mm_and_si128(whole, fill), _mm_andnot_si128(whole, added)));
  }
  for (; x < paint->maxX; x++) {
    solidCell(row + x, level(cells[x]), colour);
    cells[x] = 0;
  }
}

void fillGradient(ddPaint* paint, int y, ddColor* row, const ddCxform& cxform) {
  ddGradient* gradient = paint->data.gradient;
  if (!gradient) return;
  const bool identity = ddCxform_isIdentity(cxform);
  const bool radial = paint->kind == ddFillRadial;
  const uint32_t* cells = paint->coverage;
  Walk w = startWalk(paint, paint->minX, y);
  if (identity && !radial) w.u = ddWrap(w.u + 65280);
  for (int x = paint->minX; x < paint->maxX; x++, w.step()) {
    uint32_t c = level(cells[x]);
    if (!c) continue;
    int32_t t;
    if (radial) {
      uint32_t su = uint32_t(int32_t(w.u) >> 5), sv = uint32_t(int32_t(w.v) >> 5);
      t = int32_t(ddIsqrt(su * su + sv * sv));
    } else {
      t = identity ? int32_t(w.u) / 2 : int32_t(w.u);
    }
    ddColor colour = ddGradient_colorAt(gradient, t);
    if (!identity) colour = ddCxform_apply(cxform, colour);
    merge(&row[x], c, ddColor_premultiply(colour));
  }
}

void fillBitmap(ddPaint* paint, int y, ddColor* row, const ddCxform& cxform) {
  const ddSurface* bitmap = paint->data.bitmap;
  if (!bitmap || !bitmap->width || !bitmap->height) return;
  const bool identity = ddCxform_isIdentity(cxform);
  const bool tiled = paint->kind == ddFillTiledBitmap;
  const uint32_t* cells = paint->coverage;
  Walk w = startWalk(paint, paint->minX, y);
  for (int x = paint->minX; x < paint->maxX; x++, w.step()) {
    uint32_t c = level(cells[x]);
    if (!c) continue;
    ddColor colour = tiled ? ddBitmap_sampleTiled(bitmap, int32_t(w.u), int32_t(w.v))
                           : ddBitmap_sampleClamped(bitmap, int32_t(w.u), int32_t(w.v));
    if (!identity) colour = ddCxform_applyPremul(cxform, colour);
    merge(&row[x], c, colour);
  }
}

}  // namespace

uint32_t ddIsqrt(uint32_t n) {
  if (n < 256) return uint32_t(sqrtTable.v[n] >> 4) * 32;
  // Estimate from the top eight bits of an even shift, then Newton and a
  // final correction to the exact floor.
  int shift = (31 - __builtin_clz(n) - 6) & ~1;
  uint32_t x = (uint32_t(sqrtTable.v[n >> shift]) << (shift / 2)) >> 4;
  x = std::max<uint32_t>(x, 1);
  x = (x + n / x) / 2;
  x = (x + n / x) / 2;
  while (uint64_t(x) * x > n) x--;
  while (uint64_t(x + 1) * (x + 1) <= n) x++;
  return x * 32;
}

ddColor ddColor_lerp(ddColor p, ddColor q, int32_t f) {
  if (p == q) return p;
  ddColor out = 0;
  for (int shift = 0; shift < 32; shift += 8) {
    int32_t a = int32_t((p >> shift) & 255), b = int32_t((q >> shift) & 255);
    out |= (uint32_t(a + (((b - a) * f) >> 10)) & 255) << shift;
  }
  return out;
}

namespace {

ddColor bilinear(const ddSurface* bm, int32_t xa, int32_t ya, int32_t xb, int32_t yb) {
  const ddColor* px = bm->pixels;
  const size_t w = bm->width;
  const size_t ra = size_t(ya >> 10) * w, rb = size_t(yb >> 10) * w;
  const size_t ca = size_t(xa >> 10), cb = size_t(xb >> 10);
  ddColor top = ddColor_lerp(px[ra + ca], px[ra + cb], xa & 1023);
  ddColor bottom = ddColor_lerp(px[rb + ca], px[rb + cb], xa & 1023);
  return ddColor_lerp(top, bottom, ya & 1023);
}

}  // namespace

ddColor ddBitmap_sampleTiled(const ddSurface* bm, ddFixed u, ddFixed v) {
  // A floored remainder keeps negative coordinates inside the bitmap, so the
  // tiling carries on seamlessly to the left of and above the origin.
  const int64_t w = int64_t(bm->width) << 10, h = int64_t(bm->height) << 10;
  return bilinear(bm, floorMod(u, w), floorMod(v, h), floorMod(int64_t(u) + 1024, w),
                  floorMod(int64_t(v) + 1024, h));
}

ddColor ddBitmap_sampleClamped(const ddSurface* bm, ddFixed u, ddFixed v) {
  const int64_t w = int64_t(bm->width - 1) << 10, h = int64_t(bm->height - 1) << 10;
  auto clampTo = [](int64_t t, int64_t hi) { return int32_t(std::clamp<int64_t>(t, 0, hi)); };
  return bilinear(bm, clampTo(u, w), clampTo(v, h), clampTo(int64_t(u) + 1024, w),
                  clampTo(int64_t(v) + 1024, h));
}

void ddPaint_updateInverse(ddPaint* paint, const ddMatrix& matrix) {
  if (paint->kind >= ddFillRadial && paint->kind <= ddFillTiledBitmap)
    paint->inverse = ddMatrix_invert(ddMatrix_concat(matrix, paint->fillMatrix));
}

void ddPaint_fillRow(ddPaint* paint, int y, ddColor* row, const ddCxform& cxform) {
  switch (paint->kind) {
    case ddFillSolid:
      fillSolid(paint, row, cxform);
      return;
    case ddFillRadial:
    case ddFillLinear:
      fillGradient(paint, y, row, cxform);
      break;
    case ddFillClippedBitmap:
    case ddFillTiledBitmap:
      fillBitmap(paint, y, row, cxform);
      break;
    default:
      break;
  }
  if (paint->minX < paint->maxX)
    std::memset(paint->coverage + paint->minX, 0, size_t(paint->maxX - paint->minX) * 4);
}
