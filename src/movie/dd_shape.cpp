// The dictionary, shapes, fills, gradients and the shape block reader.
#include <cstring>

#include "movie/dd_character.h"
#include "movie/dd_display.h"
#include "movie/dd_timeline.h"

// Dictionary

ddDictionary* ddDictionary_create() {
  return static_cast<ddDictionary*>(ddCalloc(1, sizeof(ddDictionary)));
}

void ddDictionary_destroy(ddDictionary* dictionary) {
  if (!dictionary) return;
  for (int32_t i = 0; i < dictionary->count; i++)
    if (dictionary->entries[i]) dictionary->entries[i]->destroy(dictionary->entries[i]);
  for (int32_t i = 0; i < dictionary->retiredCount; i++)
    dictionary->retired[i]->destroy(dictionary->retired[i]);
  ddFree(dictionary->entries);
  ddFree(dictionary->retired);
  ddFree(dictionary);
}

void ddDictionary_put(ddTimeline* timeline, int32_t id, ddCharacter* character) {
  ddDictionary* d = timeline->dictionary;
  if (id < 0) {
    if (character) character->destroy(character);
    return;
  }
  if (id >= d->count) {
    d->entries =
        static_cast<ddCharacter**>(ddRealloc(d->entries, size_t(id + 1) * sizeof(ddCharacter*)));
    std::memset(d->entries + d->count, 0, size_t(id + 1 - d->count) * sizeof(ddCharacter*));
    d->count = id + 1;
  }
  ddCharacter* old = d->entries[id];
  if (old && old != character) {
    d->retired = static_cast<ddCharacter**>(
        ddRealloc(d->retired, size_t(d->retiredCount + 1) * sizeof(ddCharacter*)));
    d->retired[d->retiredCount++] = old;
  }
  d->entries[id] = character;
}

ddCharacter* ddDictionary_get(const ddTimeline* timeline, int32_t id) {
  const ddDictionary* d = timeline->dictionary;
  if (id < 0 || id >= d->count) return nullptr;
  return d->entries[id];
}

// Shapes

ddShape* ddShape_create() {
  ddShape* shape = static_cast<ddShape*>(ddCalloc(1, sizeof(ddShape)));
  shape->bounds = ddRect_empty();
  return shape;
}

void ddShape_destroy(ddShape* shape) {
  if (!shape) return;
  for (int32_t i = 0; i < shape->fillCount; i++) {
    const ddFill& f = shape->fills[i];
    if (f.kind == ddFillRadial || f.kind == ddFillLinear) ddGradient_destroy(f.data.gradient);
  }
  ddFree(shape->fills);
  ddFree(shape->records);
  ddFree(shape);
}

ddShapeRecord* ddShape_addRecord(ddShape* shape) {
  if (shape->recordCount == shape->recordCapacity) {
    shape->recordCapacity = shape->recordCapacity ? shape->recordCapacity * 2 : 16;
    shape->records = static_cast<ddShapeRecord*>(
        ddRealloc(shape->records, size_t(shape->recordCapacity) * sizeof(ddShapeRecord)));
  }
  return &shape->records[shape->recordCount++];
}

namespace {

// Widens the bounds by half the line width around a point. The width is in
// twips and the point in ddFixed, so the border is tiny; that is intended.
void widen(ddShape* shape, ddFixed x, ddFixed y) {
  int32_t h = shape->lineWidth / 2;
  ddRect_addPoint(&shape->bounds, ddWrap(int64_t(x) - h), ddWrap(int64_t(y) - h));
  ddRect_addPoint(&shape->bounds, ddWrap(int64_t(x) + h), ddWrap(int64_t(y) + h));
}

void addRecord(ddShape* shape, int32_t type, int32_t a = 0, int32_t b = 0, int32_t c = 0,
               int32_t d = 0) {
  ddShapeRecord* r = ddShape_addRecord(shape);
  r->type = type;
  r->data[0] = a;
  r->data[1] = b;
  r->data[2] = c;
  r->data[3] = d;
}

}  // namespace

void ddShape_moveTo(ddShape* shape, ddFixed x, ddFixed y) {
  addRecord(shape, ddRecordMove, x, y);
  widen(shape, x, y);
}

