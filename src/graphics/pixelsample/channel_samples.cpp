// Channel order of the GL formats, applied in place on a row of common words
// around the inner layout sample.
#include "graphics/pixelsample/pixel_sample.h"

namespace vostan {
namespace {

// Inner layout of a plain component type; null for anything else.
PixelSample* plainLayout(int32_t count, void* memory, int32_t type) {
  switch (type) {
    case 5120:  // GL_BYTE
    case 5121:  // GL_UNSIGNED_BYTE
      switch (count) {
        case 1:
          return new Byte1PixelSample(memory);
        case 2:
          return new Bytes2PixelSample(memory);
        case 3:
          return new Bytes3PixelSample(memory);
        case 4:
          return new Bytes4PixelSample(memory);
      }
      break;
    case 5122:  // GL_SHORT
    case 5123:  // GL_UNSIGNED_SHORT
      switch (count) {
        case 1:
          return new Short1PixelSample(memory);
        case 2:
          return new Shorts2PixelSample(memory);
        case 3:
          return new Shorts3PixelSample(memory);
        case 4:
          return new Shorts4PixelSample(memory);
      }
      break;
    case 5124:  // GL_INT
    case 5125:  // GL_UNSIGNED_INT
      switch (count) {
        case 1:
          return new Int1PixelSample(memory);
        case 2:
          return new Ints2PixelSample(memory);
        case 3:
          return new Ints3PixelSample(memory);
        case 4:
          return new Ints4PixelSample(memory);
      }
      break;
  }
  return nullptr;
}

inline uint32_t swapRedBlue(uint32_t c) {
  return (c & 0x00FF00FF) | (c >> 16 & 0xFF00) | (c & 0xFF00) << 16;
}

// (r + g + b) / 3 for sums up to 765, without a divide the loop can't vectorise.
inline uint32_t average3(uint32_t c) {
  const uint32_t sum = (c >> 24) + (c >> 16 & 0xFF) + (c >> 8 & 0xFF);
  return sum * 0xAAABu >> 17;
}

}  // namespace

namespace channels {

// fromInner rewrites a word after the inner read, toInner before the write.
struct RGBA {
  static constexpr int kCount = 4;
  static uint32_t fromInner(uint32_t c) { return c; }
  static uint32_t toInner(uint32_t c) { return c; }
};

struct BGRA {
  static constexpr int kCount = 4;
  static uint32_t fromInner(uint32_t c) { return swapRedBlue(c); }
  static uint32_t toInner(uint32_t c) { return swapRedBlue(c); }
};

struct ABGR {
  static constexpr int kCount = 4;
  static uint32_t fromInner(uint32_t c) { return __builtin_bswap32(c); }
  static uint32_t toInner(uint32_t c) { return __builtin_bswap32(c); }
};

// Alpha has no place in memory: it reads as 255 and is dropped by the inner write.
struct RGB {
  static constexpr int kCount = 3;
  static uint32_t fromInner(uint32_t c) { return c | 0xFF; }
  static uint32_t toInner(uint32_t c) { return c; }
};

// The single channel sits in the top byte of the inner word.
struct Red {
  static constexpr int kCount = 1;
  static uint32_t fromInner(uint32_t c) { return c | 0xFF; }
  static uint32_t toInner(uint32_t c) { return c; }
};

struct Green {
  static constexpr int kCount = 1;
  static uint32_t fromInner(uint32_t c) { return c >> 8 | 0xFF; }
  static uint32_t toInner(uint32_t c) { return c << 8; }
};

struct Blue {
  static constexpr int kCount = 1;
  static uint32_t fromInner(uint32_t c) { return c >> 16 | 0xFF; }
  static uint32_t toInner(uint32_t c) { return c << 16; }
};

// Alpha-only pictures draw as white with that alpha.
struct Alpha {
  static constexpr int kCount = 1;
  static uint32_t fromInner(uint32_t c) { return c >> 24 | 0xFFFFFF00; }
  static uint32_t toInner(uint32_t c) { return c << 24; }
};

struct Luminance {
  static constexpr int kCount = 1;
  static uint32_t fromInner(uint32_t c) { return (c >> 24) * 0x01010100 | 0xFF; }
  static uint32_t toInner(uint32_t c) { return average3(c) << 24; }
};

struct LuminanceAlpha {
  static constexpr int kCount = 2;
  static uint32_t fromInner(uint32_t c) { return (c >> 24) * 0x01010100 | (c >> 16 & 0xFF); }
  static uint32_t toInner(uint32_t c) { return average3(c) << 24 | (c & 0xFF) << 16; }
};

}  // namespace channels

ComponentsPixelSample::ComponentsPixelSample(int32_t count, void* memory, int32_t type)
    : inner_(plainLayout(count, memory, type)) {}

template <class C>
ChannelsPixelSample<C>::ChannelsPixelSample(void* memory, int32_t type)
    : ComponentsPixelSample(C::kCount, memory, type) {}

template <class C>
void ChannelsPixelSample<C>::getPixels(uint32_t* pixels, int32_t start, int32_t end) {
  inner_->getPixels(pixels, start, end);
  for (int32_t i = end - start - 1; i >= 0; --i) pixels[i] = C::fromInner(pixels[i]);
}

template <class C>
void ChannelsPixelSample<C>::setPixels(uint32_t* pixels, void* memory, int32_t count) {
  for (int32_t i = 0; i < count; ++i) pixels[i] = C::toInner(pixels[i]);
  inner_->setPixels(pixels, memory, count);
}

template class ChannelsPixelSample<channels::RGBA>;
template class ChannelsPixelSample<channels::BGRA>;
template class ChannelsPixelSample<channels::ABGR>;
template class ChannelsPixelSample<channels::RGB>;
template class ChannelsPixelSample<channels::Red>;
template class ChannelsPixelSample<channels::Green>;
template class ChannelsPixelSample<channels::Blue>;
template class ChannelsPixelSample<channels::Alpha>;
template class ChannelsPixelSample<channels::Luminance>;
template class ChannelsPixelSample<channels::LuminanceAlpha>;

}  // namespace vostan
