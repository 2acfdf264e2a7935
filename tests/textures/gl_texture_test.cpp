// Textures on the OpenGL backend, checked on the pixels of a textured quad:
// each device format's bytes mean on screen what they mean to the device,
// uploads through the store land where they should, read-back runs bottom
// up, and a reset empties render textures only.
#include <cstring>

#include "../graphics/gl_fixture.h"
#include "graphics/pixelsample/sample_select.h"
#include "graphics/texture_store.h"

// Mesa's driver keeps allocations past its unloading, where the leak checker
// can no longer tell whose they are; the store's own leaks are checked by
// texture_tests on the recording device.
extern "C" const char* __asan_default_options() {
  return "detect_leaks=0";
}

namespace vostan::test {
namespace {

using namespace gfx;
using Bytes = std::vector<uint8_t>;

// Little-endian words. Sized once and filled by index: growing the vector by
// small inserts draws a false stringop-overflow from gcc 12 at -O3.
template <typename Word>
Bytes littleEndian(std::initializer_list<Word> values) {
  Bytes out(values.size() * sizeof(Word));
  std::size_t i = 0;
  for (Word v : values)
    for (std::size_t b = 0; b < sizeof(Word); ++b) out[i++] = uint8_t(v >> (8 * b));
  return out;
}
Bytes words16(std::initializer_list<uint16_t> values) {
  return littleEndian(values);
}
Bytes words32(std::initializer_list<uint32_t> values) {
  return littleEndian(values);
}

class GLTextures : public GLGraphicsTest {
 protected:
  // The bound texture over the whole target, point sampled, blended by its
  // alpha over a cleared background of 0xRRGGBB.
  void drawBound(uint32_t background) {
    clearTo(((background >> 16) & 0xFF) / 255.0f, ((background >> 8) & 0xFF) / 255.0f,
            (background & 0xFF) / 255.0f);
    g->setEnable(3042, true);
    g->setBlend(1);
    g->begin(7);
    g->t2fV2f(0, 0, -1, 1);
    g->t2fV2f(1, 0, 1, 1);
    g->t2fV2f(1, 1, 1, -1);
    g->t2fV2f(0, 1, -1, -1);
    g->end();
  }
  // The screen colour at the middle of texel (x, y) of a square texture
  // `n` texels wide.
  uint32_t texel(int x, int y, int n = 2) {
    const int step = kSize / n;
    return at(x * step + step / 2, y * step + step / 2);
  }
};

// Raw bytes of a 2 by 2 texture in a device format, and the four colours
// (top-left, top-right, bottom-left, bottom-right) they blend to.
struct RawCase {
  const char* name;
  int32_t format;
  Bytes texels;
  uint32_t background;
  uint32_t expected[4];
};

class DeviceFormats : public GLTextures, public ::testing::WithParamInterface<RawCase> {};

TEST_P(DeviceFormats, BytesMeanWhatTheFormatSays) {
  const RawCase& c = GetParam();
  Texture* t = nullptr;
  ASSERT_EQ(g->device->createTexture(2, 2, 1, 0, c.format, POOL_MANAGED, &t), OK);
  Surface* level = nullptr;
  t->getSurfaceLevel(0, &level);
  LockedRect lr;
  ASSERT_EQ(level->lockRect(lr, nullptr, 0), OK);
  const std::size_t row = c.texels.size() / 2;
  for (int y = 0; y < 2; ++y)
    std::memcpy(static_cast<uint8_t*>(lr.bits) + y * lr.pitch, c.texels.data() + y * row, row);
  level->unlockRect();
  level->release();
  g->device->setTexture(0, t);
  drawBound(c.background);
  for (int i = 0; i < 4; ++i)
    EXPECT_TRUE(near(texel(i % 2, i / 2), 0xFF000000u | c.expected[i])) << "texel " << i;
  g->device->setTexture(0, nullptr);
  t->release();
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(GLTextures, DeviceFormats, ::testing::Values(
    RawCase{"A8R8G8B8", FMT_A8R8G8B8, words32({0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0x80FFFFFF}),
            0, {0xFF0000, 0x00FF00, 0x0000FF, 0x808080}},
    RawCase{"X8R8G8B8IgnoresItsTopByte", FMT_X8R8G8B8,
            words32({0x00FF8000, 0x00000000, 0x12345678, 0x00FFFFFF}),
            0, {0xFF8000, 0x000000, 0x345678, 0xFFFFFF}},
    RawCase{"R8G8B8", FMT_R8G8B8, {0, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0, 0, 0x40, 0x80, 0xC0},
            0, {0xFF0000, 0x00FF00, 0x0000FF, 0xC08040}},
    RawCase{"R5G6B5", FMT_R5G6B5, words16({0xF800, 0x07E0, 0x001F, 0xFFFF}),
            0, {0xFF0000, 0x00FF00, 0x0000FF, 0xFFFFFF}},
    RawCase{"X1R5G5B5IsOpaque", FMT_X1R5G5B5, words16({0x7C00, 0x03E0, 0x001F, 0x0000}),
            0x808080, {0xFF0000, 0x00FF00, 0x0000FF, 0x000000}},
    RawCase{"A1R5G5B5", FMT_A1R5G5B5, words16({0xFC00, 0x7C00, 0x83E0, 0x001F}),
            0x808080, {0xFF0000, 0x808080, 0x00FF00, 0x808080}},
    RawCase{"A4R4G4B4", FMT_A4R4G4B4, words16({0xFF00, 0x80F0, 0xF00F, 0x0FFF}),
            0, {0xFF0000, 0x008800, 0x0000FF, 0x000000}},
    RawCase{"A8IsBlackWithAlpha", FMT_A8, {0xFF, 0x00, 0x80, 0x40},
            0xFFFFFF, {0x000000, 0xFFFFFF, 0x7F7F7F, 0xBFBFBF}},
    RawCase{"L8IsGreyAndOpaque", FMT_L8, {0x00, 0x40, 0x80, 0xFF},
            0xFF0000, {0x000000, 0x404040, 0x808080, 0xFFFFFF}},
    RawCase{"A8L8HasLuminanceFirst", FMT_A8L8, {0xFF, 0xFF, 0x40, 0xFF, 0xFF, 0x80, 0xFF, 0x00},
            0x0000FF, {0xFFFFFF, 0x404040, 0x8080FF, 0x0000FF}}),
    [](const auto& info) { return std::string(info.param.name); });
// clang-format on

TEST_F(GLTextures, SubImageChangesOneTexel) {
  std::vector<uint8_t> red(4 * 4 * 4);
  for (std::size_t i = 0; i < red.size(); i += 4) red[i] = 255, red[i + 3] = 255;
  const int32_t h = createTextureSlot(*g);
  texImage2D(*g, h, gl::kRgba, 4, 4, 0, gl::kRgba, gl::kUnsignedByte, red.data());
  const uint8_t green[4] = {0, 255, 0, 255};
  texSubImage2D(*g, 2, 1, 1, 1, gl::kRgba, gl::kUnsignedByte, green);
  drawBound(0);
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 4; ++x)
      EXPECT_TRUE(near(texel(x, y, 4), x == 2 && y == 1 ? 0xFF00FF00u : 0xFFFF0000u))
          << x << "," << y;
  deleteTexture(*g, h);
}

TEST_F(GLTextures, ReadPixelsRunsBottomUp) {
  clearTo(0, 0, 1);
  g->color3f(1, 0, 0);
  quad(-1, 0, 1, 1);  // the top half red
  std::vector<uint8_t> out(kSize * kSize * 4);
  readPixels(*g, g->backBuffer, 0, 0, kSize, kSize, gl::kRgba, gl::kUnsignedByte, out.data());
  auto rgb = [&](int x, int row) {
    const uint8_t* p = &out[(row * kSize + x) * 4];
    return 0xFF000000u | p[0] << 16 | p[1] << 8 | p[2];
  };
  EXPECT_EQ(rgb(5, 0), 0xFF0000FFu) << "row 0 is the bottom of the screen";
  EXPECT_EQ(rgb(5, kSize - 1), 0xFFFF0000u);
  // One pixel from the bottom-left corner, counted in GL's way.
  uint32_t one = 0;
  readPixels(*g, g->backBuffer, 3, kSize - 2, 1, 1, gl::kBgra, gl::kUnsignedInt8888Rev, &one);
  EXPECT_EQ(one | 0xFF000000u, 0xFFFF0000u);
  EXPECT_TRUE(g->inScene);
}

TEST_F(GLTextures, ResetKeepsManagedPixelsAndEmptiesRenderTextures) {
  // Colours unlike themselves with red and blue swapped: the two kinds of
  // 32-bit texture keep their bytes in GL differently.
  const uint8_t orange[4] = {255, 128, 0, 255}, azure[4] = {0, 64, 255, 255};
  std::vector<uint8_t> fill(2 * 2 * 4);
  for (std::size_t i = 0; i < fill.size(); ++i) fill[i] = orange[i % 4];
  const int32_t managed = createTextureSlot(*g);
  texImage2D(*g, managed, gl::kRgba, 2, 2, 0, gl::kRgba, gl::kUnsignedByte, fill.data());
  const int32_t render = createTextureSlot(*g);
  texImage2D(*g, render, gl::kRgba, 2, 2, 1, gl::kRgba, gl::kUnsignedByte, nullptr);
  for (std::size_t i = 0; i < fill.size(); ++i) fill[i] = azure[i % 4];
  texSubImage2D(*g, 0, 0, 2, 2, gl::kRgba, gl::kUnsignedByte, fill.data());
  drawBound(0);
  EXPECT_TRUE(near(texel(0, 0), 0xFF0040FFu));
  bindTexture(*g, managed);
  drawBound(0);
  EXPECT_TRUE(near(texel(0, 0), 0xFFFF8000u));

  ::testing::internal::CaptureStdout();
  g->resetDevice();
  ::testing::internal::GetCapturedStdout();
  const float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  g->setMatrix(0, identity);
  bindTexture(*g, managed);
  drawBound(0x00FF00);
  EXPECT_TRUE(near(texel(1, 1), 0xFFFF8000u));
  bindTexture(*g, render);
  drawBound(0x00FF00);
  EXPECT_TRUE(near(texel(1, 1), 0xFF00FF00u)) << "transparent black over green";
  EXPECT_EQ(g->getTextureStageState(4096), 2);
}

}  // namespace
}  // namespace vostan::test