void ddShape_lineTo(ddShape* shape, ddFixed x, ddFixed y) {
  addRecord(shape, ddRecordLineTo, x, y);
  widen(shape, x, y);
}

void ddShape_curveTo(ddShape* shape, ddFixed cx, ddFixed cy, ddFixed ax, ddFixed ay) {
  addRecord(shape, ddRecordCurveTo, cx, cy, ax, ay);
  widen(shape, cx, cy);
  widen(shape, ax, ay);
  shape->hasCurves = 1;
}

void ddShape_addFill(ddShape* shape, const ddFill& fill) {
  if (shape->fillCount == shape->fillCapacity) {
    shape->fillCapacity = shape->fillCapacity ? shape->fillCapacity * 2 : 8;
    shape->fills =
        static_cast<ddFill*>(ddRealloc(shape->fills, size_t(shape->fillCapacity) * sizeof(ddFill)));
  }
  shape->fills[shape->fillCount++] = fill;
}

void ddShape_finish(ddShape* shape) {
  if (shape->recordCount == 0 || shape->records[shape->recordCount - 1].type != ddRecordEnd)
    addRecord(shape, ddRecordEnd);
}

// Gradients

ddGradient* ddGradient_create() {
  return static_cast<ddGradient*>(ddCalloc(1, sizeof(ddGradient)));
}

void ddGradient_destroy(ddGradient* gradient) {
  if (!gradient) return;
  ddFree(gradient->stops);
  ddFree(gradient);
}

void ddGradient_addStop(ddGradient* g, int ratio, ddColor colour) {
  int32_t i;
  // The stored position is ratio * 256, so this overwrite only ever happens
  // for ratio 0 after a stop at 0.
  if (g->count > 0 && g->stops[g->count - 1].pos == ratio) {
    i = g->count - 1;
  } else {
    g->stops = static_cast<ddGradientStop*>(
        ddRealloc(g->stops, size_t(g->count + 1) * sizeof(ddGradientStop)));
    i = g->count++;
    std::memset(&g->stops[i], 0, sizeof(ddGradientStop));
  }
  ddGradient_writeStop(g, i, ratio, colour);
}

void ddGradient_writeStop(ddGradient* g, int32_t i, int ratio, ddColor colour) {
  ddGradientStop& s = g->stops[i];
  s.pos = static_cast<uint16_t>(ratio * 256);
  s.red = colour & 255;
  s.green = (colour >> 8) & 255;
  s.blue = (colour >> 16) & 255;
  s.alpha = colour >> 24;
  if (i > 0 && s.pos != g->stops[i - 1].pos) {
    ddGradientStop& p = g->stops[i - 1];
    int32_t span = int32_t(s.pos) - int32_t(p.pos);
    p.dRed = (int32_t(s.red) - p.red) * 65536 / span;
    p.dGreen = (int32_t(s.green) - p.green) * 65536 / span;
    p.dBlue = (int32_t(s.blue) - p.blue) * 65536 / span;
    p.dAlpha = (int32_t(s.alpha) - p.alpha) * 65536 / span;
  }
}

ddColor ddGradient_colorAt(ddGradient* g, int32_t p) {
  // A gradient whose block lists no stops paints as other players show it.
  if (g->count <= 0) return 0xff000000u;
  if (g->cursor < 0 || g->cursor >= g->count) g->cursor = 0;
  while (g->cursor > 0 && g->stops[g->cursor].pos > p) g->cursor--;
  while (g->cursor < g->count - 1 && g->stops[g->cursor + 1].pos < p) g->cursor++;
  const ddGradientStop& s = g->stops[g->cursor];
  int64_t d = int64_t(p) - s.pos;
  if (g->cursor == g->count - 1 || d <= 0)
    return ddColor(s.red) | (ddColor(s.green) << 8) | (ddColor(s.blue) << 16) |
           (ddColor(s.alpha) << 24);
  auto channel = [d](uint8_t c, int32_t delta) { return ddColor((c + ((delta * d) >> 16)) & 255); };
  return channel(s.red, s.dRed) | (channel(s.green, s.dGreen) << 8) |
         (channel(s.blue, s.dBlue) << 16) | (channel(s.alpha, s.dAlpha) << 24);
}

// Style arrays

