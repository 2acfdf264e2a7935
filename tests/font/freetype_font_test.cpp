// Fonts found and drawn through FreeType and fontconfig, checked against
// FreeType called directly on the same font file and size: line and glyph
// metrics, cell pixels, the CJK alternate, missing families, added files.
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_TRUETYPE_TABLES_H
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>

#include "capture.h"
#include "font/system_font.h"
#include "platform/font/freetype_font_system.h"

namespace vostan::font {
namespace {

using platform::FreeTypeFontSystem;
using test::Capture;

constexpr const char* kLatin = "DejaVu Sans";
constexpr const char* kCjk = "WenQuanYi Micro Hei";

std::string fileOf(const char* family) {
  return vostan::platform::FreeTypeFontSystem::installedFile(family);
}

// FreeType on its own, at an em height in pixels.
class Reference {
 public:
  Reference(const std::string& file, int em, bool mono = false) : mono_(mono) {
    FT_Init_FreeType(&library_);
    EXPECT_EQ(FT_New_Face(library_, file.c_str(), 0, &face_), 0) << file;
    FT_Set_Pixel_Sizes(face_, 0, em);
  }
  ~Reference() {
    FT_Done_Face(face_);
    FT_Done_FreeType(library_);
  }
  FT_GlyphSlot render(char16_t c) {
    EXPECT_EQ(FT_Load_Char(face_, c, mono_ ? FT_LOAD_TARGET_MONO : FT_LOAD_DEFAULT), 0);
    EXPECT_EQ(FT_Render_Glyph(face_->glyph, mono_ ? FT_RENDER_MODE_MONO : FT_RENDER_MODE_NORMAL),
              0);
    return face_->glyph;
  }
  FT_Face face_ = nullptr;

