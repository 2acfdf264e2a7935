// Every layout against a reference built from field descriptions (which bits
// of the memory value hold which channel), with the one-sided faults written
// out by hand. 8- and 16-bit layouts are checked over all their values.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "graphics/pixelsample/pixel_sample.h"

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
// reference, writes random words likewise, and when `kept` is given, checks
// that reading and writing back keeps exactly those bits.
template <class Sample, class T, class Read, class Write>
void checkLayout(Read read, Write write, uint32_t kept = 0) {
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
  if (kept) {
    sample.setPixels(row.data(), out.data(), n);
    for (int32_t i = 0; i < n; ++i) ASSERT_EQ(out[i], T(mem[i] & kept)) << std::hex << mem[i];
  }
  const std::vector<uint32_t> words = randomWords(n);
  row = words;
  sample.setPixels(row.data(), out.data(), n);
  for (int32_t i = 0; i < n; ++i) ASSERT_EQ(out[i], T(write(words[i]))) << std::hex << words[i];
}

template <class Sample, class T>
void checkFields(const Fields& fields, bool opaque, uint32_t kept) {
  checkLayout<Sample, T>([&](T s) { return refRead(s, fields, opaque); },
                         [&](uint32_t c) { return refWrite(c, fields); }, kept);
}

TEST(LayoutSamples, PackedLayoutsMatchTheirFieldsAndRoundTrip) {
  checkFields<Byte332PixelSample, uint8_t>({{R, 7, 5}, {G, 4, 2}, {B, 1, 0}}, true, 0xFF);
  checkFields<Byte233RevPixelSample, uint8_t>({{B, 7, 6}, {G, 5, 3}, {R, 2, 0}}, true, 0xFF);
  checkFields<Short565PixelSample, uint16_t>({{R, 15, 11}, {G, 10, 5}, {B, 4, 0}}, true, 0xFFFF);
  checkFields<Short4444PixelSample, uint16_t>({{R, 15, 12}, {G, 11, 8}, {B, 7, 4}, {A, 3, 0}},
                                              false, 0xFFFF);
  checkFields<Short4444RevPixelSample, uint16_t>({{A, 15, 12}, {B, 11, 8}, {G, 7, 4}, {R, 3, 0}},
                                                 false, 0xFFFF);
  checkFields<Short5551PixelSample, uint16_t>({{R, 15, 11}, {G, 10, 6}, {B, 5, 1}, {A, 0, 0}},
                                              false, 0xFFFF);
  checkFields<Short1555RevPixelSample, uint16_t>({{A, 15, 15}, {B, 14, 10}, {G, 9, 5}, {R, 4, 0}},
                                                 false, 0xFFFF);
  checkFields<Int8888PixelSample, uint32_t>({{R, 31, 24}, {G, 23, 16}, {B, 15, 8}, {A, 7, 0}},
                                            false, 0xFFFFFFFF);
  checkFields<Int8888RevPixelSample, uint32_t>({{A, 31, 24}, {B, 23, 16}, {G, 15, 8}, {R, 7, 0}},
                                               false, 0xFFFFFFFF);
  // 10-bit channels lose their two low bits.
  checkFields<Int2101010RevPixelSample, uint32_t>(
      {{A, 31, 30}, {B, 29, 20}, {G, 19, 10}, {R, 9, 0}}, false, 0xFFCFF3FC);
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

  uint16_t s = 0xFFFF;
  uint32_t c = 0;
  Short1555PixelSample(&s).getPixels(&c, 0, 1);
  EXPECT_EQ(c, 0x7C7C7CFFu);  // each colour at half, opaque
  s = 0x03E0;                 // full green comes back one place up, partly as red
  Short555PixelSample sample(&s);
  sample.getPixels(&c, 0, 1);
  sample.setPixels(&c, &s, 1);
  sample.getPixels(&c, 0, 1);
  EXPECT_EQ(c, 0x08F000FFu);
}