namespace {

constexpr int kMorphBlock = 46;

int32_t readCount(ddStream* s) {
  int32_t n = ddStream_readU8(s);
  if (n == 255) n = ddStream_readU16(s);
  return n;
}

bool hasAlpha(int blockType) {
  return blockType == 32 || blockType == kMorphBlock;
}

ddColor readColor(ddStream* s, int blockType) {
  return hasAlpha(blockType) ? ddStream_readRGBA(s) : ddStream_readRGB(s);
}

// A colour read from zeros: opaque black without alpha, transparent with it.
ddColor zeroColor(int blockType) {
  return hasAlpha(blockType) ? 0 : 0xff000000u;
}

// Once the stream is exhausted the remaining styles of an array can only read
// as zeros; they are made without the byte-by-byte reads, which a hostile
// count would otherwise multiply.
void passZeros(ddStream* s, int64_t bytes) {
  s->bitCount = 0;
  s->pos += uint64_t(bytes);
}

// The gradient square of +-16384 twips spans +-65280 gradient units.
ddMatrix gradientMatrix(ddStream* s) {
  ddMatrix m = ddStream_readMatrix(s);
  auto scale = [](int32_t v) { return ddWrap((int64_t(v) * 13159) >> 10); };
  m.a = scale(m.a);
  m.b = scale(m.b);
  m.c = scale(m.c);
  m.d = scale(m.d);
  return m;
}

// Bitmap matrices are in twips per pixel.
void bitmapMatrix(ddMatrix* m) {
  m->a /= 20;
  m->b /= 20;
  m->c /= 20;
  m->d /= 20;
}

ddFill solid(ddColor c) {
  ddFill f;
  std::memset(&f, 0, sizeof f);
  f.kind = ddFillSolid;
  f.data.color = c;
  f.matrix = ddMatrixIdentity;
  return f;
}

}  // namespace

void ddStream_readFillArray(ddStream* s, ddTimeline* timeline, int blockType, ddShape* shape,
                            ddShape* secondShape) {
  bool morph = blockType == kMorphBlock;
  int32_t count = readCount(s);
  int colourBytes = hasAlpha(blockType) ? 4 : 3;
  for (int32_t i = 0; i < count; i++) {
    if (ddStream_exhausted(s)) {
      passZeros(s, 1 + colourBytes * (morph ? 2 : 1));
      ddShape_addFill(shape, solid(zeroColor(blockType)));
      if (morph && secondShape) ddShape_addFill(secondShape, solid(zeroColor(blockType)));
      continue;
    }
    int type = ddStream_readU8(s);
    // `second` holds the end values of a morph style and is unused otherwise.
    ddFill fill = solid(0), second = solid(0);
    switch (type) {
      case 0x00:
        fill = solid(readColor(s, blockType));
        if (morph) second = solid(readColor(s, blockType));
        break;
      case 0x10:
      case 0x12: {
        fill.kind = type == 0x10 ? ddFillLinear : ddFillRadial;
        fill.matrix = gradientMatrix(s);
        fill.data.gradient = ddGradient_create();
        if (morph) {
          second.kind = fill.kind;
          second.matrix = gradientMatrix(s);
          second.data.gradient = ddGradient_create();
        }
        int stops = ddStream_readU8(s);
        for (int k = 0; k < stops; k++) {
          int ratio = ddStream_readU8(s);
          ddGradient_addStop(fill.data.gradient, ratio, readColor(s, blockType));
          if (morph) {
            int endRatio = ddStream_readU8(s);
            ddGradient_addStop(second.data.gradient, endRatio, readColor(s, blockType));
          }
        }
        break;
      }
      case 0x40:
      case 0x41:
      case 0x42:
      case 0x43: {
        int32_t id = ddStream_readS16(s);
        ddMatrix m = ddStream_readMatrix(s);
        ddCharacter* c = id >= 0 ? ddDictionary_get(timeline, id) : nullptr;
        if (c && c->type == ddCharacterBitmap) {
          // A morph's end matrix is read only for a bitmap that exists.
          ddMatrix endMatrix = morph ? ddStream_readMatrix(s) : m;
          ddSurface* bitmap = reinterpret_cast<ddBitmapCharacter*>(c)->surface;
          fill.kind = type == 0x40 ? ddFillTiledBitmap : ddFillClippedBitmap;
          fill.data.bitmap = bitmap;
          bitmapMatrix(&m);
          fill.matrix = m;
          if (morph) {
            second.kind = fill.kind;
            second.data.bitmap = bitmap;
            bitmapMatrix(&endMatrix);
            second.matrix = endMatrix;
          }
        } else if (c) {
          ddWarn("Requested character id is not a bitmap");
        }
        break;
      }
      default:
        ddFatal("Unknown fill type: %i", type);
    }
    ddShape_addFill(shape, fill);
    if (!morph) continue;
    if (secondShape)
      ddShape_addFill(secondShape, second);
    else if (second.kind == ddFillRadial || second.kind == ddFillLinear)
      ddGradient_destroy(second.data.gradient);
  }
}

