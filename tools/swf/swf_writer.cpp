#include "swf_writer.h"

#include <zlib.h>

#include <stdexcept>

namespace swf {

int sbitsFor(std::initializer_list<int32_t> values) {
  int n = 1;
  for (int32_t v : values) {
    int need = 1;
    while (need < 32 && !(v >= -(int64_t(1) << (need - 1)) && v < (int64_t(1) << (need - 1))))
      need++;
    n = std::max(n, need);
  }
  return n;
}

int ubitsFor(uint32_t value) {
  int n = 0;
  while (n < 32 && (value >> n) != 0) n++;
  return n;
}

void Writer::bits(uint32_t value, int n) {
  for (int i = n - 1; i >= 0; i--) {
    if (bitPos_ == 0) bytes.push_back(0);
    if ((value >> i) & 1) bytes.back() |= uint8_t(0x80 >> bitPos_);
    bitPos_ = (bitPos_ + 1) & 7;
  }
}

void Writer::align() {
  bitPos_ = 0;
}

void Writer::u8(uint32_t v) {
  align();
  bytes.push_back(uint8_t(v));
}

void Writer::u16(uint32_t v) {
  u8(v & 255);
  u8((v >> 8) & 255);
}

void Writer::u32(uint32_t v) {
  u16(v & 0xffff);
  u16(v >> 16);
}

void Writer::rgb(uint8_t r, uint8_t g, uint8_t b) {
  u8(r);
  u8(g);
  u8(b);
}

void Writer::rgba(uint8_t r, uint8_t g, uint8_t b, uint8_t a) {
  rgb(r, g, b);
  u8(a);
}

void Writer::string(const std::string& s) {
  for (char c : s) u8(uint8_t(c));
  u8(0);
}

void Writer::raw(const Bytes& b) {
  align();
  bytes.insert(bytes.end(), b.begin(), b.end());
}

void Writer::rect(int32_t xMin, int32_t xMax, int32_t yMin, int32_t yMax) {
  align();
  int n = sbitsFor({xMin, xMax, yMin, yMax});
  bits(n, 5);
  sbits(xMin, n);
  sbits(xMax, n);
  sbits(yMin, n);
  sbits(yMax, n);
  align();
}

void Writer::matrix(const Matrix& m) {
  align();
  bits(m.scale ? 1 : 0, 1);
  if (m.scale) {
    int n = sbitsFor({m.scale->first, m.scale->second});
    bits(n, 5);
    sbits(m.scale->first, n);
    sbits(m.scale->second, n);
  }
  bits(m.rotate ? 1 : 0, 1);
  if (m.rotate) {
    int n = sbitsFor({m.rotate->first, m.rotate->second});
    bits(n, 5);
    sbits(m.rotate->first, n);
    sbits(m.rotate->second, n);
  }
  int n = (m.tx == 0 && m.ty == 0) ? 0 : sbitsFor({m.tx, m.ty});
  bits(n, 5);
  sbits(m.tx, n);
  sbits(m.ty, n);
  align();
}

void Writer::cxform(const Cxform& c, bool alpha) {
  align();
  int n = 1;
  for (const auto* v : {&c.mul, &c.add})
    if (*v)
      for (int32_t x : **v) n = std::max(n, sbitsFor({x}));
  bits(c.add ? 1 : 0, 1);
  bits(c.mul ? 1 : 0, 1);
  bits(n, 4);
  size_t count = alpha ? 4 : 3;
  for (const auto* v : {&c.mul, &c.add}) {
    if (!*v) continue;
    if ((*v)->size() < count) throw std::logic_error("cxform needs more values");
    for (size_t i = 0; i < count; i++) sbits((**v)[i], n);
  }
  align();
}

void Writer::styleChange(int fillBits, int lineBits,
                         std::optional<std::pair<int32_t, int32_t>> move,
                         std::optional<uint32_t> fill0, std::optional<uint32_t> fill1,
                         std::optional<uint32_t> line) {
  bits(0, 1);
  bits(0, 1);  // new styles
  bits(line ? 1 : 0, 1);
  bits(fill1 ? 1 : 0, 1);
  bits(fill0 ? 1 : 0, 1);
  bits(move ? 1 : 0, 1);
  if (move) {
    int n = sbitsFor({move->first, move->second});
    bits(n, 5);
    sbits(move->first, n);
    sbits(move->second, n);
  }
  if (fill0) bits(*fill0, fillBits);
  if (fill1) bits(*fill1, fillBits);
  if (line) bits(*line, lineBits);
}

void Writer::lineEdge(int32_t dx, int32_t dy) {
  int n = std::max(2, sbitsFor({dx, dy}));
  bits(1, 1);
  bits(1, 1);
  bits(n - 2, 4);
  if (dx != 0 && dy != 0) {
    bits(1, 1);
    sbits(dx, n);
    sbits(dy, n);
  } else {
    bits(0, 1);
    bits(dx == 0 ? 1 : 0, 1);
    sbits(dx == 0 ? dy : dx, n);
  }
}

void Writer::curveEdge(int32_t cdx, int32_t cdy, int32_t adx, int32_t ady) {
  int n = std::max(2, sbitsFor({cdx, cdy, adx, ady}));
  bits(1, 1);
  bits(0, 1);
  bits(n - 2, 4);
  sbits(cdx, n);
  sbits(cdy, n);
  sbits(adx, n);
  sbits(ady, n);
}

void Writer::rectangleRecords(int32_t width, int32_t height) {
  bits(1, 4);
  bits(0, 4);
  styleChange(1, 0, std::make_pair(0, 0), std::nullopt, 1u, std::nullopt);
  lineEdge(width, 0);
  lineEdge(0, height);
  lineEdge(-width, 0);
  lineEdge(0, -height);
  endShape();
}

void Writer::endShape() {
  bits(0, 6);
  align();
}

Bytes block(int type, const Bytes& payload, bool forceLong) {
  Writer w;
  if (payload.size() < 63 && !forceLong) {
    w.u16(uint32_t(type << 6) | uint32_t(payload.size()));
  } else {
    w.u16(uint32_t(type << 6) | 63);
    w.u32(uint32_t(payload.size()));
  }
  w.raw(payload);
  return w.bytes;
}

Bytes movie(const Bytes& body, const MovieOptions& o) {
  Writer rest;
  rest.rect(o.xMin, o.xMax, o.yMin, o.yMax);
  rest.u8(o.rateFraction);
  rest.u8(o.rate);
  rest.u16(o.frames);
  rest.raw(body);
  Writer w;
  w.u8(o.compressed ? 'C' : 'F');
  w.u8('W');
  w.u8('S');
  w.u8(uint32_t(o.version));
  w.u32(uint32_t(rest.bytes.size() + 8));
  if (!o.compressed) {
    w.raw(rest.bytes);
    return w.bytes;
  }
  uLongf packedSize = compressBound(uLong(rest.bytes.size()));
  Bytes packed(packedSize);
  if (compress(packed.data(), &packedSize, rest.bytes.data(), uLong(rest.bytes.size())) != Z_OK)
    throw std::runtime_error("compress failed");
  packed.resize(packedSize);
  w.raw(packed);
  return w.bytes;
}

Bytes showFrame() {
  return block(1, {});
}

Bytes end() {
  return block(0, {});
}

Bytes setBackground(uint8_t r, uint8_t g, uint8_t b) {
  return block(9, {r, g, b});
}

Bytes frameLabel(const std::string& label) {
  Writer w;
  w.string(label);
  return block(43, w.bytes);
}

Bytes removeObject(int id, int depth) {
  Writer w;
  w.u16(uint32_t(id));
  w.u16(uint32_t(depth));
  return block(5, w.bytes);
}

Bytes removeObject2(int depth) {
  Writer w;
  w.u16(uint32_t(depth));
  return block(28, w.bytes);
}

Bytes placeObject(int id, int depth, const Matrix& m, std::optional<Cxform> cx) {
  Writer w;
  w.u16(uint32_t(id));
  w.u16(uint32_t(depth));
  w.matrix(m);
  if (cx) w.cxform(*cx, false);
  return block(4, w.bytes);
}

Bytes placeObject2(const Place& p) {
  Writer w;
  uint32_t flags = (p.move ? 1 : 0) | (p.id ? 2 : 0) | (p.matrix ? 4 : 0) | (p.cxform ? 8 : 0) |
                   (p.ratio ? 16 : 0) | (p.name ? 32 : 0) | (p.clipDepth ? 64 : 0);
  w.u8(flags);
  w.u16(uint32_t(p.depth));
  if (p.id) w.u16(uint32_t(*p.id));
  if (p.matrix) w.matrix(*p.matrix);
  if (p.cxform) w.cxform(*p.cxform, true);
  if (p.ratio) w.u16(uint32_t(*p.ratio));
  if (p.name) w.string(*p.name);
  if (p.clipDepth) w.u16(uint32_t(*p.clipDepth));
  return block(26, w.bytes);
}

Bytes defineSprite(int id, int frames, const Bytes& blocks) {
  Writer w;
  w.u16(uint32_t(id));
  w.u16(uint32_t(frames));
  w.raw(blocks);
  return block(39, w.bytes, true);
}

Bytes shapeStyles(int type, const std::vector<Solid>& fills, const std::vector<Line>& lines) {
  Writer w;
  auto count = [&w](size_t n) {
    if (n < 255) {
      w.u8(uint32_t(n));
    } else {
      w.u8(255);
      w.u16(uint32_t(n));
    }
  };
  count(fills.size());
  for (const Solid& f : fills) {
    w.u8(0);
    if (type == 32)
      w.rgba(f.r, f.g, f.b, f.a);
    else
      w.rgb(f.r, f.g, f.b);
  }
  count(lines.size());
  for (const Line& l : lines) {
    w.u16(l.width);
    if (type == 32)
      w.rgba(l.colour.r, l.colour.g, l.colour.b, l.colour.a);
    else
      w.rgb(l.colour.r, l.colour.g, l.colour.b);
  }
  return w.bytes;
}

Bytes defineShape(int type, int id, const Writer& body) {
  Writer w;
  w.u16(uint32_t(id));
  w.raw(body.bytes);
  return block(type, w.bytes, true);
}

Bytes defineMorphShape(int id, const std::vector<MorphFill>& fills,
                       const std::vector<MorphLine>& lines, const Writer& startEdges,
                       const Writer& endEdges, std::array<int32_t, 4> bounds) {
  Writer styles;
  styles.u8(uint32_t(fills.size()));
  for (const MorphFill& f : fills) {
    styles.u8(0);
    styles.rgba(f.start.r, f.start.g, f.start.b, f.start.a);
    styles.rgba(f.end.r, f.end.g, f.end.b, f.end.a);
  }
  styles.u8(uint32_t(lines.size()));
  for (const MorphLine& l : lines) {
    styles.u16(l.start.width);
    styles.u16(l.end.width);
    styles.rgba(l.start.colour.r, l.start.colour.g, l.start.colour.b, l.start.colour.a);
    styles.rgba(l.end.colour.r, l.end.colour.g, l.end.colour.b, l.end.colour.a);
  }
  Writer w;
  w.u16(uint32_t(id));
  w.rect(bounds[0], bounds[1], bounds[2], bounds[3]);
  w.rect(bounds[0], bounds[1], bounds[2], bounds[3]);
  w.u32(uint32_t(styles.bytes.size() + startEdges.bytes.size()));
  w.raw(styles.bytes);
  w.raw(startEdges.bytes);
  w.raw(endEdges.bytes);
  return block(46, w.bytes, true);
}

Writer closedPolygon(const std::vector<std::pair<int32_t, int32_t>>& p, bool filled) {
  Writer w;
  w.bits(filled ? 1 : 0, 4);
  w.bits(0, 4);
  w.styleChange(filled ? 1 : 0, 0, p[0], std::nullopt,
                filled ? std::optional<uint32_t>(1u) : std::nullopt, std::nullopt);
  for (size_t i = 1; i <= p.size(); i++)
    w.lineEdge(p[i % p.size()].first - p[i - 1].first, p[i % p.size()].second - p[i - 1].second);
  w.endShape();
  return w;
}

Writer glyphRectangle(int32_t x, int32_t y, int32_t width, int32_t height) {
  return closedPolygon({{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}});
}

Bytes defineFont(int id, const std::vector<Writer>& glyphs) {
  Writer w;
  w.u16(uint32_t(id));
  uint32_t offset = uint32_t(glyphs.size() * 2);
  for (const Writer& g : glyphs) {
    w.u16(offset);
    offset += uint32_t(g.bytes.size());
  }
  for (const Writer& g : glyphs) w.raw(g.bytes);
  return block(10, w.bytes, true);
}

Bytes defineFont2(int id, const Font2& f) {
  Writer w;
  w.u16(uint32_t(id));
  const bool layout = !f.advances.empty();
  w.u8((layout ? 128 : 0) | (f.wideOffsets ? 8 : 0) | (f.wideCodes ? 4 : 0));
  w.u8(0);  // language
  w.u8(4);
  w.raw({'T', 'e', 's', 't'});
  w.u16(uint32_t(f.glyphs.size()));
  const uint32_t entry = f.wideOffsets ? 4 : 2;
  uint32_t offset = uint32_t(f.glyphs.size() + 1) * entry;
  auto put = [&](uint32_t v) { f.wideOffsets ? w.u32(v) : w.u16(v); };
  for (const Writer& g : f.glyphs) {
    put(offset);
    offset += uint32_t(g.bytes.size());
  }
  put(offset);
  for (const Writer& g : f.glyphs) w.raw(g.bytes);
  auto code = [&](uint32_t c) { f.wideCodes ? w.u16(c) : w.u8(c); };
  for (uint16_t c : f.codes) code(c);
  if (layout) {
    w.u16(800);
    w.u16(200);
    w.u16(0);
    for (int16_t a : f.advances) w.u16(uint16_t(a));
    for (size_t i = 0; i < f.glyphs.size(); i++) w.rect(0, 0, 0, 0);
    w.u16(uint32_t(f.kerning.size()));
    for (const auto& k : f.kerning) {
      code(k[0]);
      code(k[1]);
      w.u16(k[2]);
    }
  }
  return block(48, w.bytes, true);
}

Bytes defineFontInfo(int id, const std::string& name, const std::vector<uint16_t>& codes,
                     bool wideCodes) {
  Writer w;
  w.u16(uint32_t(id));
  w.u8(uint32_t(name.size()));
  for (char c : name) w.u8(uint8_t(c));
  w.u8(wideCodes ? 1 : 0);
  for (uint16_t c : codes) wideCodes ? w.u16(c) : w.u8(c);
  return block(13, w.bytes, true);
}

Bytes defineText(int type, int id, const std::vector<TextRecord>& records, int glyphBits,
                 int advanceBits, const Matrix& m) {
  Writer w;
  w.u16(uint32_t(id));
  w.rect(0, 2000, 0, 2000);
  w.matrix(m);
  w.u8(uint32_t(glyphBits));
  w.u8(uint32_t(advanceBits));
  for (const TextRecord& r : records) {
    w.u8(0x80 | (r.font ? 8 : 0) | (r.colour ? 4 : 0) | (r.y ? 2 : 0) | (r.x ? 1 : 0));
    if (r.font) w.u16(uint32_t(*r.font));
    if (r.colour) {
      if (type == 33)
        w.rgba(r.colour->r, r.colour->g, r.colour->b, r.colour->a);
      else
        w.rgb(r.colour->r, r.colour->g, r.colour->b);
    }
    if (r.x) w.u16(uint16_t(*r.x));
    if (r.y) w.u16(uint16_t(*r.y));
    if (r.font) w.u16(uint32_t(r.height));
    if (r.glyphs.empty()) continue;
    w.u8(uint32_t(r.glyphs.size()));
    for (const auto& [glyph, advance] : r.glyphs) {
      w.bits(glyph, glyphBits);
      w.sbits(advance, advanceBits);
    }
    w.align();
  }
  w.u8(0);
  return block(type, w.bytes, true);
}

Bytes defineEditText(int id, int font, int height, Solid colour, const std::string& text) {
  Writer w;
  w.u16(uint32_t(id));
  w.rect(0, 4000, 0, 400);
  w.u16(0x85);  // has text, has colour, has font
  w.u16(uint32_t(font));
  w.u16(uint32_t(height));
  w.rgba(colour.r, colour.g, colour.b, colour.a);
  w.u8(0);  // align
  for (int i = 0; i < 4; i++) w.u16(0);
  w.string("");
  w.string(text);
  return block(37, w.bytes, true);
}

Bytes concat(std::initializer_list<Bytes> parts) {
  Bytes out;
  for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
  return out;
}

}  // namespace swf

namespace swf {

Bytes placeNew(int depth, int id, const Matrix& m) {
  Place p;
  p.depth = depth;
  p.id = id;
  p.matrix = m;
  return placeObject2(p);
}

}  // namespace swf
