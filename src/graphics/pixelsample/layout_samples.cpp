// The bit rules of each memory layout, and the row loops that apply them.
// Every rule is branch-free and table-free so that the row loops vectorise.
#include <cstddef>
#include <cstring>

#include "graphics/pixelsample/pixel_sample.h"

namespace vostan {
namespace {

// Memory may be unaligned (Java arrays, odd pitches, 3-byte pixels).
template <class T>
inline T load(const uint8_t* p) {
  T v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

template <class T>
inline void store(uint8_t* p, T v) {
  std::memcpy(p, &v, sizeof v);
}

// SSE2 has no byte shuffle: one bswap per word is faster than the unpacking
// the vectoriser makes of a byte-by-byte swap.
inline uint32_t byteSwap(uint32_t v) {
  return __builtin_bswap32(v);
}

// Byte n of the common word, counted from red.
inline uint32_t channel(uint32_t c, int n) {
  return (c >> (24 - 8 * n)) & 0xFF;
}

}  // namespace

namespace layout {

// Most layouts read pixel i for i from start up; the exceptions say otherwise.
struct Plain {
  static constexpr bool kIgnoresStart = false;
  static constexpr bool kLastFirst = false;
};

struct Byte1 : Plain {
  static constexpr int kSize = 1;
  static uint32_t read(const uint8_t* p) { return uint32_t{p[0]} << 24; }
  static void write(uint8_t* p, uint32_t c) { p[0] = uint8_t(c >> 24); }
};

struct Bytes2 : Plain {
  static constexpr int kSize = 2;
  static uint32_t read(const uint8_t* p) { return uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16; }
  static void write(uint8_t* p, uint32_t c) {
    p[0] = uint8_t(c >> 24);
    p[1] = uint8_t(c >> 16);
  }
};

struct Bytes3 : Plain {
  static constexpr int kSize = 3;
  static uint32_t read(const uint8_t* p) {
    return uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 8;
  }
  static void write(uint8_t* p, uint32_t c) {
    p[0] = uint8_t(c >> 24);
    p[1] = uint8_t(c >> 16);
    p[2] = uint8_t(c >> 8);
  }
};

// Bytes in memory order are the common word read big-endian.
struct Bytes4 : Plain {
  static constexpr int kSize = 4;
  static uint32_t read(const uint8_t* p) { return byteSwap(load<uint32_t>(p)); }
  static void write(uint8_t* p, uint32_t c) { store<uint32_t>(p, byteSwap(c)); }
};

// Wide channels keep their top byte; written back, the low bits are zero.
template <int kChannels>
struct Shorts : Plain {
  static constexpr int kSize = 2 * kChannels;
  static uint32_t read(const uint8_t* p) {
    uint32_t c = 0;
    for (int n = 0; n < kChannels; ++n)
      c |= uint32_t(load<uint16_t>(p + 2 * n) >> 8) << (24 - 8 * n);
    return c;
  }
  static void write(uint8_t* p, uint32_t c) {
    for (int n = 0; n < kChannels; ++n) store<uint16_t>(p + 2 * n, uint16_t(channel(c, n) << 8));
  }
};
struct Short1 : Shorts<1> {};
struct Shorts2 : Shorts<2> {};
struct Shorts3 : Shorts<3> {};
struct Shorts4 : Shorts<4> {};

template <int kChannels>
struct Ints : Plain {
  static constexpr int kSize = 4 * kChannels;
  static uint32_t read(const uint8_t* p) {
    uint32_t c = 0;
    for (int n = 0; n < kChannels; ++n) c |= (load<uint32_t>(p + 4 * n) >> 24) << (24 - 8 * n);
    return c;
  }
  static void write(uint8_t* p, uint32_t c) {
    for (int n = 0; n < kChannels; ++n) store<uint32_t>(p + 4 * n, channel(c, n) << 24);
  }
};
struct Int1 : Ints<1> {};
struct Ints2 : Ints<2> {};
struct Ints3 : Ints<3> {};
struct Ints4 : Ints<4> {
  // Alpha goes to word 2 over blue, and word 3 keeps what it had.
  static void write(uint8_t* p, uint32_t c) {
    store<uint32_t>(p, channel(c, 0) << 24);
    store<uint32_t>(p + 4, channel(c, 1) << 24);
    store<uint32_t>(p + 8, channel(c, 2) << 24);
    store<uint32_t>(p + 8, channel(c, 3) << 24);
  }
};

struct Byte332 : Plain {
  static constexpr int kSize = 1;
  static uint32_t read(const uint8_t* p) {
    const uint32_t s = p[0];
    return (s & 0xE0) << 24 | (s & 0x1C) << 19 | (s & 0x03) << 14 | 0xFF;
  }
  static void write(uint8_t* p, uint32_t c) {
    p[0] = uint8_t((c >> 24 & 0xE0) | (c >> 19 & 0x1C) | (c >> 14 & 0x03));
  }
};

struct Byte233Rev : Plain {
  static constexpr int kSize = 1;
  static uint32_t read(const uint8_t* p) {
    const uint32_t s = p[0];
    return (s & 0x07) << 29 | (s & 0x38) << 18 | (s & 0xC0) << 8 | 0xFF;
  }
  static void write(uint8_t* p, uint32_t c) {
    p[0] = uint8_t((c >> 29) | (c >> 18 & 0x38) | (c >> 8 & 0xC0));
  }
};

struct Short565 : Plain {
  static constexpr int kSize = 2;
  static uint32_t read(const uint8_t* p) {
    const uint32_t s = load<uint16_t>(p);
    return (s & 0xF800) << 16 | (s & 0x07E0) << 13 | (s & 0x001F) << 11 | 0xFF;
  }
  static void write(uint8_t* p, uint32_t c) {
    store<uint16_t>(p, uint16_t((c >> 16 & 0xF800) | (c >> 13 & 0x07E0) | (c >> 11 & 0x001F)));
  }
};

struct Short555 : Plain {
  static constexpr int kSize = 2;
  static uint32_t read(const uint8_t* p) {
    const uint32_t s = load<uint16_t>(p);
    return (s & 0x7C00) << 17 | (s & 0x03E0) << 14 | (s & 0x001F) << 11 | 0xFF;
  }
  // Lays the channels out as 5-5-5-1, not as the 1-5-5-5 it reads.
  static void write(uint8_t* p, uint32_t c) {
    store<uint16_t>(p, uint16_t((c >> 16 & 0xF800) | (c >> 13 & 0x07C0) | (c >> 10 & 0x003E)));
  }
};

struct Short565Rev : Plain {
  static constexpr int kSize = 2;
  // Green comes through the mask 0x7E00 and ors into the low bits of red.
  static uint32_t read(const uint8_t* p) {
    const uint32_t s = load<uint16_t>(p);
    return (s & 0x001F) << 27 | (s & 0x7E00) << 13 | (s & 0xF800) | 0xFF;
  }
  static void write(uint8_t* p, uint32_t c) {
    store<uint16_t>(p, uint16_t((c & 0xF800) | (c >> 13 & 0x07E0) | (c >> 27)));
  }
};

struct Short4444 : Plain {
  static constexpr int kSize = 2;
  static uint32_t read(const uint8_t* p) {
    const uint32_t s = load<uint16_t>(p);
    return (s & 0xF000) << 16 | (s & 0x0F00) << 12 | (s & 0x00F0) << 8 | (s & 0x000F) << 4;
  }
  static void write(uint8_t* p, uint32_t c) {
    store<uint16_t>(p, uint16_t((c >> 16 & 0xF000) | (c >> 12 & 0x0F00) | (c >> 8 & 0x00F0) |
                                (c >> 4 & 0x000F)));
  }
};

struct Short4444Rev : Plain {
  static constexpr int kSize = 2;
  static uint32_t read(const uint8_t* p) {
    const uint32_t s = load<uint16_t>(p);
    return (s & 0x000F) << 28 | (s & 0x00F0) << 16 | (s & 0x0F00) << 4 | (s & 0xF000) >> 8;
  }
  static void write(uint8_t* p, uint32_t c) {
    store<uint16_t>(
        p, uint16_t((c >> 28) | (c >> 16 & 0x00F0) | (c >> 4 & 0x0F00) | (c << 8 & 0xF000)));
  }
};

struct Short5551 : Plain {
  static constexpr int kSize = 2;
  static uint32_t read(const uint8_t* p) {
    const uint32_t s = load<uint16_t>(p);
    return (s & 0xF800) << 16 | (s & 0x07C0) << 13 | (s & 0x003E) << 10 | (s & 0x0001) << 7;
  }
  static void write(uint8_t* p, uint32_t c) {
    store<uint16_t>(p, uint16_t((c >> 16 & 0xF800) | (c >> 13 & 0x07C0) | (c >> 10 & 0x003E) |
                                (c >> 7 & 0x0001)));
  }
};

struct Short1555Rev : Plain {
  static constexpr int kSize = 2;
  static uint32_t read(const uint8_t* p) {
    const uint32_t s = load<uint16_t>(p);
    return (s & 0x001F) << 27 | (s & 0x03E0) << 14 | (s & 0x7C00) << 1 | (s & 0x8000) >> 8;
  }
  static void write(uint8_t* p, uint32_t c) {
    store<uint16_t>(
        p, uint16_t((c >> 27) | (c >> 14 & 0x03E0) | (c >> 1 & 0x7C00) | (c << 8 & 0x8000)));
  }
};

// Reads into memory that may overlap the row from the front: index from 0 and
// go backwards, so that a 2-byte pixel is read before its 4-byte result lands.
struct Short1555 {
  static constexpr bool kIgnoresStart = true;
  static constexpr bool kLastFirst = true;
  static constexpr int kSize = 2;
  // Each colour lands one bit short of its place; alpha is all or nothing.
  static uint32_t read(const uint8_t* p) {
    const uint32_t s = load<uint16_t>(p);
    return ((s & 0x7C00) << 16 | (s & 0x03E0) << 13 | (s & 0x001F) << 10) + ((s >> 15) * 0xFF);
  }
  static void write(uint8_t* p, uint32_t c) {
    store<uint16_t>(p, uint16_t((c >> 17 & 0x7C00) | (c >> 14 & 0x03E0) | (c >> 11 & 0x001F)));
  }
};

struct Int8888 : Plain {
  static constexpr int kSize = 4;
  static uint32_t read(const uint8_t* p) { return load<uint32_t>(p); }
  static void write(uint8_t* p, uint32_t c) { store<uint32_t>(p, c); }
};

struct Int8888Rev : Plain {
  static constexpr int kSize = 4;
  static uint32_t read(const uint8_t* p) { return byteSwap(load<uint32_t>(p)); }
  static void write(uint8_t* p, uint32_t c) { store<uint32_t>(p, byteSwap(c)); }
};

struct Int1010102 : Plain {
  static constexpr int kSize = 4;
  // Green comes through the mask 0x3FC00 and lands in bits 19-12.
  static uint32_t read(const uint8_t* p) {
    const uint32_t s = load<uint32_t>(p);
    return (s & 0xFF000000) | (s & 0x3FC00) << 2 | (s & 0xFF0) << 4 | (s & 0x3) << 6;
  }
  static void write(uint8_t* p, uint32_t c) {
    store<uint32_t>(p, (c & 0xFF000000) | (c & 0xFF0000) >> 2 | (c & 0xFF00) >> 4 | (c >> 6 & 0x3));
  }
};

struct Int2101010Rev : Plain {
  static constexpr int kSize = 4;
  static uint32_t read(const uint8_t* p) {
    const uint32_t s = load<uint32_t>(p);
    return (s & 0x3FC) << 22 | (s & 0xFF000) << 4 | (s & 0x3FC00000) >> 14 | (s >> 30) << 6;
  }
  static void write(uint8_t* p, uint32_t c) {
    store<uint32_t>(
        p, (c >> 22 & 0x3FC) | (c >> 4 & 0xFF000) | (c << 14 & 0x3FC00000) | (c & 0xC0) << 24);
  }
};

struct BGRX8880 {
  static constexpr bool kIgnoresStart = false;
  static constexpr bool kLastFirst = true;
  static constexpr int kSize = 4;
  static uint32_t read(const uint8_t* p) { return load<uint32_t>(p) << 8 | 0xFF; }
  static void write(uint8_t* p, uint32_t c) { store<uint32_t>(p, c >> 8 | 0xFF000000); }
};

}  // namespace layout

void NullPixelSample::getPixels(uint32_t* pixels, int32_t start, int32_t end) {
  for (int32_t i = 0; i < end - start; ++i) pixels[i] = 0;
}

void NullPixelSample::setPixels(uint32_t* pixels, void* memory, int32_t count) {
  memory_ = static_cast<uint8_t*>(memory);
}

template <class L>
void LayoutPixelSample<L>::getPixels(uint32_t* pixels, int32_t start, int32_t end) {
  const int32_t count = end - start;
  const uint8_t* src = memory_;
  if constexpr (!L::kIgnoresStart) src += std::ptrdiff_t{start} * L::kSize;
  if constexpr (L::kLastFirst) {
    for (int32_t i = count - 1; i >= 0; --i)
      pixels[i] = L::read(src + std::ptrdiff_t{i} * L::kSize);
  } else {
    for (int32_t i = 0; i < count; ++i) pixels[i] = L::read(src + std::ptrdiff_t{i} * L::kSize);
  }
}

template <class L>
void LayoutPixelSample<L>::setPixels(uint32_t* pixels, void* memory, int32_t count) {
  // A local pointer: byte stores could otherwise alias memory_ itself.
  uint8_t* const dst = static_cast<uint8_t*>(memory);
  memory_ = dst;
  for (int32_t i = 0; i < count; ++i) L::write(dst + std::ptrdiff_t{i} * L::kSize, pixels[i]);
}

template <class L>
int32_t LayoutPixelSample<L>::getPixelSize() const {
  return L::kSize;
}

template class LayoutPixelSample<layout::Byte1>;
template class LayoutPixelSample<layout::Bytes2>;
template class LayoutPixelSample<layout::Bytes3>;
template class LayoutPixelSample<layout::Bytes4>;
template class LayoutPixelSample<layout::Short1>;
template class LayoutPixelSample<layout::Shorts2>;
template class LayoutPixelSample<layout::Shorts3>;
template class LayoutPixelSample<layout::Shorts4>;
template class LayoutPixelSample<layout::Int1>;
template class LayoutPixelSample<layout::Ints2>;
template class LayoutPixelSample<layout::Ints3>;
template class LayoutPixelSample<layout::Ints4>;
template class LayoutPixelSample<layout::Byte332>;
template class LayoutPixelSample<layout::Byte233Rev>;
template class LayoutPixelSample<layout::Short565>;
template class LayoutPixelSample<layout::Short555>;
template class LayoutPixelSample<layout::Short565Rev>;
template class LayoutPixelSample<layout::Short4444>;
template class LayoutPixelSample<layout::Short4444Rev>;
template class LayoutPixelSample<layout::Short5551>;
template class LayoutPixelSample<layout::Short1555Rev>;
template class LayoutPixelSample<layout::Short1555>;
template class LayoutPixelSample<layout::Int8888>;
template class LayoutPixelSample<layout::Int8888Rev>;
template class LayoutPixelSample<layout::Int1010102>;
template class LayoutPixelSample<layout::Int2101010Rev>;
template class LayoutPixelSample<layout::BGRX8880>;

}  // namespace vostan