// Element n of a pixel is channel n; wide elements keep their top byte and are
// written back with zero low bits.
template <class Sample, class T, int kCount>
void checkPlain() {
  constexpr int kDrop = 8 * (sizeof(T) - 1);
  const int32_t n = 4096;
  const std::vector<uint32_t> seed = randomWords(n * kCount), words = randomWords(n);
  std::vector<T> mem(seed.begin(), seed.end()), out(n * kCount, T(0x5A));
  std::vector<uint32_t> row(n);
  Sample sample(mem.data());
  ASSERT_EQ(sample.getPixelSize(), int32_t(sizeof(T) * kCount));
  sample.getPixels(row.data(), 0, n);
  row.insert(row.end(), words.begin(), words.end());
  sample.setPixels(row.data() + n, out.data(), n);
  for (int32_t i = 0; i < n; ++i) {
    uint32_t want = 0;
    for (int k = 0; k < kCount; ++k) {
      want |= uint32_t(mem[i * kCount + k] >> kDrop) << (24 - 8 * k);
      T put = T((words[i] >> (24 - 8 * k) & 0xFF) << kDrop);
      if (sizeof(T) == 4 && kCount == 4 && k >= 2) put = k == 2 ? T(words[i] << 24) : T(0x5A);
      ASSERT_EQ(out[i * kCount + k], put) << i << " element " << k;
    }
    ASSERT_EQ(row[i], want) << i;
  }
}

TEST(LayoutSamples, PlainLayoutsSortElementsIntoChannels) {
  checkPlain<Byte1PixelSample, uint8_t, 1>();
  checkPlain<Bytes2PixelSample, uint8_t, 2>();
  checkPlain<Bytes3PixelSample, uint8_t, 3>();
  checkPlain<Bytes4PixelSample, uint8_t, 4>();
  checkPlain<Short1PixelSample, uint16_t, 1>();
  checkPlain<Shorts2PixelSample, uint16_t, 2>();
  checkPlain<Shorts3PixelSample, uint16_t, 3>();
  checkPlain<Shorts4PixelSample, uint16_t, 4>();
  checkPlain<Int1PixelSample, uint32_t, 1>();
  checkPlain<Ints2PixelSample, uint32_t, 2>();
  checkPlain<Ints3PixelSample, uint32_t, 3>();
  checkPlain<Ints4PixelSample, uint32_t, 4>();  // alpha over blue in word 2, word 3 untouched
}

TEST(LayoutSamples, RunsStartAtStartAndWritesMoveTheMemory) {
  uint8_t mem[8] = {10, 11, 12, 13, 14, 15, 16, 17}, other[2] = {};
  uint32_t row[4] = {7, 7, 7, 7};
  Byte1PixelSample bytes(mem);
  bytes.getPixels(row, 3, 3);
  EXPECT_EQ(row[0], 7u);
  bytes.getPixels(row, 3, 5);
  EXPECT_EQ(row[1], 14u << 24);
  EXPECT_EQ(row[2], 7u);
  bytes.setPixels(row, other, 1);
  bytes.getPixels(row + 2, 0, 1);
  EXPECT_EQ(row[2], 13u << 24);  // reads where it last wrote

  NullPixelSample none(nullptr);
  none.getPixels(row, 5, 7);
  EXPECT_EQ(row[1], 0u);
  EXPECT_EQ(row[2], 13u << 24);
  none.setPixels(row, mem, 4);
  EXPECT_EQ(mem[0], 10);
}

// Short1555 counts from the first pixel whatever `start` is, and goes last to
// first so that a row can be widened in place.
TEST(LayoutSamples, Short1555IgnoresStartAndWidensInPlace) {
  const uint16_t mem[4] = {0x8000, 0x7C00, 0x03E0, 0x001F};
  uint32_t buf[4], row[2];
  std::memcpy(buf, mem, sizeof mem);
  Short1555PixelSample sample(buf);
  sample.getPixels(row, 2, 4);
  EXPECT_EQ(row[0], 0x000000FFu);
  EXPECT_EQ(row[1], 0x7C000000u);
  sample.getPixels(buf, 0, 4);
  EXPECT_EQ(buf[0], 0x000000FFu);
  EXPECT_EQ(buf[1], 0x7C000000u);
  EXPECT_EQ(buf[2], 0x007C0000u);
  EXPECT_EQ(buf[3], 0x00007C00u);
}

}  // namespace
}  // namespace vostan
