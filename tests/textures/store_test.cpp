// The texture store on the recording device: slots and handles, uploads in
// GL format and type pairs into device formats, sub-rectangles, read-back of
// the back buffer, and what a reset keeps.
#include <cstring>

#include "../graphics/recording_fixture.h"
#include "graphics/pixelsample/sample_select.h"
#include "graphics/texture_store.h"

namespace vostan::test {
namespace {

using namespace gfx;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using Bytes = std::vector<uint8_t>;

std::string captured(const std::function<void()>& run) {
  ::testing::internal::CaptureStdout();
  run();
  return ::testing::internal::GetCapturedStdout();
}

class TextureStore : public RecordingGraphics {
 protected:
  void SetUp() override {
    RecordingGraphics::SetUp();
    create();
  }
  Bytes contents(int32_t handle) {
    MemorySurface* s = static_cast<MemoryTexture*>(textureEntry(handle)->texture)->level0();
    return Bytes(s->bits(), s->bits() + s->pitch() * s->desc().height);
  }
  // A managed texture made from `pixels`, bound.
  int32_t upload(int32_t internalFormat, int32_t w, int32_t h, int32_t format, int32_t type,
                 const void* pixels, int32_t flags = 0) {
    const int32_t handle = createTextureSlot(*graphics);
    texImage2D(*graphics, handle, internalFormat, w, h, flags, format, type, pixels);
    return handle;
  }
};

TEST_F(TextureStore, SlotsComeBackLastInFirstOutAndOnlyOnce) {
  const int32_t a = createTextureSlot(*graphics);
  const int32_t b = createTextureSlot(*graphics);
  EXPECT_EQ(textureEntry(b), &graphics->textures[1]);
  EXPECT_TRUE(calls("CreateTexture").empty()) << "a slot costs no device work";
  const uint8_t px[4] = {1, 2, 3, 4};
  texImage2D(*graphics, a, gl::kRgba, 1, 1, 0, gl::kRgba, gl::kUnsignedByte, px);
  const std::string out = captured([&] {
    deleteTexture(*graphics, a);
    deleteTexture(*graphics, b);
    deleteTexture(*graphics, a);
    deleteTexture(*graphics, 0);
  });
  EXPECT_EQ(out, "duplicated delete tex.. ignored\n");
  EXPECT_EQ(textureEntry(a)->texture, nullptr);
  EXPECT_EQ(createTextureSlot(*graphics), b);
  EXPECT_EQ(createTextureSlot(*graphics), a);
  EXPECT_EQ(createTextureSlot(*graphics), textureHandle(&graphics->textures[2]));
}

// Each internal format, with a typical source, against the device bytes.
struct UploadCase {
  const char* name;
  int32_t internalFormat, format, type;
  Bytes source;
  int32_t deviceFormat, glFormat;
  Bytes expected;
};

class Uploads : public TextureStore, public ::testing::WithParamInterface<UploadCase> {};

TEST_P(Uploads, DeviceBytesFollowTheFormatPair) {
  const UploadCase& c = GetParam();
  const int32_t h = upload(c.internalFormat, 1, 1, c.format, c.type, c.source.data());
  ASSERT_NE(textureEntry(h)->texture, nullptr);
  EXPECT_EQ(textureEntry(h)->desc.format, c.deviceFormat);
  EXPECT_EQ(graphics->getTextureStageState(4099), c.glFormat);
  EXPECT_THAT(contents(h), ElementsAreArray(c.expected));
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(TextureStore, Uploads, ::testing::Values(
    UploadCase{"RgbaBytes", gl::kRgba, gl::kRgba, gl::kUnsignedByte, {0x11, 0x22, 0x33, 0x44},
               FMT_A8R8G8B8, 32856, {0x33, 0x22, 0x11, 0x44}},
    UploadCase{"Rgba8FromBgraRevWord", 32856, gl::kBgra, gl::kUnsignedInt8888Rev,
               {0x33, 0x22, 0x11, 0x44}, FMT_A8R8G8B8, 32856, {0x33, 0x22, 0x11, 0x44}},
    UploadCase{"RgbaFromShort4444", gl::kRgba, gl::kRgba, gl::kUnsignedShort4444, {0x34, 0x12},
               FMT_A8R8G8B8, 32856, {0x30, 0x20, 0x10, 0x40}},
    UploadCase{"OtherInternalIsOpaqueX8", gl::kRgb, gl::kRgb, gl::kUnsignedByte,
               {0x11, 0x22, 0x33}, FMT_X8R8G8B8, 32849, {0x33, 0x22, 0x11, 0xFF}},
    UploadCase{"LuminanceAveragesColour", gl::kLuminance, gl::kRgba, gl::kUnsignedByte,
               {30, 60, 90, 7}, FMT_L8, gl::kLuminance, {60}},
    UploadCase{"LuminanceAlpha", gl::kLuminanceAlpha, gl::kLuminanceAlpha, gl::kUnsignedByte,
               {0x40, 0xC0}, FMT_A8L8, gl::kLuminanceAlpha, {0x40, 0xC0}},
    UploadCase{"AlphaIsWhiteLuminancePlusAlpha", gl::kAlpha, gl::kAlpha, gl::kUnsignedByte,
               {0x7F}, FMT_A8L8, gl::kLuminanceAlpha, {0xFF, 0x7F}}),
    [](const auto& info) { return std::string(info.param.name); });
// clang-format on

TEST_F(TextureStore, MissingDeviceFormatsFallBackToA8R8G8B8) {
  // A depth render texture is half float where the device has that.
  int32_t h =
      upload(gl::kDepthComponent, 16, 8, gl::kDepthComponent, gl::kUnsignedShort, nullptr, 1);
  EXPECT_EQ(graphics->getTextureStageState(4099), 32849);
  EXPECT_EQ(graphics->getTextureStageState(4096), 16);
  EXPECT_EQ(graphics->getTextureStageState(4097), 8);
  system.textureFormats = {FMT_A8R8G8B8, FMT_X8R8G8B8};
  upload(gl::kDepthComponent, 16, 8, gl::kDepthComponent, gl::kUnsignedShort, nullptr, 1);
  EXPECT_EQ(graphics->getTextureStageState(4099), 32856);
  // Luminance is then stored as grey, opaque.
  const uint8_t l = 0x80;
  h = upload(gl::kLuminance, 1, 1, gl::kLuminance, gl::kUnsignedByte, &l);
  EXPECT_THAT(calls("CreateTexture"),
              ElementsAre("CreateTexture(16,8,1,1,111,0)", "CreateTexture(16,8,1,1,21,0)",
                          "CreateTexture(1,1,1,0,21,1)"));
  EXPECT_THAT(contents(h), ElementsAre(0x80, 0x80, 0x80, 0xFF));
}

TEST_F(TextureStore, NullPixelsGiveZerosAndRenderTexturesGetNoUpload) {
  std::vector<uint8_t> junk(4 * 4 * 4, 0xAB);
  int32_t h = upload(gl::kRgba, 4, 4, gl::kRgba, gl::kUnsignedByte, junk.data());
  // Made again in the same slot with no pixels: the old contents are gone.
  texImage2D(*graphics, h, gl::kRgba, 4, 4, 0, gl::kRgba, gl::kUnsignedByte, nullptr);
  EXPECT_EQ(contents(h), Bytes(64, 0));

  // A render texture is never locked, so the caller's pixels don't reach it.
  h = upload(gl::kRgba, 4, 4, gl::kRgba, gl::kUnsignedByte, junk.data(), 1);
  EXPECT_EQ(textureEntry(h)->desc.pool, POOL_DEFAULT);
  EXPECT_EQ(textureEntry(h)->desc.usage, USAGE_RENDERTARGET);
  EXPECT_EQ(contents(h), Bytes(64, 0));
}

TEST_F(TextureStore, TexImageReplacesInPlaceAndBindsWhileEmptySizesDoNothing) {
  const uint8_t px[4] = {1, 2, 3, 4};
  const int32_t h = upload(gl::kRgba, 1, 1, gl::kRgba, gl::kUnsignedByte, px);
  const int32_t other = upload(gl::kRgba, 1, 1, gl::kRgba, gl::kUnsignedByte, px);
  EXPECT_EQ(graphics->boundTextures[0], textureEntry(other));

  system.log.clear();
  texImage2D(*graphics, h, gl::kRgba, 0, 5, 0, gl::kRgba, gl::kUnsignedByte, px);
  texImage2D(*graphics, h, gl::kRgba, 5, -1, 0, gl::kRgba, gl::kUnsignedByte, px);
  texImage2D(*graphics, 0, gl::kRgba, 1, 1, 0, gl::kRgba, gl::kUnsignedByte, px);
  EXPECT_TRUE(system.log.empty());
  EXPECT_EQ(graphics->boundTextures[0], textureEntry(other));

  Texture* before = textureEntry(h)->texture;
  before->addRef();  // keep it alive to see that it was let go
  texImage2D(*graphics, h, gl::kLuminance, 2, 3, 0, gl::kLuminance, gl::kUnsignedByte, nullptr);
  EXPECT_NE(textureEntry(h)->texture, before);
  EXPECT_EQ(before->release(), 0u) << "the entry let its old texture go";
  EXPECT_EQ(graphics->boundTextures[0], textureEntry(h));
  EXPECT_EQ(device().state().textures[0], textureEntry(h)->texture);
  EXPECT_EQ(graphics->getTextureStageState(4096), 2);
  bindTexture(*graphics, 0);
  EXPECT_EQ(device().state().textures[0], nullptr);
  EXPECT_EQ(graphics->getTextureStageState(4096), 0);
}

TEST_F(TextureStore, SubImageTouchesOnlyItsRectangle) {
  const int32_t h = upload(gl::kRgba, 5, 6, gl::kRgba, gl::kUnsignedByte, nullptr);
  const uint8_t one[4] = {0x10, 0x20, 0x30, 0x40};
  texSubImage2D(*graphics, 2, 3, 1, 1, gl::kRgba, gl::kUnsignedByte, one);
  Bytes expected(5 * 6 * 4, 0);
  const std::size_t at = (3 * 5 + 2) * 4;
  expected[at] = 0x30, expected[at + 1] = 0x20, expected[at + 2] = 0x10, expected[at + 3] = 0x40;
  EXPECT_EQ(contents(h), expected);

  // A 2 by 2 block at (3, 4) from tightly packed rows.
  const uint8_t block[16] = {1, 0, 0, 9, 2, 0, 0, 9, 3, 0, 0, 9, 4, 0, 0, 9};
  texSubImage2D(*graphics, 3, 4, 2, 2, gl::kRgba, gl::kUnsignedByte, block);
  for (int i = 0; i < 4; ++i) {
    const std::size_t p = ((4 + i / 2) * 5 + 3 + i % 2) * 4;
    expected[p + 2] = static_cast<uint8_t>(i + 1), expected[p + 3] = 9;
  }
  EXPECT_EQ(contents(h), expected);
}

TEST_F(TextureStore, SubImageNeedsABoundTextureAndASize) {
  const uint8_t one[4] = {1, 2, 3, 4};
  texSubImage2D(*graphics, 0, 0, 1, 1, gl::kRgba, gl::kUnsignedByte, one);  // nothing bound
  const int32_t h = createTextureSlot(*graphics);
  bindTexture(*graphics, h);
  texSubImage2D(*graphics, 0, 0, 1, 1, gl::kRgba, gl::kUnsignedByte, one);  // no texture yet
  texImage2D(*graphics, h, gl::kRgba, 2, 2, 0, gl::kRgba, gl::kUnsignedByte, nullptr);
  texSubImage2D(*graphics, 0, 0, 0, 1, gl::kRgba, gl::kUnsignedByte, one);
  texSubImage2D(*graphics, 0, 0, 1, 0, gl::kRgba, gl::kUnsignedByte, one);
  EXPECT_EQ(contents(h), Bytes(16, 0));
  // A deleted entry stays bindable and counts as having no texture.
  deleteTexture(*graphics, h);
  bindTexture(*graphics, h);
  texSubImage2D(*graphics, 0, 0, 1, 1, gl::kRgba, gl::kUnsignedByte, one);
  EXPECT_EQ(graphics->getTextureStageState(4096), 0);
}

// The back buffer of a client area `rows` high, pixel (x, y) = A8R8G8B8
// with red x and green y.
class ReadBack : public TextureStore {
 protected:
  void SetUp() override {
    RecordingGraphics::SetUp();
    system.clientWidth = 3;
    system.clientHeight = 4;
    gClientHeight = 4;
    create();
    MemorySurface* back = device().backBuffer();
    for (int y = 0; y < 4; ++y)
      for (int x = 0; x < 3; ++x) {
        uint8_t* p = back->bits() + y * back->pitch() + x * 4;
        p[0] = 0, p[1] = static_cast<uint8_t>(y), p[2] = static_cast<uint8_t>(x), p[3] = 0xFF;
      }
  }
};

TEST_F(ReadBack, RectangleCountsFromTheBottomLeftAndTheSceneIsReopened) {
  graphics->beginScene();
  system.log.clear();
  // Two columns from x 1, one row above the bottom: surface rows 1 and 2.
  uint8_t out[2 * 2 * 4] = {};
  readPixels(*graphics, graphics->backBuffer, 1, 1, 2, 2, gl::kRgba, gl::kUnsignedByte, out);
  EXPECT_THAT(out, ElementsAre(1, 2, 0, 0xFF, 2, 2, 0, 0xFF, 1, 1, 0, 0xFF, 2, 1, 0, 0xFF));
  EXPECT_EQ(system.log.front(), "EndScene");
  EXPECT_EQ(system.log.back(), "BeginScene");
  EXPECT_TRUE(graphics->inScene);
}

}  // namespace
}  // namespace vostan::test
