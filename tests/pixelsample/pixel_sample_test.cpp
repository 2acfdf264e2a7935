// Pixel samples: every packed layout against a reference built from field
// descriptions (which bits of the memory value hold which channel), with the
// one-sided faults written out by hand; 8- and 16-bit layouts over all their
// values. Channel samples against what each GL format means element by
// element, and the selection by surface format and by GL format and type.
#include "graphics/pixelsample/pixel_sample.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "graphics/pixelsample/sample_select.h"

namespace vostan {
namespace {

enum Ch { R, G, B, A };
struct Field {
  Ch ch;
  int hi, lo;
};
using Fields = std::vector<Field>;

// A narrow field goes to the top of its byte; a wide one keeps its top 8 bits.
uint32_t refRead(uint32_t s, const Fields& fields, bool opaque) {
  uint32_t c = opaque ? 0xFF : 0;
  for (auto [ch, hi, lo] : fields) {
    const int w = hi - lo + 1;
    const uint32_t v = s >> lo & ((1u << w) - 1);
    c |= (w >= 8 ? v >> (w - 8) : v << (8 - w)) << (24 - 8 * ch);
  }
  return c;
}

uint32_t refWrite(uint32_t c, const Fields& fields) {
  uint32_t s = 0;
  for (auto [ch, hi, lo] : fields) {
    const int w = hi - lo + 1;
    const uint32_t byte = c >> (24 - 8 * ch) & 0xFF;
    s |= (w >= 8 ? byte << (w - 8) : byte >> (8 - w)) << lo;
  }
  return s;
}

std::vector<uint32_t> randomWords(size_t n) {
  std::mt19937 rng(1234);
  std::vector<uint32_t> v{0, 0xFFFFFFFF, 0x80000000, 1, 0x00FF00FF, 0xFF00FF00};
  while (v.size() < n) v.push_back(uint32_t(rng()));
  return v;
}

// Reads every memory value (many for 32 bits) in one run and compares with the
// reference, and writes random words likewise.
template <class Sample, class T, class Read, class Write>
void checkLayout(Read read, Write write) {
  std::vector<T> mem;
  if constexpr (sizeof(T) < 4) {
    for (uint32_t s = 0; s <= T(~T{0}); ++s) mem.push_back(T(s));
  } else {
    mem = randomWords(1 << 16);
  }
  const int32_t n = int32_t(mem.size());
  Sample sample(mem.data());
  ASSERT_EQ(sample.getPixelSize(), int32_t(sizeof(T)));
  std::vector<uint32_t> row(n);
  sample.getPixels(row.data(), 0, n);
  for (int32_t i = 0; i < n; ++i) ASSERT_EQ(row[i], read(mem[i])) << std::hex << mem[i];
  std::vector<T> out(n);
  const std::vector<uint32_t> words = randomWords(n);
  row = words;
  sample.setPixels(row.data(), out.data(), n);
  for (int32_t i = 0; i < n; ++i) ASSERT_EQ(out[i], T(write(words[i]))) << std::hex << words[i];
}

template <class Sample, class T>
void checkFields(const Fields& fields, bool opaque) {
  checkLayout<Sample, T>([&](T s) { return refRead(s, fields, opaque); },
                         [&](uint32_t c) { return refWrite(c, fields); });
}

TEST(LayoutSamples, PackedLayoutsMatchTheirFields) {
  checkFields<Byte332PixelSample, uint8_t>({{R, 7, 5}, {G, 4, 2}, {B, 1, 0}}, true);
  checkFields<Byte233RevPixelSample, uint8_t>({{B, 7, 6}, {G, 5, 3}, {R, 2, 0}}, true);
  checkFields<Short565PixelSample, uint16_t>({{R, 15, 11}, {G, 10, 5}, {B, 4, 0}}, true);
  checkFields<Short4444PixelSample, uint16_t>({{R, 15, 12}, {G, 11, 8}, {B, 7, 4}, {A, 3, 0}},
                                              false);
  checkFields<Short4444RevPixelSample, uint16_t>({{A, 15, 12}, {B, 11, 8}, {G, 7, 4}, {R, 3, 0}},
                                                 false);
  checkFields<Short5551PixelSample, uint16_t>({{R, 15, 11}, {G, 10, 6}, {B, 5, 1}, {A, 0, 0}},
                                              false);
  checkFields<Short1555RevPixelSample, uint16_t>({{A, 15, 15}, {B, 14, 10}, {G, 9, 5}, {R, 4, 0}},
                                                 false);
  checkFields<Int8888PixelSample, uint32_t>({{R, 31, 24}, {G, 23, 16}, {B, 15, 8}, {A, 7, 0}},
                                            false);
  checkFields<Int8888RevPixelSample, uint32_t>({{A, 31, 24}, {B, 23, 16}, {G, 15, 8}, {R, 7, 0}},
                                               false);
  checkFields<Int2101010RevPixelSample, uint32_t>(
      {{A, 31, 30}, {B, 29, 20}, {G, 19, 10}, {R, 9, 0}}, false);
  const Fields bgrx{{R, 23, 16}, {G, 15, 8}, {B, 7, 0}};
  checkLayout<BGRX8880PixelSample, uint32_t>(
      [&](uint32_t s) { return refRead(s, bgrx, true); },
      [&](uint32_t c) { return refWrite(c, bgrx) | 0xFF000000; });
}

// The directions that aren't the inverse of the other one, as images rely on.
TEST(LayoutSamples, FaultyDirectionsStayAsTheyAre) {
  const Fields rgb555{{R, 14, 10}, {G, 9, 5}, {B, 4, 0}};
  checkLayout<Short555PixelSample, uint16_t>(
      [&](uint16_t s) { return refRead(s, rgb555, true); },
      [&](uint32_t c) {
        return refWrite(c, {{R, 15, 11}, {G, 10, 6}, {B, 5, 1}});
      });
  checkLayout<Short565RevPixelSample, uint16_t>(
      [&](uint16_t s) {
        return refRead(s, {{R, 4, 0}, {B, 15, 11}}, true) | (s & 0x7E00u) << 13;
      },
      [&](uint32_t c) {
        return refWrite(c, {{B, 15, 11}, {G, 10, 5}, {R, 4, 0}});
      });
  checkLayout<Short1555PixelSample, uint16_t>(
      [&](uint16_t s) { return (refRead(s, rgb555, false) >> 1) + ((s & 0x8000) ? 255 : 0); },
      [&](uint32_t c) { return refWrite(c, rgb555); });
  checkLayout<Int1010102PixelSample, uint32_t>(
      [&](uint32_t s) {
        return refRead(s, {{R, 31, 22}, {B, 11, 2}, {A, 1, 0}}, false) | (s & 0x3FC00) << 2;
      },
      [&](uint32_t c) {
        return refWrite(c, {{R, 31, 22}, {G, 21, 12}, {B, 11, 2}, {A, 1, 0}});
      });
}

// Runs read from `start` and writes move the memory on, except Short1555,
// which counts from the first pixel whatever `start` is and goes last to
// first so that a row can be widened in place.
TEST(LayoutSamples, RunsStartAtStartAndWritesMoveTheMemory) {
  uint8_t mem[8] = {10, 11, 12, 13, 14, 15, 16, 17}, other[2] = {};
  uint32_t row[4] = {7, 7, 7, 7};
  Byte1PixelSample bytes(mem);
  bytes.getPixels(row, 3, 5);
  EXPECT_EQ(row[1], 14u << 24);
  EXPECT_EQ(row[2], 7u);
  bytes.setPixels(row, other, 1);
  bytes.getPixels(row + 2, 0, 1);
  EXPECT_EQ(row[2], 13u << 24);  // reads where it last wrote
  NullPixelSample(nullptr).getPixels(row, 5, 7);
  EXPECT_EQ(row[1], 0u);
  EXPECT_EQ(row[2], 13u << 24);

  const uint16_t wide[4] = {0x8000, 0x7C00, 0x03E0, 0x001F};
  uint32_t buf[4];
  std::memcpy(buf, wide, sizeof wide);
  Short1555PixelSample sample(buf);
  sample.getPixels(row, 2, 4);
  EXPECT_EQ(row[1], 0x7C000000u);
  sample.getPixels(buf, 0, 4);
  const uint32_t widened[4] = {0x000000FF, 0x7C000000, 0x007C0000, 0x00007C00};
  EXPECT_TRUE(std::equal(buf, buf + 4, widened));
}

// What a GL format means, from the channel letters of its bytes in memory
// order: absent colours read 0 (255 beside a lone alpha), absent alpha 255.
uint32_t meaningOf(const char* letters, const uint8_t* p) {
  uint32_t ch[4] = {0, 0, 0, 255};
  if (std::string(letters) == "A") ch[0] = ch[1] = ch[2] = 255;
  for (int i = 0; letters[i]; ++i) {
    const size_t at = std::string("RGBA").find(letters[i]);
    for (size_t k = 0; k < 3; ++k) ch[at == std::string::npos ? k : at] = p[i];
  }
  return ch[0] << 24 | ch[1] << 16 | ch[2] << 8 | ch[3];
}

// Element n of a pixel in memory is the nth letter's channel; wide elements
// give their top byte and are written with zero low bits. Four ints are
// written with alpha over blue in word 2 and word 3 left as it was.
template <class Sample, class T = uint8_t>
void checkFormat(const char* letters, int32_t type = gl::kUnsignedByte) {
  SCOPED_TRACE(testing::Message() << letters << " " << type);
  constexpr int kDrop = 8 * (sizeof(T) - 1);
  const int count = int(std::strlen(letters));
  std::mt19937 rng(99);
  const int32_t n = 3000;
  std::vector<T> mem(n * count), out(n * count, T(0x5A)), want(n * count, T(0x5A));
  for (T& e : mem) e = T(rng());
  for (int i = 0; i < 256; ++i) mem[i * count] = T(T(i) << kDrop);
  Sample sample(mem.data(), type);
  ASSERT_EQ(sample.getPixelSize(), count * int(sizeof(T)));
  std::vector<uint32_t> row(n, 0xDEADBEEF);
  sample.getPixels(row.data(), 1, n);  // from pixel 1: the rewrite covers end - start words
  uint8_t top[4];
  for (int32_t i = 1; i < n; ++i) {
    for (int k = 0; k < count; ++k) top[k] = uint8_t(mem[i * count + k] >> kDrop);
    ASSERT_EQ(row[i - 1], meaningOf(letters, top)) << i;
  }
  ASSERT_EQ(row[n - 1], 0xDEADBEEF);

  for (int32_t i = 0; i < n; ++i) {
    row[i] = uint32_t(rng());
    const uint32_t r = row[i] >> 24, g = row[i] >> 16 & 0xFF, b = row[i] >> 8 & 0xFF;
    for (int k = 0; k < count; ++k) {
      const size_t ch = std::string("RGBA").find(letters[k]);
      const uint32_t byte =
          ch == std::string::npos ? (r + g + b) / 3 : row[i] >> (24 - 8 * ch) & 0xFF;
      want[i * count + k] = T(byte << kDrop);
    }
    if (sizeof(T) == 4 && count == 4) want[i * 4 + 2] = want[i * 4 + 3], want[i * 4 + 3] = T(0x5A);
  }
  sample.setPixels(row.data(), out.data(), n);
  ASSERT_EQ(out, want);
}

TEST(ChannelSamples, FormatsReadAndWriteTheirElements) {
  checkFormat<RGBAPixelSample>("RGBA");
  checkFormat<BGRAPixelSample>("BGRA");
  checkFormat<ABGRPixelSample>("ABGR");
  checkFormat<RGBPixelSample>("RGB");  // alpha reads as 255 and is lost on writing
  checkFormat<RedPixelSample>("R");
  checkFormat<GreenPixelSample>("G");
  checkFormat<BluePixelSample>("B");
  checkFormat<AlphaPixelSample>("A");
  checkFormat<LuminancePixelSample>("L");  // the mean of r, g and b, truncated
  checkFormat<LuminanceAlphaPixelSample>("LA");
  // Wider components, signed ones read as their unsigned twins.
  checkFormat<LuminancePixelSample, uint16_t>("L", gl::kShort);
  checkFormat<LuminanceAlphaPixelSample, uint16_t>("LA", gl::kUnsignedShort);
  checkFormat<RGBPixelSample, uint16_t>("RGB", gl::kUnsignedShort);
  checkFormat<RGBAPixelSample, uint16_t>("RGBA", gl::kUnsignedShort);
  checkFormat<RedPixelSample, uint32_t>("R", gl::kInt);
  checkFormat<LuminanceAlphaPixelSample, uint32_t>("LA", gl::kUnsignedInt);
  checkFormat<RGBPixelSample, uint32_t>("RGB", gl::kUnsignedInt);
  checkFormat<RGBAPixelSample, uint32_t>("RGBA", gl::kUnsignedInt);
  checkFormat<RedPixelSample, uint8_t>("R", gl::kByte);

  uint8_t mem[4] = {};
  EXPECT_EQ(RGBAPixelSample(mem, 5126).inner(), nullptr);  // GL_FLOAT: none
  EXPECT_EQ(RGBAPixelSample(mem, -1).inner(), nullptr);    // memory is never an inner sample
}

TEST(SampleSelect, SurfaceFormatsWriteTheirLayout) {
  struct Case {
    int32_t format;
    int size;
    uint64_t stored;  // little-endian bytes of the pixel
    uint32_t readBack;
  };
  const uint32_t c = 0xF0C4A88C;
  const Case cases[] = {
      {d3dfmt::kR8G8B8, 3, 0xA8C4F0, 0xF0C4A8FF},
      {d3dfmt::kA8R8G8B8, 4, 0x8CF0C4A8, 0xF0C4A88C},
      {d3dfmt::kX8R8G8B8, 4, 0xFFF0C4A8, 0xF0C4A8FF},
      {d3dfmt::kR5G6B5, 2, 0xF635, 0xF0C4A8FF},
      {d3dfmt::kX1R5G5B5, 2, 0xF62A, 0xE88850FF},  // written as 5-5-5-1, read as 1-5-5-5
      {d3dfmt::kA1R5G5B5, 2, 0x7B15, 0x78605400},  // colours at half, alpha lost
      {d3dfmt::kA4R4G4B4, 2, 0xFCA8, 0xF0C0A080},
      {d3dfmt::kA8, 1, 0x8C, 0xFFFFFF8C},
      {d3dfmt::kL8, 1, 0xC9, 0xC9C9C9FF},
      {d3dfmt::kA8L8, 2, 0x8CC9, 0xC9C9C98C},
      {d3dfmt::kR16F, 2, 0xC900, 0xC9C9C9FF},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(k.format);
    uint8_t mem[8] = {};
    auto sample = sampleForSurface(k.format, mem);
    ASSERT_NE(sample, nullptr);
    EXPECT_EQ(sample->getPixelSize(), k.size);
    uint32_t row = c;
    sample->setPixels(&row, mem, 1);
    uint64_t stored = 0;
    std::memcpy(&stored, mem, 8);
    EXPECT_EQ(stored, k.stored);
    sample->getPixels(&row, 0, 1);
    EXPECT_EQ(row, k.readBack);
  }
  uint8_t mem[4] = {};
  EXPECT_EQ(sampleForSurface(27, mem), nullptr);
  uint32_t row[2] = {1, 1};
  sampleForSurface(d3dfmt::kA8R8G8B8, nullptr)->getPixels(row, 0, 2);
  EXPECT_EQ(row[1], 0u);
}

TEST(SampleSelect, MemoryFormatsWrapPackedTypes) {
  struct Case {
    int32_t format, type;
    uint32_t stored;  // little-endian bytes of one pixel
    uint32_t read;
  };
  const Case cases[] = {
      {gl::kRgba, gl::kUnsignedByte, 0x44332211, 0x11223344},
      {gl::kRgb, gl::kUnsignedShort565, 0xF800, 0xF80000FF},
      {gl::kBgra, gl::kUnsignedShort4444Rev, 0x1234, 0x20304010},
      {gl::kAbgrExt, gl::kUnsignedInt8888, 0x44332211, 0x11223344},
      {gl::kLuminance, gl::kUnsignedByte332, 0xE0, 0xE0E0E0FF},
      {gl::kDepthComponent, gl::kUnsignedShort, 0xAB00, 0xABABABFF},
      {gl::kAlpha, gl::kUnsignedInt, 0x7F000000, 0xFFFFFF7F},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(testing::Message() << k.format << " " << k.type);
    uint32_t mem = k.stored, row = 0;
    auto sample = sampleForMemory(k.format, k.type, &mem);
    ASSERT_NE(sample, nullptr);
    sample->getPixels(&row, 0, 1);
    EXPECT_EQ(row, k.read);
  }
  uint32_t mem = 0;
  EXPECT_EQ(sampleForMemory(6411, gl::kUnsignedByte, &mem), nullptr);
  EXPECT_EQ(sampleForMemory(6411, gl::kUnsignedShort565, &mem), nullptr);
  // No float type and no made-up type: no sample, rather than one with no layout.
  EXPECT_EQ(sampleForMemory(gl::kRgba, 5126, &mem), nullptr);
  EXPECT_EQ(sampleForMemory(gl::kLuminance, -1, &mem), nullptr);
  EXPECT_EQ(sampleForMemory(gl::kRgba, gl::kUnsignedByte, nullptr)->getPixelSize(), 1);
}

}  // namespace
}  // namespace vostan
