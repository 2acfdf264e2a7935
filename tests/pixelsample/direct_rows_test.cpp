// One-pass row conversions against the two samples they stand in for: every
// GL format and type against every surface format, both directions, over
// bytes that take each value in each position, on row lengths and byte
// offsets that leave the vector loops a tail and unaligned memory. Bytes past
// the row must stay untouched.
#include "graphics/pixelsample/direct_rows.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "graphics/pixelsample/sample_select.h"

namespace vostan {
namespace {

const int32_t kFormats[] = {gl::kColorIndex, gl::kStencilIndex, gl::kDepthComponent, gl::kRed,
                            gl::kGreen,      gl::kBlue,         gl::kAlpha,          gl::kRgb,
                            gl::kRgba,       gl::kLuminance,    gl::kLuminanceAlpha, gl::kAbgrExt,
                            gl::kBgra};
const int32_t kTypes[] = {gl::kByte,
                          gl::kUnsignedByte,
                          gl::kShort,
                          gl::kUnsignedShort,
                          gl::kInt,
                          gl::kUnsignedInt,
                          gl::kUnsignedByte332,
                          gl::kUnsignedShort565,
                          gl::kUnsignedInt8888,
                          gl::kUnsignedInt8888Rev,
                          gl::kUnsignedInt2101010Rev};
const int32_t kSurfaces[] = {d3dfmt::kR8G8B8,   d3dfmt::kA8R8G8B8, d3dfmt::kX8R8G8B8,
                             d3dfmt::kR5G6B5,   d3dfmt::kX1R5G5B5, d3dfmt::kA1R5G5B5,
                             d3dfmt::kA4R4G4B4, d3dfmt::kA8,       d3dfmt::kL8,
                             d3dfmt::kA8L8,     d3dfmt::kR16F};

// Byte i of the first 256 * 4 holds i / 4 (each value in each of four
// positions), the rest are random.
std::vector<uint8_t> sourceBytes(size_t n) {
  std::vector<uint8_t> v(n);
  std::mt19937 rng(77);
  for (size_t i = 0; i < n; ++i) v[i] = i < 1024 ? uint8_t(i / 4) : uint8_t(rng());
  return v;
}

// Runs `count` pixels both ways from `src` + `offset` and compares all of the
// target buffer, the bytes past the row included.
template <class MakeSource, class MakeTarget>
void compareRow(const DirectRow& direct, MakeSource makeSource, MakeTarget makeTarget,
                int32_t count, int32_t offset) {
  const size_t tail = 16;
  std::vector<uint8_t> src = sourceBytes(size_t(count) * direct.sourceSize + offset);
  std::vector<uint8_t> viaSamples(size_t(count) * direct.targetSize + offset + tail, 0xA5);
  std::vector<uint8_t> viaDirect = viaSamples;
  std::vector<uint32_t> row(count);
  auto source = makeSource(src.data() + offset);
  auto target = makeTarget(viaSamples.data() + offset);
  ASSERT_EQ(source->getPixelSize(), direct.sourceSize);
  ASSERT_EQ(target->getPixelSize(), direct.targetSize);
  source->getPixels(row.data(), 0, count);
  target->setPixels(row.data(), viaSamples.data() + offset, count);
  direct.convert(src.data() + offset, viaDirect.data() + offset, count);
  ASSERT_EQ(0, std::memcmp(viaSamples.data(), viaDirect.data(), viaSamples.size()))
      << "count " << count << " offset " << offset;
}

const int32_t kCounts[] = {1, 3, 7, 17, 33, 640, 1024 + 5};

TEST(DirectRows, UploadsMatchTheSamplesByteForByte) {
  int pairs = 0;
  for (int32_t format : kFormats)
    for (int32_t type : kTypes)
      for (int32_t surface : kSurfaces) {
        const DirectRow direct = directRowToSurface(format, type, surface);
        if (!direct.convert) continue;
        ++pairs;
        SCOPED_TRACE(testing::Message()
                     << "format " << format << " type " << type << " surface " << surface);
        for (int32_t count : kCounts)
          for (int32_t offset : {0, 1, 3})
            compareRow(
                direct, [&](void* p) { return sampleForMemory(format, type, p); },
                [&](void* p) { return sampleForSurface(surface, p); }, count, offset);
      }
  // RGBA, BGRA and RGB into both 32-bit surfaces, the one- and two-channel
  // ones into theirs; signed and unsigned bytes alike.
  EXPECT_EQ(pairs, 2 * 9);
}

TEST(DirectRows, ReadBacksMatchTheSamplesByteForByte) {
  int pairs = 0;
  for (int32_t surface : kSurfaces)
    for (int32_t format : kFormats)
      for (int32_t type : kTypes) {
        const DirectRow direct = directRowFromSurface(surface, format, type);
        if (!direct.convert) continue;
        ++pairs;
        SCOPED_TRACE(testing::Message()
                     << "surface " << surface << " format " << format << " type " << type);
        for (int32_t count : kCounts)
          for (int32_t offset : {0, 1, 3})
            compareRow(
                direct, [&](void* p) { return sampleForSurface(surface, p); },
                [&](void* p) { return sampleForMemory(format, type, p); }, count, offset);
      }
  EXPECT_EQ(pairs, 2 * 6);
}

}  // namespace
}  // namespace vostan
