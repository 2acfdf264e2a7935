#pragma once
// A font of the system, or one added from a file, as Java's text engine uses
// it: line metrics, the metrics of one character, and one character drawn
// into a canvas and uploaded to the bound texture. A second, alternate font
// catches the characters the main one lacks and shares its canvas.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/font/font_system.h"

namespace vostan::font {

// Creation flags from Java.
constexpr int32_t kBold = 1;
constexpr int32_t kAntiAliased = 32;
constexpr int32_t kOutlined = 64;

// The values written into Java's character object.
struct CharacterMetrics {
  float ascent = 0, descent = 0, advance = 0, lsb = 0;
  int32_t cwidth = 0, cheight = 0, cy = 0;
};

// Where a drawn character goes: the texture bound when it is drawn.
struct TextureTarget {
  bool present = false;
  int32_t width = 0, height = 0;
  // Receives `width` by `height` pixels, bytes red, green, blue, alpha.
  void (*upload)(void* context, int32_t x, int32_t y, int32_t width, int32_t height,
                 const void* rgba) = nullptr;
  void* context = nullptr;
};

// The glyph bytes and the pixels of one font and its alternate, allocated
// once: drawing a character allocates nothing.
struct Canvas {
  std::vector<uint8_t> glyphs;
  std::vector<uint32_t> pixels;
  std::vector<uint32_t> haloSums;
};

class SystemFont {
 public:
  // Without a face (a family that is not there) the font measures and draws
  // nothing. With a `base`, the font takes over its canvas and glyph format.
  SystemFont(std::unique_ptr<platform::FontFace> face, int32_t flags, const SystemFont* base);

  // Whether the main font itself shows `c`.
  bool hasCharacter(char16_t c) const;
  // Fills `out`; sets `useAlt` when the alternate font gives the character
  // (never clears it).
  void initCharacter(char16_t c, CharacterMetrics& out, bool& useAlt) const;
  // Draws `c` into the canvas and uploads the `width` by `height` rectangle
  // to (x, y) of the target. Requests larger than the canvas draw nothing.
  void createCache(char16_t c, int32_t x, int32_t y, int32_t width, int32_t height, bool useAlt,
                   const TextureTarget& target);

  platform::FontLineMetrics textMetric;
  int32_t canvasWidth = 0, canvasHeight = 0, canvasPixels = 0;
  platform::GlyphFormat glyphFormat = platform::GlyphFormat::bitmap;
  bool outlined = false;
  SystemFont* altFont = nullptr;
  int32_t altParamA = 0, altParamB = 0;

 private:
  std::unique_ptr<platform::FontFace> face_;
  std::shared_ptr<Canvas> canvas_;
};

// The halo of outlined fonts, in place over `width` by `height` pixels with
// alpha in the top byte; `sums` is scratch space of (width + kHaloMargin)
// times (height + kHaloMargin).
constexpr int32_t kHaloMargin = 7;
void drawHalo(uint32_t* pixels, uint32_t* sums, int32_t width, int32_t height);

}  // namespace vostan::font
