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
  canvasWidth =
      antiAliased ? roundUp(textMetric.maxCharWidth, 4) + 2 : roundUp(textMetric.maxCharWidth, 32);
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
  canvas_->haloSums.resize(static_cast<size_t>(canvasWidth + kHaloMargin) *
                           static_cast<size_t>(canvasHeight + kHaloMargin));
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
  // Only rows `width` apart up to the canvas's height are ever uploaded or
  // read by the halo, so the rest of the canvas need not be cleared.
  std::fill_n(pixels, std::min<int64_t>(size, int64_t{width} * canvasHeight), kTransparentWhite);

  GlyphBox box;
  const int32_t result =
      font.face_->glyph(c, font.glyphFormat, box, glyphs, static_cast<uint32_t>(size));
  if (result < 1 || box.blackBoxX == 0) return;

  // Rows are `width` apart in the pixels whatever the glyph's pitch: a wider
  // pitch runs into the next row, which that row then overwrites.
  if (font.glyphFormat == GlyphFormat::gray) {
    const int64_t pitch = (int64_t{box.blackBoxX} + 3) & ~int64_t{3};
    for (int64_t row = 0; row < box.blackBoxY; row++) {
      const int64_t first = row * width;
      if (first >= size) break;
      const uint8_t* levels = glyphs + row * pitch;
      uint32_t* out = pixels + first;
      const int64_t count = std::min(pitch, size - first);
      for (int64_t col = 0; col < count; col++) {
        const uint32_t g = levels[col];
        out[col] = (g < 64 ? g * 4 : 255u) << 24 | 0xFFFFFFu;
      }
    }
  } else {
    const int64_t pitchBits = (int64_t{box.blackBoxX} + 31) & ~int64_t{31};
    if (pitchBits < 8) return;
    // The bytes drawn tell the rows; they stand for `height` from here on
    // (up to the canvas's height: a taller glyph is cut).
    height = static_cast<int32_t>(std::min<int64_t>(result / (pitchBits / 8), canvasHeight));
    for (int64_t row = 0; row < height; row++)
      for (int64_t bit = 0; bit < pitchBits; bit++) {
        const int64_t at = row * width + bit;
        if (at >= size) break;
        const bool set = (glyphs[row * (pitchBits / 8) + bit / 8] >> (7 - bit % 8)) & 1;
        pixels[at] = set ? 0xFFFFFFFFu : kTransparentWhite;
      }
  }
  if (font.outlined) drawHalo(pixels, canvas.haloSums.data(), width, height);

  if (!target.present || !target.upload) return;
  if (x < 0 || y < 0 || int64_t{x} + width > target.width || int64_t{y} + height > target.height)
    return;
  target.upload(target.context, x, y, width, height, pixels);
}

void drawHalo(uint32_t* pixels, uint32_t* sums, int32_t width, int32_t height) {
  // Box sums of the alpha bytes from a table of running sums over the image
  // with a margin of zeros, 5 wide on the top and left and 1 on the other
  // sides, so that no box needs clipping. The table wraps around for large
  // images, but the difference of four entries, a sum of at most 36 bytes,
  // comes out right.
  const size_t stride = static_cast<size_t>(width) + kHaloMargin;
  const size_t rows = static_cast<size_t>(height) + kHaloMargin;
  std::fill(sums, sums + 6 * stride, 0u);
  for (size_t y = 6; y < rows; y++) {
    uint32_t* row = sums + y * stride;
    const uint32_t* above = row - stride;
    const uint32_t* source = pixels + (y - 6) * width;
    const bool inside = y < rows - 1;
    uint32_t run = 0;
    for (size_t x = 0; x < stride; x++) {
      if (inside && x >= 6 && x < stride - 1) run += alphaOf(source[x - 6]);
      row[x] = above[x] + run;
    }
  }
  // Sums of the image's alpha over columns [x0, x1) and rows [y0, y1), in
  // image coordinates from -5 up to the far edge plus 1.
  auto box = [&](int32_t x0, int32_t y0, int32_t x1, int32_t y1) -> uint32_t {
    const uint32_t* r0 = sums + static_cast<size_t>(y0 + 5) * stride + 5;
    const uint32_t* r1 = sums + static_cast<size_t>(y1 + 5) * stride + 5;
    return r1[x1] - r1[x0] - r0[x1] + r0[x0];
  };
  for (int32_t py = 0; py < height; py++)
    for (int32_t px = 0; px < width; px++) {
      uint32_t& out = pixels[static_cast<size_t>(py) * width + px];
      // The glyph's body, moved down and right.
      const uint32_t a = box(px - 3, py - 3, px - 1, py - 1);
      if (a >= 1) {
        const uint32_t v = std::min(a, 255u);
        out = 0xFF000000u | v << 16 | v << 8 | v;
        continue;
      }
      // Around it, a dark edge as strong as the ink nearby.
      out = std::min(box(px - 5, py - 5, px + 1, py + 1), 255u) << 24;
    }
}

}  // namespace vostan::font