void ddLineArray_destroy(ddLineArray* lines) {
  if (!lines) return;
  ddFree(lines->styles);
  ddFree(lines);
}

ddLineArray* ddStream_readLineArray(ddStream* s, int blockType, ddLineArray** secondLines) {
  bool morph = blockType == kMorphBlock;
  int32_t count = readCount(s);
  ddLineArray* lines = static_cast<ddLineArray*>(ddCalloc(1, sizeof(ddLineArray)));
  lines->count = count;
  lines->styles = static_cast<ddLineStyle*>(ddCalloc(size_t(count) + 1, sizeof(ddLineStyle)));
  ddLineArray* second = nullptr;
  if (morph) {
    second = static_cast<ddLineArray*>(ddCalloc(1, sizeof(ddLineArray)));
    second->count = count;
    second->styles = static_cast<ddLineStyle*>(ddCalloc(size_t(count) + 1, sizeof(ddLineStyle)));
  }
  for (int32_t i = 0; i < count; i++) {
    if (ddStream_exhausted(s)) {
      int32_t rest = count - i;
      passZeros(s, int64_t(rest) * (morph ? 4 + 2 * 4 : 2 + (hasAlpha(blockType) ? 4 : 3)));
      for (; i < count; i++) {
        lines->styles[i] = ddLineStyle{0, zeroColor(blockType)};
        if (morph) second->styles[i] = ddLineStyle{0, zeroColor(blockType)};
      }
      break;
    }
    lines->styles[i].width = ddStream_readU16(s);
    if (morph) {
      second->styles[i].width = ddStream_readU16(s);
      lines->styles[i].color = readColor(s, blockType);
      second->styles[i].color = readColor(s, blockType);
    } else {
      lines->styles[i].color = readColor(s, blockType);
    }
  }
  if (secondLines) {
    ddLineArray_destroy(*secondLines);
    *secondLines = second;
  } else {
    ddLineArray_destroy(second);
  }
  return lines;
}

// Shape blocks

bool ddStream_readEdge(ddStream* s, int32_t* cx, int32_t* cy) {
  bool straight = ddStream_readBits(s, 1);
  int w = int(ddStream_readBits(s, 4)) + 2;
  if (straight) {
    if (ddStream_readBits(s, 1)) {
      s->curX = ddWrap(int64_t(s->curX) + ddStream_readSBits(s, w));
      s->curY = ddWrap(int64_t(s->curY) + ddStream_readSBits(s, w));
    } else if (ddStream_readBits(s, 1)) {
      s->curY = ddWrap(int64_t(s->curY) + ddStream_readSBits(s, w));
    } else {
      s->curX = ddWrap(int64_t(s->curX) + ddStream_readSBits(s, w));
    }
    return true;
  }
  int32_t cdx = ddStream_readSBits(s, w), cdy = ddStream_readSBits(s, w);
  int32_t adx = ddStream_readSBits(s, w), ady = ddStream_readSBits(s, w);
  *cx = ddWrap(int64_t(s->curX) + cdx);
  *cy = ddWrap(int64_t(s->curY) + cdy);
  s->curX = ddWrap(int64_t(*cx) + adx);
  s->curY = ddWrap(int64_t(*cy) + ady);
  return false;
}

