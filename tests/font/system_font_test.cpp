// SystemFont's own rules over the scripted font service: canvas sizes, the
// gray and one-bit conversions, the alternate font's decisions, the halo and
// the requests that draw nothing.
#include "font/system_font.h"

#include <gtest/gtest.h>

#include "capture.h"
#include "platform/font/fake_font_system.h"

namespace vostan::font {
namespace {

using platform::FakeFamily;
using platform::FakeFontSystem;
using platform::FakeGlyph;
using platform::GlyphFormat;
using test::Capture;

constexpr uint32_t kClear = 0x00FFFFFF;

FakeGlyph glyph(uint32_t w, uint32_t h, int32_t originX, int32_t originY, int32_t advance,
                std::vector<uint8_t> levels, uint32_t index = 1) {
  FakeGlyph g;
  g.index = index;
  g.box = {w, h, originX, originY, advance};
  g.levels = std::move(levels);
  return g;
}

class SystemFontTest : public ::testing::Test {
 protected:
  void SetUp() override {
    FakeFamily& plain = fonts.families["Plain"];
    plain.metrics = {14, 11, 3, 9};
    plain.glyphs[u'A'] = glyph(5, 2, 1, 4, 6, {63, 64, 0, 32, 1, 64, 64, 64, 64, 64});
    plain.glyphs[u'B'] = glyph(2, 2, 0, 2, 3, {64, 64, 64, 64}, 3);  // covered, unshowable
    plain.glyphs[u' '] = glyph(0, 0, 0, 0, 4, {});
    plain.fallback = glyph(3, 3, 0, 3, 4, std::vector<uint8_t>(9, 64));
    FakeFamily& cjk = fonts.families["Cjk"];
    cjk.metrics = {20, 16, 4, 18};
    cjk.glyphs[u'中'] = glyph(7, 8, 1, 7, 9, std::vector<uint8_t>(56, 40));
    cjk.glyphs[u'B'] = glyph(4, 5, 2, 5, 6, std::vector<uint8_t>(20, 64));
  }

  std::unique_ptr<SystemFont> make(const char* family, int32_t flags,
                                   const SystemFont* base = nullptr) {
    return std::make_unique<SystemFont>(fonts.open({family, -12, (flags & kBold) != 0}), flags,
                                        base);
  }

