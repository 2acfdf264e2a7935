// Channel samples against what each GL format means byte by byte, and the
// selection by surface format and by GL format and type.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "graphics/pixelsample/pixel_sample.h"
#include "graphics/pixelsample/sample_select.h"

namespace vostan {
namespace {

uint32_t rgba(uint32_t r, uint32_t g, uint32_t b, uint32_t a) {
  return r << 24 | g << 16 | b << 8 | a;
}

// What a GL format means, from the channel letters of its bytes in memory
// order: absent colours read 0 (255 beside a lone alpha), absent alpha 255.
uint32_t meaningOf(const char* letters, const uint8_t* p) {
  uint8_t ch[4] = {0, 0, 0, 255};
  if (std::string(letters) == "A") ch[0] = ch[1] = ch[2] = 255;
  for (int i = 0; letters[i]; ++i) {
    if (letters[i] == 'L')
      ch[0] = ch[1] = ch[2] = p[i];
    else
      ch[std::string("RGBA").find(letters[i])] = p[i];
  }
  return rgba(ch[0], ch[1], ch[2], ch[3]);
}

void bytesOf(const char* letters, uint32_t c, uint8_t* p) {
  for (int i = 0; letters[i]; ++i) {
    const uint32_t r = c >> 24, g = c >> 16 & 0xFF, b = c >> 8 & 0xFF;
    p[i] = letters[i] == 'L' ? uint8_t((r + g + b) / 3)
                             : uint8_t(c >> (24 - 8 * std::string("RGBA").find(letters[i])));
  }
}

template <class Sample>
void checkFormat(const char* letters) {
  SCOPED_TRACE(letters);
  const int count = int(std::strlen(letters));
  std::mt19937 rng(99);
  const int32_t n = 3000;
  std::vector<uint8_t> mem(n * count), out(n * count), want(n * count);
  for (uint8_t& b : mem) b = uint8_t(rng());
  for (int i = 0; i < 256; ++i) mem[i * count] = uint8_t(i);
  Sample sample(mem.data(), gl::kUnsignedByte);
  ASSERT_EQ(sample.getPixelSize(), count);
  std::vector<uint32_t> row(n, 0xDEADBEEF);
  sample.getPixels(row.data(), 1, n);  // from pixel 1: the rewrite covers end - start words
  for (int32_t i = 1; i < n; ++i) ASSERT_EQ(row[i - 1], meaningOf(letters, &mem[i * count])) << i;
  ASSERT_EQ(row[n - 1], 0xDEADBEEF);

  for (int32_t i = 0; i < n; ++i) row[i] = uint32_t(rng());
  for (int32_t i = 0; i < n; ++i) bytesOf(letters, row[i], &want[i * count]);
  sample.setPixels(row.data(), out.data(), n);
  ASSERT_EQ(out, want);
}

TEST(ChannelSamples, FormatsReadAndWriteTheirBytes) {
  checkFormat<RGBAPixelSample>("RGBA");
  checkFormat<BGRAPixelSample>("BGRA");
  checkFormat<ABGRPixelSample>("ABGR");
  checkFormat<RGBPixelSample>("RGB");  // alpha reads as 255 and is lost on writing
  checkFormat<RedPixelSample>("R");
  checkFormat<GreenPixelSample>("G");
  checkFormat<BluePixelSample>("B");
  checkFormat<AlphaPixelSample>("A");
  checkFormat<LuminancePixelSample>("L");
  checkFormat<LuminanceAlphaPixelSample>("LA");
}

TEST(ChannelSamples, LuminanceTruncatesTheMeanOfEverySum) {
  std::vector<uint32_t> row;
  for (uint32_t sum = 0; sum <= 765; ++sum) {
    const uint32_t r = std::min(sum, 255u), g = std::min(sum - r, 255u), b = sum - r - g;
    row.push_back(rgba(r, g, b, 0x77));
  }
  std::vector<uint8_t> out(row.size() * 2);
  LuminanceAlphaPixelSample(out.data(), gl::kUnsignedByte)
      .setPixels(row.data(), out.data(), int32_t(row.size()));
  for (uint32_t sum = 0; sum <= 765; ++sum) {
    ASSERT_EQ(out[sum * 2], sum / 3) << sum;
    ASSERT_EQ(out[sum * 2 + 1], 0x77);
  }
}

TEST(ChannelSamples, ComponentTypeAndCountPickTheInnerLayout) {
  uint8_t mem[64] = {};
  for (int32_t type = gl::kByte; type <= gl::kUnsignedInt; ++type) {
    const int elem = type <= gl::kUnsignedByte ? 1 : type <= gl::kUnsignedShort ? 2 : 4;
    EXPECT_EQ(RedPixelSample(mem, type).getPixelSize(), elem);
    EXPECT_EQ(LuminanceAlphaPixelSample(mem, type).getPixelSize(), 2 * elem);
    EXPECT_EQ(RGBPixelSample(mem, type).getPixelSize(), 3 * elem);
    EXPECT_EQ(RGBAPixelSample(mem, type).getPixelSize(), 4 * elem);
  }
  // Signed types are read as their unsigned twins.
  const int16_t shorts[2] = {-1, 0x1234};
  uint32_t row[2];
  LuminancePixelSample(const_cast<int16_t*>(shorts), gl::kShort).getPixels(row, 0, 2);
  EXPECT_EQ(row[0], 0xFFFFFFFFu);
  EXPECT_EQ(row[1], 0x121212FFu);

  EXPECT_EQ(RGBAPixelSample(mem, 5126).inner(), nullptr);  // GL_FLOAT: none
  EXPECT_EQ(RGBAPixelSample(mem, -1).inner(), nullptr);    // memory is never an inner sample
}

// One pixel through each surface format: the bytes written and what reads back.
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
      {gl::kBgra, gl::kUnsignedByte, 0x44332211, 0x33221144},
      {gl::kRgb, gl::kUnsignedShort565, 0xF800, 0xF80000FF},
      {gl::kBgra, gl::kUnsignedShort4444Rev, 0x1234, 0x20304010},
      {gl::kRgba, gl::kUnsignedInt8888Rev, 0x44332211, 0x11223344},
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
  EXPECT_EQ(sampleForMemory(gl::kRgba, gl::kUnsignedByte, nullptr)->getPixelSize(), 1);
}

}  // namespace
}  // namespace vostan
