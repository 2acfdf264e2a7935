#pragma once
// Fonts as the system font code sees them: faces found by family name, or
// added from a file for this process only, with their line metrics, the
// characters they cover and their glyphs, drawn as 65-level gray or one-bit
// bitmaps in the row layout of a Windows glyph outline query. Backends:
// FreeType with fontconfig (real) and a scriptable double for tests.
#include <cstdint>
#include <memory>
#include <string>

namespace vostan::platform {

// In whole pixels. `height` is `ascent` plus `descent`.
struct FontLineMetrics {
  int32_t height = 0, ascent = 0, descent = 0, maxCharWidth = 0;
};

// The inked box of a glyph and where it lies from the pen, y upwards.
struct GlyphBox {
  uint32_t blackBoxX = 0, blackBoxY = 0;
  int32_t originX = 0, originY = 0;  // left and top edge of the box
  int32_t cellIncX = 0;              // advance
};

enum class GlyphFormat : int32_t {
  bitmap = 1,  // rows of bits, most significant first, padded to 32 bits
  gray = 6,    // rows of levels 0 to 64, padded to 4 bytes
};

class FontFace {
 public:
  virtual ~FontFace() = default;
  virtual FontLineMetrics lineMetrics() const = 0;
  // Whether the face's character map holds `c`.
  virtual bool covers(char16_t c) const = 0;
  // The glyph that shows `c`; missingGlyph() when the face has none.
  virtual uint32_t glyphIndex(char16_t c) const = 0;
  virtual uint32_t missingGlyph() const = 0;
  // Measures the glyph of `c` into `box` and, with a buffer, draws it there.
  // Returns the bytes the drawn glyph takes (0 for a glyph with no ink), or
  // -1 when the glyph fails or, with a buffer, does not fit into `size`.
  virtual int32_t glyph(char16_t c, GlyphFormat format, GlyphBox& box, uint8_t* buffer,
                        uint32_t size) = 0;
};

struct FontRequest {
  std::string family;  // UTF-8
  // Above 0: the cell height, ascent plus descent; below 0: the em height;
  // 0: a default size.
  int32_t height = 0;
  bool bold = false;
};

class FontSystem {
 public:
  virtual ~FontSystem() = default;
  // A face of the family, added or installed; null when there is none.
  virtual std::unique_ptr<FontFace> open(const FontRequest& request) = 0;
  // Makes the faces of a font file available to this process; the number of
  // faces added, 0 for a file that holds no usable font.
  virtual int32_t addFontFile(const std::string& path) = 0;
};

}  // namespace vostan::platform