 private:
  FT_Library library_ = nullptr;
  bool mono_;
};

void expectMetricsLike(SystemFont& font, char16_t c, FT_GlyphSlot g) {
  CharacterMetrics m;
  bool useAlt = false;
  font.initCharacter(c, m, useAlt);
  SCOPED_TRACE(testing::Message() << "U+" << std::hex << int(c));
  EXPECT_EQ(m.ascent, g->bitmap_top);
  EXPECT_EQ(m.descent, int(g->bitmap.rows) - g->bitmap_top);
  EXPECT_EQ(m.lsb, g->bitmap_left);
  EXPECT_EQ(m.advance, g->advance.x / 64);
  EXPECT_EQ(m.cwidth, int(g->bitmap.width));
  EXPECT_EQ(m.cy, -g->bitmap_top);
}

// The uploaded cell against FreeType's coverage: the 65 levels stay within 4
// of the 256, and nothing is inked outside the glyph's box.
void expectCellLike(const test::Upload& u, FT_GlyphSlot g) {
  const FT_Bitmap& bm = g->bitmap;
  int inked = 0;
  for (int y = 0; y < u.height; y++)
    for (int x = 0; x < u.width; x++) {
      const uint32_t p = u.at(x, y);
      const int want = x < int(bm.width) && y < int(bm.rows) ? bm.buffer[y * bm.pitch + x] : 0;
      EXPECT_EQ(p & 0xFFFFFF, 0xFFFFFFu);
      EXPECT_NEAR(int(p >> 24), want, 4) << x << "," << y;
      inked += want > 0;
    }
  EXPECT_GT(inked, 10);
}

TEST(FreeTypeFont, MetricsMatchFreeTypeAtTheSameSize) {
  FreeTypeFontSystem system;
  const std::string file = fileOf(kLatin);
  ASSERT_FALSE(file.empty());
  SystemFont font(system.open({kLatin, -20, false}), kAntiAliased, nullptr);
  Reference ref(file, 20);

  // Line metrics from the OS/2 table's Windows ascent and descent.
  auto* os2 = static_cast<TT_OS2*>(FT_Get_Sfnt_Table(ref.face_, FT_SFNT_OS2));
  ASSERT_NE(os2, nullptr);
  const double scale = 20.0 / ref.face_->units_per_EM;
  EXPECT_NEAR(font.textMetric.ascent, os2->usWinAscent * scale, 0.5);
  EXPECT_NEAR(font.textMetric.descent, os2->usWinDescent * scale, 0.5);
  EXPECT_EQ(font.textMetric.height, font.textMetric.ascent + font.textMetric.descent);
  EXPECT_GE(font.textMetric.maxCharWidth, ref.face_->max_advance_width * scale);
  EXPECT_EQ(font.canvasHeight, font.textMetric.height + 2);

  for (char16_t c : std::u16string(u"AgjW@é%")) expectMetricsLike(font, c, ref.render(c));

  // Absurd sizes are drawn at a size a texture can hold.
  for (int32_t height : {INT32_MIN, INT32_MAX}) {
    SystemFont huge(system.open({kLatin, height, false}), kAntiAliased, nullptr);
    EXPECT_GT(huge.canvasHeight, 100);
    EXPECT_LT(huge.canvasPixels, 8 << 20);
  }

  // A positive height is the cell: ascent plus descent.
  for (int cell : {13, 24, 50}) {
    SystemFont sized(system.open({kLatin, cell, false}), kAntiAliased, nullptr);
    EXPECT_NEAR(sized.textMetric.height, cell, 1) << cell;
  }
}

TEST(FreeTypeFont, CellsHoldFreeTypesPixels) {
  FreeTypeFontSystem system;
  const std::string file = fileOf(kLatin);
  SystemFont gray(system.open({kLatin, -24, false}), kAntiAliased, nullptr);
  Reference ref(file, 24);
  Capture capture;
  for (char16_t c : std::u16string(u"Ag@")) {
    gray.createCache(c, 0, 0, gray.canvasWidth, gray.canvasHeight, false, capture.target());
    ASSERT_EQ(capture.uploads.size(), 1u);
    expectCellLike(capture.uploads[0], ref.render(c));
    capture.uploads.clear();
  }

  // One-bit glyphs: the same bits, and as many rows as the glyph has.
  SystemFont mono(system.open({kLatin, -24, false}), 0, nullptr);
  Reference monoRef(file, 24, true);
  mono.createCache(u'R', 0, 0, mono.canvasWidth, mono.canvasHeight, false, capture.target());
  ASSERT_EQ(capture.uploads.size(), 1u);
  const test::Upload& u = capture.uploads[0];
  FT_GlyphSlot g = monoRef.render(u'R');
  ASSERT_EQ(u.height, int(g->bitmap.rows));
  for (int y = 0; y < u.height; y++)
    for (int x = 0; x < u.width; x++) {
      const bool set = x < int(g->bitmap.width) &&
                       (g->bitmap.buffer[y * g->bitmap.pitch + x / 8] >> (7 - x % 8)) & 1;
      EXPECT_EQ(u.at(x, y), set ? 0xFFFFFFFFu : 0x00FFFFFFu) << x << "," << y;
    }
}

TEST(FreeTypeFont, CjkComesFromTheAlternateFamily) {
  FreeTypeFontSystem system;
  const std::string cjkFile = fileOf(kCjk);
  ASSERT_NE(cjkFile.find("wqy"), std::string::npos) << "setup installs the CJK family";
  SystemFont main(system.open({kLatin, -20, false}), kAntiAliased, nullptr);
  SystemFont alt(system.open({kCjk, -20, false}), kAntiAliased, &main);
  main.altFont = &alt;
  EXPECT_FALSE(main.hasCharacter(u'中'));

  CharacterMetrics m;
  bool useAlt = false;
  main.initCharacter(u'A', m, useAlt);
  EXPECT_FALSE(useAlt);
  main.initCharacter(u'中', m, useAlt);
  EXPECT_TRUE(useAlt);
  Reference ref(cjkFile, 20);
  FT_GlyphSlot g = ref.render(u'中');
  expectMetricsLike(main, u'中', g);

  Capture capture;
  main.createCache(u'中', 0, 0, main.canvasWidth, main.canvasHeight, true, capture.target());
  ASSERT_EQ(capture.uploads.size(), 1u);
  expectCellLike(capture.uploads[0], g);
}

TEST(FreeTypeFont, MissingFamiliesAreNotSubstituted) {
  FreeTypeFontSystem system;
  EXPECT_EQ(system.open({"No Such Family Anywhere", -20, false}), nullptr);
  EXPECT_EQ(system.open({"", -20, false}), nullptr);
  EXPECT_EQ(FreeTypeFontSystem::installedFile("No Such Family Anywhere"), "");
  EXPECT_NE(system.open({"dejavu SANS", -20, false}), nullptr) << "families match in any case";
  // Bold of a family: the bold face, drawn wider than the regular one.
  Reference plain(fileOf(kLatin), 20);
  SystemFont bold(system.open({kLatin, -20, true}), kAntiAliased, nullptr);
  CharacterMetrics m;
  bool useAlt = false;
  bold.initCharacter(u'H', m, useAlt);
  EXPECT_GT(m.advance, plain.render(u'H')->advance.x / 64);
}

// Writes bytes to a fresh file and gives its path.
std::string writeFile(const std::string& name, const std::vector<uint8_t>& bytes) {
  const std::string path = testing::TempDir() + name;
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
  return path;
}

std::vector<uint8_t> readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST(FreeTypeFont, AddedFilesAreFoundAndDamagedOnesRefused) {
  FreeTypeFontSystem system(false);  // nothing installed: only what is added
  EXPECT_EQ(system.open({kLatin, -16, false}), nullptr);
  const std::vector<uint8_t> good = readFile(fileOf(kLatin));
  ASSERT_GT(good.size(), 1000u);
  EXPECT_EQ(system.addFontFile(writeFile("good.ttf", good)), 1);
  auto face = system.open({kLatin, -16, false});
  ASSERT_NE(face, nullptr);
  SystemFont font(std::move(face), kAntiAliased, nullptr);
  Capture capture;
  font.createCache(u'A', 0, 0, font.canvasWidth, font.canvasHeight, false, capture.target());
  EXPECT_EQ(capture.uploads.size(), 1u);
  EXPECT_EQ(system.addFontFile(fileOf(kCjk)), 2) << "both faces of the collection";

  std::vector<uint8_t> noise(4096);
  std::mt19937 random(7);
  for (auto& b : noise) b = static_cast<uint8_t>(random());
  std::vector<uint8_t> headless = good;
  std::fill(headless.begin(), headless.begin() + 12, 0);
  const std::vector<uint8_t> cut(good.begin(), good.begin() + 64);
  EXPECT_EQ(system.addFontFile(writeFile("noise.ttf", noise)), 0);
  EXPECT_EQ(system.addFontFile(writeFile("headless.ttf", headless)), 0);
  EXPECT_EQ(system.addFontFile(writeFile("cut.ttf", cut)), 0);
  EXPECT_EQ(system.addFontFile(writeFile("empty.ttf", {})), 0);
  EXPECT_EQ(system.addFontFile(testing::TempDir() + "not-there.ttf"), 0);
  EXPECT_EQ(system.addedFamilies(),
            (std::vector<std::string>{kLatin, kCjk, "WenQuanYi Micro Hei Mono"}));
}

}  // namespace
}  // namespace vostan::font
