#include "font/system_font.h"

#include <algorithm>
#include <cstring>

namespace vostan::font {

using platform::GlyphBox;
using platform::GlyphFormat;

namespace {

constexpr uint32_t kTransparentWhite = 0x00FFFFFF;
constexpr char16_t kSpace = u' ';

int32_t roundUp(int32_t v, int32_t to) {
  return (v + to - 1) / to * to;
}

uint32_t alphaOf(uint32_t pixel) {
  return pixel >> 24;
}

}  // namespace

SystemFont::SystemFont(std::unique_ptr<platform::FontFace> face, int32_t flags,
                       const SystemFont* base)
    : face_(std::move(face)) {
  if (face_) textMetric = face_->lineMetrics();
  outlined = (flags & kOutlined) != 0;
  if (base) {
    canvasWidth = base->canvasWidth;
    canvasHeight = base->canvasHeight;
    canvasPixels = base->canvasPixels;
    glyphFormat = base->glyphFormat;
    canvas_ = base->canvas_;
    return;
  }
  const bool antiAliased = (flags & kAntiAliased) != 0;
  canvasWidth = antiAliased ? roundUp(textMetric.maxCharWidth, 4) + 2
                            : roundUp(textMetric.maxCharWidth, 32);
  canvasHeight = textMetric.ascent + textMetric.descent + 2;
  if (outlined) {
    // Room for the halo's shift and its edge.
    canvasWidth += 5;
    canvasHeight += 5;
    textMetric.ascent += 3;
    textMetric.descent += 2;
    textMetric.height += 5;
  }
  canvasPixels = canvasWidth * canvasHeight;
  glyphFormat = antiAliased ? GlyphFormat::gray : GlyphFormat::bitmap;
  canvas_ = std::make_shared<Canvas>();
  canvas_->glyphs.resize(static_cast<size_t>(roundUp(canvasPixels, 8)));
  canvas_->pixels.resize(static_cast<size_t>(canvasPixels));
  canvas_->haloSource.resize(static_cast<size_t>(canvasPixels));
}

bool SystemFont::hasCharacter(char16_t c) const {
  return face_ && face_->covers(c);
}

void SystemFont::initCharacter(char16_t c, CharacterMetrics& out, bool& useAlt) const {
  const SystemFont* from = this;
  if (altFont && (!hasCharacter(c) || face_->glyphIndex(c) == face_->missingGlyph())) {
    useAlt = true;
    from = altFont;
  }
  GlyphBox box;
  if (from->face_) from->face_->glyph(c, from->glyphFormat, box, nullptr, 0);
  out.ascent = static_cast<float>(box.originY);
  out.descent = static_cast<float>(static_cast<int64_t>(box.blackBoxY) - box.originY);
  out.advance = static_cast<float>(box.cellIncX);
  out.lsb = static_cast<float>(box.originX);
  out.cwidth = c == kSpace ? 0 : static_cast<int32_t>(box.blackBoxX);
  out.cheight = canvasHeight;
  out.cy = -box.originY;
  if (outlined) {
    out.ascent += 3;
    out.descent += 2;
    out.advance += 5;
    out.lsb += 2;
    out.cwidth += 5;
    out.cy -= 3;
  }
}

void SystemFont::createCache(char16_t c, int32_t x, int32_t y, int32_t width, int32_t height,
                             bool useAlt, const TextureTarget& target) {
  if (c == kSpace) return;
  if (width > canvasWidth || height > canvasHeight || width <= 0 || height <= 0) return;
  SystemFont& font = useAlt && altFont ? *altFont : *this;
  if (!font.face_ || !font.canvas_) return;
  Canvas& canvas = *font.canvas_;
  uint8_t* glyphs = canvas.glyphs.data();
  uint32_t* pixels = canvas.pixels.data();
  const int64_t size = font.canvasPixels;
  std::memset(glyphs, 0, canvas.glyphs.size());
  std::fill(canvas.pixels.begin(), canvas.pixels.end(), kTransparentWhite);

  GlyphBox box;
  const int32_t result =
      font.face_->glyph(c, font.glyphFormat, box, glyphs, static_cast<uint32_t>(size));
  if (result < 1 || box.blackBoxX == 0) return;

  // Rows are `width` apart in the pixels whatever the glyph's pitch: a wider
  // pitch runs into the next row, which that row then overwrites.
  if (font.glyphFormat == GlyphFormat::gray) {
    const int64_t pitch = (int64_t{box.blackBoxX} + 3) & ~int64_t{3};
    for (int64_t row = 0; row < box.blackBoxY; row++)
      for (int64_t col = 0; col < pitch; col++) {
        const int64_t at = row * width + col;
        if (at >= size) break;
        const uint32_t g = glyphs[row * pitch + col];
        pixels[at] = (g < 64 ? g * 4 : 255u) << 24 | 0xFFFFFFu;
      }
  } else {
    const int64_t pitchBits = (int64_t{box.blackBoxX} + 31) & ~int64_t{31};
    if (pitchBits < 8) return;
    // The bytes drawn tell the rows; they stand for `height` from here on.
    height = static_cast<int32_t>(std::min<int64_t>(result / (pitchBits / 8), size / width));
    for (int64_t row = 0; row < height; row++)
      for (int64_t bit = 0; bit < pitchBits; bit++) {
        const int64_t at = row * width + bit;
        if (at >= size) break;
        const bool set = (glyphs[row * (pitchBits / 8) + bit / 8] >> (7 - bit % 8)) & 1;
        pixels[at] = set ? 0xFFFFFFFFu : kTransparentWhite;
      }
  }
  if (font.outlined) drawHalo(pixels, canvas.haloSource.data(), width, height);

  if (!target.present || !target.upload) return;
  if (x < 0 || y < 0 || int64_t{x} + width > target.width || int64_t{y} + height > target.height)
    return;
  target.upload(target.context, x, y, width, height, pixels);
}

void drawHalo(uint32_t* pixels, uint32_t* source, int32_t width, int32_t height) {
  const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
  std::memcpy(source, pixels, count * sizeof(uint32_t));
  auto alpha = [&](int32_t px, int32_t py) -> uint32_t {
    if (px < 0 || py < 0 || px >= width || py >= height) return 0;
    return alphaOf(source[static_cast<size_t>(py) * width + px]);
  };
  for (int32_t py = 0; py < height; py++)
    for (int32_t px = 0; px < width; px++) {
      uint32_t& out = pixels[static_cast<size_t>(py) * width + px];
      // The glyph's body, moved down and right.
      const uint32_t a = alpha(px - 3, py - 3) + alpha(px - 2, py - 3) + alpha(px - 3, py - 2) +
                         alpha(px - 2, py - 2);
      if (a >= 1) {
        const uint32_t v = std::min(a, 255u);
        out = 0xFF000000u | v << 16 | v << 8 | v;
        continue;
      }
      // Around it, a dark edge as strong as the ink nearby.
      uint32_t b = 0;
      for (int32_t sy = py - 5; sy <= py; sy++)
        for (int32_t sx = px - 5; sx <= px; sx++) b += alpha(sx, sy);
      out = std::min(b, 255u) << 24;
    }
}

}  // namespace vostan::font
