#include "graphics/pixelsample/direct_rows.h"

#include <cstring>

#include "graphics/pixelsample/sample_select.h"

// The loops are store-bound: 32-byte stores where the processor has them
// take a third off an upload, and the plain build runs everywhere else.
#define VECTOR_CLONES __attribute__((target_clones("avx2", "default")))

namespace vostan {
namespace {

inline uint32_t load32(const uint8_t* p) {
  uint32_t v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

inline void store32(uint8_t* p, uint32_t v) {
  std::memcpy(p, &v, sizeof v);
}

// Bytes 0 and 2 of each 4-byte pixel trade places: R, G, B, A <-> B, G, R, A.
// Shifts and masks only, so SSE2 does four pixels at a time.
VECTOR_CLONES void swapRedBlue(const uint8_t* __restrict src, uint8_t* __restrict dst,
                               int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    const uint32_t v = load32(src + 4 * i);
    store32(dst + 4 * i, (v & 0xFF00FF00u) | (v >> 16 & 0xFFu) | (v & 0xFFu) << 16);
  }
}

// As swapRedBlue, with byte 3 set: the layout has no alpha, or reads it as 255.
VECTOR_CLONES void swapRedBlueOpaque(const uint8_t* __restrict src, uint8_t* __restrict dst,
                                     int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    const uint32_t v = load32(src + 4 * i);
    store32(dst + 4 * i, (v & 0x0000FF00u) | (v >> 16 & 0xFFu) | (v & 0xFFu) << 16 | 0xFF000000u);
  }
}

void copy4(const uint8_t* __restrict src, uint8_t* __restrict dst, int32_t count) {
  std::memcpy(dst, src, static_cast<std::size_t>(count) * 4);
}

VECTOR_CLONES void copy4Opaque(const uint8_t* __restrict src, uint8_t* __restrict dst,
                               int32_t count) {
  for (int32_t i = 0; i < count; ++i) store32(dst + 4 * i, load32(src + 4 * i) | 0xFF000000u);
}

void copy2(const uint8_t* __restrict src, uint8_t* __restrict dst, int32_t count) {
  std::memcpy(dst, src, static_cast<std::size_t>(count) * 2);
}

void copy1(const uint8_t* __restrict src, uint8_t* __restrict dst, int32_t count) {
  std::memcpy(dst, src, static_cast<std::size_t>(count));
}

// R, G, B bytes into B, G, R, 255.
VECTOR_CLONES void rgbToBgrx(const uint8_t* __restrict src, uint8_t* __restrict dst,
                             int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    dst[4 * i] = src[3 * i + 2];
    dst[4 * i + 1] = src[3 * i + 1];
    dst[4 * i + 2] = src[3 * i];
    dst[4 * i + 3] = 0xFF;
  }
}

// B, G, R, X bytes into R, G, B.
VECTOR_CLONES void bgrxToRgb(const uint8_t* __restrict src, uint8_t* __restrict dst,
                             int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    dst[3 * i] = src[4 * i + 2];
    dst[3 * i + 1] = src[4 * i + 1];
    dst[3 * i + 2] = src[4 * i];
  }
}

// An alpha-only byte into white luminance with that alpha.
VECTOR_CLONES void alphaToLuminanceAlpha(const uint8_t* __restrict src, uint8_t* __restrict dst,
                                         int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    dst[2 * i] = 0xFF;
    dst[2 * i + 1] = src[i];
  }
}

}  // namespace

DirectRow directRowToSurface(int32_t format, int32_t type, int32_t surfaceFormat) {
  if (type != gl::kUnsignedByte && type != gl::kByte) return {};
  const bool argb = surfaceFormat == d3dfmt::kA8R8G8B8;
  const bool xrgb = surfaceFormat == d3dfmt::kX8R8G8B8;
  switch (format) {
    case gl::kRgba:
      if (argb) return {swapRedBlue, 4, 4};
      if (xrgb) return {swapRedBlueOpaque, 4, 4};
      break;
    case gl::kBgra:
      if (argb) return {copy4, 4, 4};
      if (xrgb) return {copy4Opaque, 4, 4};
      break;
    case gl::kRgb:
      if (argb || xrgb) return {rgbToBgrx, 3, 4};
      break;
    case gl::kLuminanceAlpha:
      if (surfaceFormat == d3dfmt::kA8L8) return {copy2, 2, 2};
      break;
    case gl::kLuminance:
      if (surfaceFormat == d3dfmt::kL8) return {copy1, 1, 1};
      break;
    case gl::kAlpha:
      if (surfaceFormat == d3dfmt::kA8L8) return {alphaToLuminanceAlpha, 1, 2};
      break;
  }
  return {};
}

DirectRow directRowFromSurface(int32_t surfaceFormat, int32_t format, int32_t type) {
  if (type != gl::kUnsignedByte && type != gl::kByte) return {};
  const bool argb = surfaceFormat == d3dfmt::kA8R8G8B8;
  const bool xrgb = surfaceFormat == d3dfmt::kX8R8G8B8;
  if (!argb && !xrgb) return {};
  switch (format) {
    case gl::kRgba:
      return {argb ? swapRedBlue : swapRedBlueOpaque, 4, 4};
    case gl::kBgra:
      return {argb ? copy4 : copy4Opaque, 4, 4};
    case gl::kRgb:
      return {bgrxToRgb, 4, 3};
  }
  return {};
}

}  // namespace vostan