  FakeFontSystem fonts;
  Capture capture;
};

TEST_F(SystemFontTest, CanvasFollowsLineMetricsAndFlags) {
  auto gray = make("Plain", kAntiAliased);
  EXPECT_EQ(gray->canvasWidth, 14);  // 9 up to 12, plus 2
  EXPECT_EQ(gray->canvasHeight, 16);
  EXPECT_EQ(gray->canvasPixels, 14 * 16);
  EXPECT_EQ(gray->glyphFormat, GlyphFormat::gray);

  auto mono = make("Plain", 0);
  EXPECT_EQ(mono->canvasWidth, 32);
  EXPECT_EQ(mono->glyphFormat, GlyphFormat::bitmap);

  auto outlined = make("Plain", kAntiAliased | kOutlined);
  EXPECT_EQ(outlined->canvasWidth, gray->canvasWidth + 5);
  EXPECT_EQ(outlined->canvasHeight, gray->canvasHeight + 5);
  EXPECT_EQ(outlined->textMetric.ascent, 14);
  EXPECT_EQ(outlined->textMetric.descent, 5);
  EXPECT_EQ(outlined->textMetric.height, 19);

  // The alternate takes the main font's canvas and format, whatever its own flags say.
  auto alt = make("Cjk", 0, gray.get());
  EXPECT_EQ(alt->canvasWidth, gray->canvasWidth);
  EXPECT_EQ(alt->canvasHeight, gray->canvasHeight);
  EXPECT_EQ(alt->glyphFormat, GlyphFormat::gray);
  EXPECT_EQ(alt->textMetric.ascent, 16);
  EXPECT_EQ(fonts.requests.back().height, -12);
}

TEST_F(SystemFontTest, GrayLevelsBecomeAlphaOverWhiteWithTheCallersStride) {
  auto font = make("Plain", kAntiAliased);
  font->createCache(u'A', 10, 20, 6, 3, false, capture.target());
  ASSERT_EQ(capture.uploads.size(), 1u);
  const auto& u = capture.uploads[0];
  EXPECT_EQ(u.x, 10);
  EXPECT_EQ(u.y, 20);
  ASSERT_EQ(u.width, 6);
  ASSERT_EQ(u.height, 3);
  const uint32_t firstRow[] = {252, 255, 0, 128, 4, 0};
  for (int x = 0; x < 6; x++) EXPECT_EQ(u.at(x, 0), firstRow[x] << 24 | 0xFFFFFF) << x;
  for (int x = 0; x < 5; x++) EXPECT_EQ(u.at(x, 1), 0xFFFFFFFFu) << x;
  EXPECT_EQ(u.at(5, 1), kClear);
  for (int x = 0; x < 6; x++) EXPECT_EQ(u.at(x, 2), kClear) << "cleared before each glyph";
}

TEST_F(SystemFontTest, OneBitGlyphsTakeTheirRowCountAsHeight) {
  auto font = make("Plain", 0);
  font->createCache(u'A', 0, 0, 8, 10, false, capture.target());
  ASSERT_EQ(capture.uploads.size(), 1u);
  const auto& u = capture.uploads[0];
  ASSERT_EQ(u.height, 2) << "the glyph's rows, not the 10 asked for";
  const uint32_t set = 0xFFFFFFFF;
  const uint32_t row0[] = {set, set, kClear, set, set, kClear, kClear, kClear};
  for (int x = 0; x < 8; x++) EXPECT_EQ(u.at(x, 0), row0[x]) << x;
  for (int x = 0; x < 5; x++) EXPECT_EQ(u.at(x, 1), set) << x;
}

TEST_F(SystemFontTest, AlternateTakesWhatTheMainFontCannotShow) {
  auto main = make("Plain", kAntiAliased);
  CharacterMetrics m;
  bool useAlt = false;
  // Without an alternate, the main font's missing-glyph shape is measured.
  main->initCharacter(u'中', m, useAlt);
  EXPECT_FALSE(useAlt);
  EXPECT_EQ(m.cwidth, 3);

  auto alt = make("Cjk", kAntiAliased, main.get());
  main->altFont = alt.get();
  main->initCharacter(u'中', m, useAlt);
  EXPECT_TRUE(useAlt);
  EXPECT_EQ(m.cwidth, 7);
  EXPECT_EQ(m.ascent, 7);
  EXPECT_EQ(m.descent, 1);
  EXPECT_EQ(m.advance, 9);
  EXPECT_EQ(m.cheight, main->canvasHeight);

  useAlt = false;
  main->initCharacter(u'B', m, useAlt);
  EXPECT_TRUE(useAlt) << "a covered character whose glyph is the unshowable one";
  EXPECT_EQ(m.cwidth, 4);

  // A character of the main font leaves the flag as it was.
  main->initCharacter(u'A', m, useAlt);
  EXPECT_TRUE(useAlt);
  useAlt = false;
  main->initCharacter(u'A', m, useAlt);
  EXPECT_FALSE(useAlt);
  EXPECT_EQ(m.ascent, 4);
  EXPECT_EQ(m.descent, -2);
  EXPECT_EQ(m.advance, 6);
  EXPECT_EQ(m.lsb, 1);
  EXPECT_EQ(m.cwidth, 5);
  EXPECT_EQ(m.cy, -4);

  // Drawing: the flag picks the font; without an alternate it is ignored.
  main->createCache(u'中', 0, 0, 8, 8, true, capture.target());
  ASSERT_EQ(capture.uploads.size(), 1u);
  EXPECT_EQ(capture.uploads[0].at(6, 7), 160u << 24 | 0xFFFFFF);
  main->altFont = nullptr;
  main->createCache(u'A', 0, 0, 6, 2, true, capture.target());
  ASSERT_EQ(capture.uploads.size(), 2u);
  EXPECT_EQ(capture.uploads[1].at(0, 0), 252u << 24 | 0xFFFFFF);
}

TEST_F(SystemFontTest, OutlinedMetricsMakeRoomForTheHalo) {
  auto main = make("Plain", kAntiAliased | kOutlined);
  auto alt = make("Cjk", kAntiAliased, main.get());
  main->altFont = alt.get();
  CharacterMetrics m;
  bool useAlt = false;
  main->initCharacter(u'A', m, useAlt);
  EXPECT_EQ(m.ascent, 7);
  EXPECT_EQ(m.descent, 0);
  EXPECT_EQ(m.advance, 11);
  EXPECT_EQ(m.lsb, 3);
  EXPECT_EQ(m.cwidth, 10);
  EXPECT_EQ(m.cy, -7);
  // The main font's flag counts for the alternate's glyphs too.
  main->initCharacter(u'中', m, useAlt);
  EXPECT_EQ(m.cwidth, 12);
  EXPECT_EQ(m.cy, -10);
  main->initCharacter(u' ', m, useAlt);
  EXPECT_EQ(m.cwidth, 5) << "0 for the space, then the halo's room";
}

TEST_F(SystemFontTest, HaloIsAShiftedLightBodyOnADarkEdge) {
  // One opaque pixel at (1, 1) of an 8 by 8 image.
  std::vector<uint32_t> pixels(64, kClear), scratch(15 * 15);
  pixels[9] = 0xFFFFFFFF;
  drawHalo(pixels.data(), scratch.data(), 8, 8);
  for (int y = 0; y < 8; y++)
    for (int x = 0; x < 8; x++) {
      const uint32_t p = pixels[y * 8 + x];
      const bool body = x >= 3 && x <= 4 && y >= 3 && y <= 4;
      const bool edge = x >= 1 && x <= 6 && y >= 1 && y <= 6;
      if (body)
        EXPECT_EQ(p, 0xFFFFFFFFu) << x << "," << y;
      else if (edge)
        EXPECT_EQ(p, 0xFF000000u) << x << "," << y;
      else
        EXPECT_EQ(p, 0u) << x << "," << y;
    }

  // Faint ink sums: four pixels of alpha 40 give a body of 160 where all four overlap.
  std::vector<uint32_t> faint(64, kClear);
  for (int i : {0, 1, 8, 9}) faint[i] = 40u << 24 | 0xFFFFFF;
  drawHalo(faint.data(), scratch.data(), 8, 8);
  EXPECT_EQ(faint[3 * 8 + 3], 0xFFA0A0A0u);
  EXPECT_EQ(faint[2 * 8 + 2], 0xFF282828u);
  EXPECT_EQ(faint[6 * 8 + 6], 40u << 24) << "edge: only (1, 1) lies in its block";

  // Through createCache: an outlined font draws the halo before the upload.
  auto font = make("Plain", kAntiAliased | kOutlined);
  font->createCache(u'B', 0, 0, 8, 8, false, capture.target());
  ASSERT_EQ(capture.uploads.size(), 1u);
  EXPECT_EQ(capture.uploads[0].at(0, 0), 0xFF000000u);
  EXPECT_EQ(capture.uploads[0].at(3, 3), 0xFFFFFFFFu);
  EXPECT_EQ(capture.uploads[0].at(7, 7), 0u);
}

TEST_F(SystemFontTest, RequestsThatDrawNothing) {
  auto font = make("Plain", kAntiAliased);
  const TextureTarget target = capture.target(64, 64);
  font->createCache(u' ', 0, 0, 4, 4, false, target);
  font->createCache(u'A', 0, 0, font->canvasWidth + 1, 4, false, target);
  font->createCache(u'A', 0, 0, 4, font->canvasHeight + 1, false, target);
  font->createCache(u'A', 0, 0, 0, 4, false, target);
  font->createCache(u'A', 0, 0, -4, -4, false, target);
  font->createCache(u'A', 60, 0, 8, 4, false, target);  // past the texture's edge
  font->createCache(u'A', -1, 0, 8, 4, false, target);
  font->createCache(u'A', 0, 0, 8, 4, false, TextureTarget{});  // nothing bound
  EXPECT_TRUE(capture.uploads.empty());
  EXPECT_EQ(std::u16string(fonts.drawn.begin(), fonts.drawn.end()), u"AAA")
      << "measured only when it could be drawn";

  // A family that is not there: nothing measured, nothing drawn.
  auto missing = make("Nowhere", kAntiAliased);
  EXPECT_EQ(missing->textMetric.height, 0);
  EXPECT_EQ(missing->canvasWidth, 2);
  CharacterMetrics m;
  m.advance = 99;
  bool useAlt = false;
  missing->initCharacter(u'A', m, useAlt);
  EXPECT_EQ(m.advance, 0);
  EXPECT_EQ(m.cwidth, 0);
  missing->createCache(u'A', 0, 0, 2, 2, false, target);
  EXPECT_TRUE(capture.uploads.empty());
  // ... but its alternate still serves every character.
  auto alt = make("Cjk", 0, missing.get());
  missing->altFont = alt.get();
  missing->initCharacter(u'B', m, useAlt);
  EXPECT_TRUE(useAlt);
  EXPECT_EQ(m.cwidth, 4);
}

}  // namespace
}  // namespace vostan::font
