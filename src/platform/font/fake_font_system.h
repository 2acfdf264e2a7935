#pragma once
// Implements: families a test defines glyph by glyph (levels, boxes, glyph
// indices), missing families (any family not defined), files that add
// families, and a record of the requests and glyph calls.
// Leaves out: sizes (a face is what the test wrote, whatever the height).
#include <map>
#include <string>
#include <vector>

#include "platform/font/font_system.h"

namespace vostan::platform {

struct FakeGlyph {
  uint32_t index = 1;  // the face's missingGlyph() makes the character unshowable
  GlyphBox box;
  // Gray: levels 0..64, blackBoxX by blackBoxY, row by row without padding.
  // Bitmap: the same grid, nonzero for a set bit.
  std::vector<uint8_t> levels;
};

struct FakeFamily {
  FontLineMetrics metrics;
  uint32_t missingGlyph = 3;
  std::map<char16_t, FakeGlyph> glyphs;  // the characters the face covers
  // Drawn (and measured) for a character the face does not cover.
  FakeGlyph fallback;
};

class FakeFontSystem : public FontSystem {
 public:
  std::map<std::string, FakeFamily> families;
  // What addFontFile adds for a path; any other path adds nothing.
  std::map<std::string, std::map<std::string, FakeFamily>> files;

  std::vector<FontRequest> requests;
  // Characters whose glyphs were asked for, in order, with a buffer or not.
  std::vector<char16_t> measured, drawn;

  std::unique_ptr<FontFace> open(const FontRequest& request) override;
  int32_t addFontFile(const std::string& path) override;
};

}  // namespace vostan::platform
