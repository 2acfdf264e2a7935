// Builds SWF byte sequences for tests: a bit writer plus the records the
// movie reader understands, so tests state their input exactly.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace swf {

using Bytes = std::vector<uint8_t>;

struct Matrix {
  std::optional<std::pair<int32_t, int32_t>> scale;   // 16.16 x, y
  std::optional<std::pair<int32_t, int32_t>> rotate;  // 16.16 skew0, skew1
  int32_t tx = 0, ty = 0;                             // twips
};

struct Cxform {
  std::optional<std::vector<int32_t>> mul;  // 3 or 4 values
  std::optional<std::vector<int32_t>> add;
};

// Smallest width that holds every value as a signed field.
int sbitsFor(std::initializer_list<int32_t> values);
int ubitsFor(uint32_t value);

class Writer {
 public:
  Bytes bytes;

  void bits(uint32_t value, int n);
  void sbits(int32_t value, int n) { bits(static_cast<uint32_t>(value), n); }
  void align();
  void u8(uint32_t v);
  void u16(uint32_t v);
  void u32(uint32_t v);
  void rgb(uint8_t r, uint8_t g, uint8_t b);
  void rgba(uint8_t r, uint8_t g, uint8_t b, uint8_t a);
  void string(const std::string& s);
  void raw(const Bytes& b);
  void rect(int32_t xMin, int32_t xMax, int32_t yMin, int32_t yMax);
  void matrix(const Matrix& m);
  void cxform(const Cxform& c, bool alpha);

  // Shape records; the style change takes the current field widths.
  void styleChange(int fillBits, int lineBits, std::optional<std::pair<int32_t, int32_t>> move,
                   std::optional<uint32_t> fill0, std::optional<uint32_t> fill1,
                   std::optional<uint32_t> line);
  void lineEdge(int32_t dx, int32_t dy);
  void curveEdge(int32_t cdx, int32_t cdy, int32_t adx, int32_t ady);
  void endShape();
  // The field widths, then a width by height rectangle from the origin filled
  // on its fill1 side by the first fill style, then the end: a whole shape's
  // records for one fill and no lines.
  void rectangleRecords(int32_t width, int32_t height);

 private:
  int bitPos_ = 0;  // bits used in the last byte, 0 when aligned
};

// One block with its record header; long form when asked or needed.
Bytes block(int type, const Bytes& payload, bool forceLong = false);

struct MovieOptions {
  int version = 8;
  int32_t xMin = 0, xMax = 11000, yMin = 0, yMax = 8000;  // twips
  uint8_t rateFraction = 0, rate = 12;
  uint16_t frames = 1;
  bool compressed = false;
};

// Header plus `body` (blocks, usually ending in an End block).
Bytes movie(const Bytes& body, const MovieOptions& options = {});

// Common blocks.
Bytes showFrame();
Bytes end();
Bytes setBackground(uint8_t r, uint8_t g, uint8_t b);
Bytes frameLabel(const std::string& label);
Bytes removeObject(int id, int depth);
Bytes removeObject2(int depth);
Bytes placeObject(int id, int depth, const Matrix& m, std::optional<Cxform> cx = {});

struct Place {
  int depth = 1;
  std::optional<int> id;
  std::optional<Matrix> matrix;
  std::optional<Cxform> cxform;
  std::optional<int> ratio;
  std::optional<std::string> name;
  std::optional<int> clipDepth;
  bool move = false;
};
Bytes placeObject2(const Place& p);
// A new character at a depth: the usual PlaceObject2.
Bytes placeNew(int depth, int id, const Matrix& m = {});
Bytes defineSprite(int id, int frames, const Bytes& blocks);

// A DefineShape (type 2, 22 or 32) of solid fills and lines, with the given
// record bits written after the style arrays.
struct Solid {
  uint8_t r, g, b, a = 255;
};
struct Line {
  uint16_t width;
  Solid colour;
};
Bytes shapeStyles(int type, const std::vector<Solid>& fills, const std::vector<Line>& lines);
Bytes defineShape(int type, int id, const Writer& boundsAndRecords);

// DefineMorphShape (46): solid fill and line styles as start and end pairs,
// then the start and end edges, each writer beginning with its own field
// widths. The rectangles are the start and end bounds.
struct MorphFill {
  Solid start, end;
};
struct MorphLine {
  Line start, end;
};
Bytes defineMorphShape(int id, const std::vector<MorphFill>& fills,
                       const std::vector<MorphLine>& lines, const Writer& startEdges,
                       const Writer& endEdges, std::array<int32_t, 4> bounds = {0, 100, 0, 100});

// The field widths, a move to the first point, edges around back to it and
// the end: a whole shape's records. `filled` selects fill style 1 on the
// fill1 side; without it there are no styles at all, as in a morph's end.
Writer closedPolygon(const std::vector<std::pair<int32_t, int32_t>>& points, bool filled = true);

// Fonts and text. A glyph is a writer holding its field widths and records
// (see glyphRectangle).
Writer glyphRectangle(int32_t x, int32_t y, int32_t width, int32_t height);
Bytes defineFont(int id, const std::vector<Writer>& glyphs);
struct Font2 {
  std::vector<Writer> glyphs;
  std::vector<uint16_t> codes;                   // one per glyph
  std::vector<int16_t> advances;                 // twips; layout data when not empty
  std::vector<std::array<uint16_t, 3>> kerning;  // code, code, adjustment
  bool wideOffsets = false, wideCodes = false;
};
Bytes defineFont2(int id, const Font2& font);
Bytes defineFontInfo(int id, const std::string& name, const std::vector<uint16_t>& codes,
                     bool wideCodes = false);
struct TextRecord {
  std::optional<int> font;  // with height
  int height = 0;
  std::optional<Solid> colour;
  std::optional<int16_t> x, y;                       // twips
  std::vector<std::pair<uint32_t, int32_t>> glyphs;  // glyph index, advance in twips
};
// DefineText (11) or DefineText2 (33); glyph and advance fields of the given widths.
Bytes defineText(int type, int id, const std::vector<TextRecord>& records, int glyphBits = 8,
                 int advanceBits = 16, const Matrix& m = {});
// DefineEditText (37) with a font, a height in twips, a colour and its text.
Bytes defineEditText(int id, int font, int height, Solid colour, const std::string& text);

Bytes concat(std::initializer_list<Bytes> parts);

}  // namespace swf