namespace {

void shapeDestroy(ddCharacter* c) {
  ddShapeCharacter* sc = reinterpret_cast<ddShapeCharacter*>(c);
  ddShape_destroy(sc->shape);
  ddFree(sc);
}

struct RecordReader {
  ddStream* s;
  ddTimeline* timeline;
  int blockType;
  ddShape* shape;
  ddLineArray* lines;
  int fillBits;
  int lineBits;
  int32_t fillBase;
};

void readEdge(RecordReader& r) {
  int32_t cx, cy;
  ddStream* s = r.s;
  if (ddStream_readEdge(s, &cx, &cy))
    ddShape_lineTo(r.shape, ddFixed_fromTwips(s->curX), ddFixed_fromTwips(s->curY));
  else
    ddShape_curveTo(r.shape, ddFixed_fromTwips(cx), ddFixed_fromTwips(cy),
                    ddFixed_fromTwips(s->curX), ddFixed_fromTwips(s->curY));
}

// One record; false at the end of the shape.
bool readRecord(RecordReader& r) {
  ddStream* s = r.s;
  if (ddStream_readBits(s, 1)) {
    readEdge(r);
    return true;
  }
  uint32_t flags = ddStream_readBits(s, 5);
  if (flags == 0) return false;
  if (flags & 1) {
    int w = int(ddStream_readBits(s, 5));
    s->curX = ddStream_readSBits(s, w);
    s->curY = ddStream_readSBits(s, w);
    // A move to the origin that also sets both fills and the line opens a
    // new group of edges.
    if (s->curX == 0 && s->curY == 0 && (flags & 14) == 14)
      addRecord(r.shape, ddRecordGroup);
    else
      ddShape_moveTo(r.shape, ddFixed_fromTwips(s->curX), ddFixed_fromTwips(s->curY));
  }
  if (flags & 2) {
    uint32_t v = ddStream_readBits(s, r.fillBits);
    addRecord(r.shape, ddRecordFill0, v == 0 ? -1 : ddWrap(int64_t(r.fillBase) + v - 1));
  }
  if (flags & 4) {
    uint32_t v = ddStream_readBits(s, r.fillBits);
    addRecord(r.shape, ddRecordFill1, v == 0 ? -1 : ddWrap(int64_t(r.fillBase) + v - 1));
  }
  if (flags & 8) {
    uint32_t v = ddStream_readBits(s, r.lineBits);
    ddLineStyle style = {0, 0};
    // An index past the array selects no line rather than reading outside it.
    if (v > 0 && r.lines && v <= uint32_t(r.lines->count)) style = r.lines->styles[v - 1];
    addRecord(r.shape, ddRecordLine, style.width, int32_t(style.color));
    r.shape->lineWidth = style.width;
  }
  if (flags & 16) {
    r.fillBase = r.shape->fillCount;
    ddStream_readFillArray(s, r.timeline, r.blockType, r.shape, nullptr);
    ddLineArray_destroy(r.lines);
    r.lines = ddStream_readLineArray(s, r.blockType, nullptr);
    r.fillBits = int(ddStream_readBits(s, 4));
    r.lineBits = int(ddStream_readBits(s, 4));
  }
  return true;
}

}  // namespace

ddShapeCharacter* ddShapeCharacter_create(ddShape* shape) {
  ddShapeCharacter* c = static_cast<ddShapeCharacter*>(ddCalloc(1, sizeof(ddShapeCharacter)));
  c->head.type = ddCharacterShape;
  c->head.instantiate = ddShapeInstance_instantiate;
  c->head.destroy = shapeDestroy;
  c->shape = shape;
  return c;
}

void ddStream_readShapeBlock(ddStream* s, ddTimeline* timeline, int blockType, int32_t length) {
  uint64_t end = s->pos + uint64_t(int64_t(length));
  int32_t id = ddStream_readU16(s);
  ddShape* shape = ddShape_create();
  s->curX = s->curY = 0;
  ddShapeCharacter* character = ddShapeCharacter_create(shape);
  ddRect declared = ddStream_readRect(s);
  RecordReader r{s, timeline, blockType, shape, nullptr, 0, 0, 0};
  ddStream_readFillArray(s, timeline, blockType, shape, nullptr);
  r.lines = ddStream_readLineArray(s, blockType, nullptr);
  ddStream_align(s);
  r.fillBits = int(ddStream_readBits(s, 4));
  r.lineBits = int(ddStream_readBits(s, 4));
  while (s->pos < end && readRecord(r)) {
  }
  ddShape_finish(shape);
  shape->bounds = declared;
  ddLineArray_destroy(r.lines);
  ddDictionary_put(timeline, id, &character->head);
}
