// Morph shapes: the block reader, the working copy mixed at a ratio, and the
// placed morph, which draws like a shape.
#include "movie/dd_morph.h"

#include <cstring>

namespace {

constexpr int kMorphBlock = 46;

void morphCharacterDestroy(ddCharacter* c) {
  ddMorphCharacter* m = reinterpret_cast<ddMorphCharacter*>(c);
  ddShape_destroy(m->start);
  ddShape_destroy(m->end);
  ddFree(m);
}

void addStyle(ddShape* shape, int32_t type, int32_t a, int32_t b = 0) {
  ddShapeRecord* r = ddShape_addRecord(shape);
  r->type = type;
  r->data[0] = a;
  r->data[1] = b;
  r->data[2] = r->data[3] = 0;
}

// A move's absolute point, into the stream's pen; gives it in ddFixed.
void readMove(ddStream* s, ddFixed* x, ddFixed* y) {
  int w = int(ddStream_readBits(s, 5));
  s->curX = ddStream_readSBits(s, w);
  s->curY = ddStream_readSBits(s, w);
  *x = ddFixed_fromTwips(s->curX);
  *y = ddFixed_fromTwips(s->curY);
}

struct MorphReader {
  ddStream* s;
  ddTimeline* timeline;
  ddShape *start, *end;
  ddLineArray *lines, *endLines;
  int fillBits, lineBits;
  int32_t fillBase;

  ddLineStyle lineAt(const ddLineArray* array, uint32_t v) const {
    // An index past the array selects no line rather than reading outside it.
    if (v == 0 || !array || v > uint32_t(array->count)) return ddLineStyle{0, 0};
    return array->styles[v - 1];
  }

  void fill(int32_t type) {
    uint32_t v = ddStream_readBits(s, fillBits);
    int32_t index = v == 0 ? -1 : ddWrap(int64_t(fillBase) + v - 1);
    addStyle(start, type, index);
    addStyle(end, type, index);
  }

  // One record of the start edges, written to both shapes.
  void startRecord() {
    if (ddStream_readBits(s, 1)) {
      int32_t cx, cy;
      if (ddStream_readEdge(s, &cx, &cy)) {
        ddFixed x = ddFixed_fromTwips(s->curX), y = ddFixed_fromTwips(s->curY);
        ddShape_lineTo(start, x, y);
        ddShape_lineTo(end, x, y);
      } else {
        ddFixed fx = ddFixed_fromTwips(cx), fy = ddFixed_fromTwips(cy);
        ddFixed ax = ddFixed_fromTwips(s->curX), ay = ddFixed_fromTwips(s->curY);
        ddShape_curveTo(start, fx, fy, ax, ay);
        ddShape_curveTo(end, fx, fy, ax, ay);
      }
      return;
    }
    uint32_t flags = ddStream_readBits(s, 5);
    if (flags == 0) return;
    if (flags & 1) {
      // No group records in morphs: a move to the origin is a move.
      ddFixed x, y;
      readMove(s, &x, &y);
      ddShape_moveTo(start, x, y);
      ddShape_moveTo(end, x, y);
    }
    // The fill flags are taken the other way round from plain shapes: flag 4
    // first, as fill0, then flag 2, as fill1.
    if (flags & 4) fill(ddRecordFill0);
    if (flags & 2) fill(ddRecordFill1);
    if (flags & 8) {
      uint32_t v = ddStream_readBits(s, lineBits);
      ddLineStyle a = lineAt(lines, v), b = lineAt(endLines, v);
      addStyle(start, ddRecordLine, a.width, int32_t(a.color));
      addStyle(end, ddRecordLine, b.width, int32_t(b.color));
      start->lineWidth = a.width;
      end->lineWidth = b.width;
    }
    if (flags & 16) {
      fillBase = start->fillCount;
      ddStream_readFillArray(s, timeline, kMorphBlock, start, end);
      ddLineArray_destroy(lines);
      lines = ddStream_readLineArray(s, kMorphBlock, &endLines);
      fillBits = int(ddStream_readBits(s, 4));
      lineBits = int(ddStream_readBits(s, 4));
    }
  }

  // One record of the end edges: new coordinates over the end shape's record
  // at `index`, whose type the start shape decided.
  void endRecord(int32_t* index) {
    while (*index < end->recordCount) {
      int32_t t = end->records[*index].type;
      if (t == ddRecordEnd || t == ddRecordMove || t == ddRecordLineTo || t == ddRecordCurveTo)
        break;
      ++*index;
    }
    // Edges beyond the start shape's are read and dropped.
    int32_t* data = *index < end->recordCount ? end->records[*index].data : nullptr;
    if (ddStream_readBits(s, 1)) {
      int32_t cx, cy;
      if (ddStream_readEdge(s, &cx, &cy)) {
        if (data) {
          data[0] = ddFixed_fromTwips(s->curX);
          data[1] = ddFixed_fromTwips(s->curY);
        }
      } else if (data) {
        data[0] = ddFixed_fromTwips(cx);
        data[1] = ddFixed_fromTwips(cy);
        data[2] = ddFixed_fromTwips(s->curX);
        data[3] = ddFixed_fromTwips(s->curY);
      }
    } else {
      uint32_t flags = ddStream_readBits(s, 5);
      if (flags == 0) return;
      if (flags & 1) {
        ddFixed x, y;
        readMove(s, &x, &y);
        if (data) data[0] = x, data[1] = y;
      }
      if (flags & 30) ddFatal("Unexpected records in morph end shape!");
    }
    ++*index;
  }
};

bool zeroRect(const ddRect& r) {
  return r.xMin == 0 && r.xMax == 0 && r.yMin == 0 && r.yMax == 0;
}

int32_t mix(int32_t e, int32_t s, int32_t we, int32_t ws) {
  return ddWrap((int64_t(e) * we + int64_t(s) * ws) >> 10);
}

ddColor mixColor(ddColor start, ddColor end, int32_t ratio) {
  return ddColor_scale(start, uint32_t(65663 - ratio) >> 8) +
         ddColor_scale(end, uint32_t(ratio + 127) >> 8);
}

ddColor stopColor(const ddGradientStop& s) {
  return ddColor(s.red) | (ddColor(s.green) << 8) | (ddColor(s.blue) << 16) |
         (ddColor(s.alpha) << 24);
}

// Placed morphs

ddMorphInstance* asMorph(ddInstance* i) {
  return reinterpret_cast<ddMorphInstance*>(i);
}

void morphUpdate(ddInstance* self, ddRectList* dirty, const ddMatrix* parent) {
  ddMorphInstance* m = asMorph(self);
  // A remade render starts with no geometry: the area it covered before is
  // redrawn from here.
  if (m->remade && dirty && !ddRect_isEmpty(self->bounds)) ddRectList_add(dirty, self->bounds);
  if (m->remade) self->bounds = ddRect_empty();
  m->remade = false;
  m->shape.ops->update(self, dirty, parent);
}

void morphDraw(ddInstance* self, ddSurface* surface, ddRectList* dirty, const ddMatrix* parent,
               const ddCxform* parentCxform, const ddRect* clip) {
  bool touched = !dirty;
  for (int32_t i = 0; dirty && i < dirty->count && !touched; i++)
    touched = ddRect_overlap(dirty->rects[i], self->bounds);
  if (touched) asMorph(self)->shape.ops->draw(self, surface, dirty, parent, parentCxform, clip);
}

void morphDestroy(ddInstance* self) {
  ddMorphInstance* m = asMorph(self);
  ddShape* current = m->current;
  m->shape.ops->destroy(self);
  ddShape_destroy(current);
}

}  // namespace

ddShape* ddShape_copy(const ddShape* shape) {
  ddShape* copy = ddShape_create();
  for (int32_t i = 0; i < shape->fillCount; i++) {
    ddFill f = shape->fills[i];
    if (f.kind == ddFillRadial || f.kind == ddFillLinear) {
      const ddGradient* g = f.data.gradient;
      ddGradient* dup = ddGradient_create();
      dup->count = g->count;
      dup->stops = static_cast<ddGradientStop*>(
          ddMalloc(size_t(g->count ? g->count : 1) * sizeof(ddGradientStop)));
      if (g->count) std::memcpy(dup->stops, g->stops, size_t(g->count) * sizeof(ddGradientStop));
      f.data.gradient = dup;
    }
    ddShape_addFill(copy, f);
  }
  for (int32_t i = 0; i < shape->recordCount; i++) *ddShape_addRecord(copy) = shape->records[i];
  copy->lineWidth = shape->lineWidth;
  copy->bounds = shape->bounds;
  copy->hasCurves = shape->hasCurves;
  return copy;
}

ddMatrix ddMatrix_interpolate(int32_t t, const ddMatrix& start, const ddMatrix& end) {
  auto f = [t](ddFixed s, ddFixed e) {
    return ddWrap((int64_t(e) * t + int64_t(s) * (65536 - int64_t(t))) >> 16);
  };
  return ddMatrix{f(start.a, end.a), f(start.b, end.b),   f(start.c, end.c),
                  f(start.d, end.d), f(start.tx, end.tx), f(start.ty, end.ty)};
}

void ddFill_interpolate(const ddFill& start, const ddFill& end, ddFill* out, int32_t ratio) {
  if (start.kind != end.kind || start.kind == 0) return;
  switch (start.kind) {
    case ddFillSolid:
      if (out->kind == ddFillSolid)
        out->data.color = mixColor(start.data.color, end.data.color, ratio);
      return;
    case ddFillRadial:
    case ddFillLinear: {
      if (out->kind != start.kind) return;
      const ddGradient *s = start.data.gradient, *e = end.data.gradient;
      ddGradient* g = out->data.gradient;
      // Stop counts can differ where a file repeats ratio 0 on one side only.
      int32_t n = g->count;
      if (s->count < n) n = s->count;
      if (e->count < n) n = e->count;
      for (int32_t i = 0; i < n; i++) {
        int32_t pos = int32_t(
            (int64_t(e->stops[i].pos) * ratio + int64_t(s->stops[i].pos) * (65536 - ratio)) >> 24);
        ddGradient_writeStop(g, i, pos,
                             mixColor(stopColor(s->stops[i]), stopColor(e->stops[i]), ratio));
      }
      out->matrix = ddMatrix_interpolate(ratio, start.matrix, end.matrix);
      return;
    }
    case ddFillClippedBitmap:
    case ddFillTiledBitmap:
      out->matrix = ddMatrix_interpolate(ratio, start.matrix, end.matrix);
      return;
    default:
      ddFatal("unknown fill type in ddFill_interpolate: %i", start.kind);
  }
}

void ddStream_readMorphBlock(ddStream* s, ddTimeline* timeline, int32_t length) {
  const uint64_t blockEnd = s->pos + uint64_t(int64_t(length));
  auto skipRest = [&] {
    if (s->pos < blockEnd) ddStream_skip(s, int64_t(blockEnd - s->pos));
  };
  ddShape* start = ddShape_create();
  ddShape* end = ddShape_create();
  int32_t id = ddStream_readU16(s);
  s->curX = s->curY = 0;
  // Bounds are only tested: all zero means no character.
  if (zeroRect(ddStream_readRect(s)) || zeroRect(ddStream_readRect(s))) {
    ddShape_destroy(start);
    ddShape_destroy(end);
    skipRest();
    return;
  }
  uint32_t offset = ddStream_readU32(s);
  const uint64_t endEdges = s->pos + offset;
  MorphReader r{s, timeline, start, end, nullptr, nullptr, 0, 0, 0};
  ddStream_readFillArray(s, timeline, kMorphBlock, start, end);
  r.lines = ddStream_readLineArray(s, kMorphBlock, &r.endLines);
  r.fillBits = int(ddStream_readBits(s, 4));
  r.lineBits = int(ddStream_readBits(s, 4));
  while (s->pos < endEdges && !ddStream_exhausted(s)) r.startRecord();
  ddShape_finish(start);
  ddShape_finish(end);
  ddStream_align(s);
  ddStream_readBits(s, 4);
  ddStream_readBits(s, 4);
  int32_t index = 0;
  while (s->pos < blockEnd && !ddStream_exhausted(s)) r.endRecord(&index);
  ddLineArray_destroy(r.lines);
  ddLineArray_destroy(r.endLines);
  ddMorphCharacter* c = static_cast<ddMorphCharacter*>(ddCalloc(1, sizeof(ddMorphCharacter)));
  c->head.type = ddCharacterMorph;
  c->head.instantiate = ddMorph_instantiate;
  c->head.destroy = morphCharacterDestroy;
  c->start = start;
  c->end = end;
  ddDictionary_put(timeline, id, &c->head);
}

ddInstance* ddMorph_instantiate(ddMovie*, ddCharacter* character) {
  const ddShapeInstanceOps* ops = ddShapeInstance_ops();
  ddMorphInstance* m = static_cast<ddMorphInstance*>(ddCalloc(1, sizeof(ddMorphInstance)));
  ddInstance* head = &m->shape.head;
  ddInstance_init(head, ddCharacterMorph, character);
  head->update = morphUpdate;
  head->draw = morphDraw;
  head->destroy = morphDestroy;
  m->shape.ops = ops;
  m->current = ddShape_copy(reinterpret_cast<ddMorphCharacter*>(character)->start);
  m->shape.shape = m->current;
  m->ratio = -1;
  ddMorph_setRatio(head, 0);
  return head;
}

void ddMorph_setRatio(ddInstance* instance, int32_t ratio) {
  ddMorphInstance* m = asMorph(instance);
  if (ratio == m->ratio) return;
  m->ratio = ratio;
  const ddMorphCharacter* c = reinterpret_cast<const ddMorphCharacter*>(instance->character);
  const ddShape *start = c->start, *end = c->end;
  ddShape* current = m->current;
  const int32_t we = ratio >> 6, ws = (65536 - ratio) >> 6;
  int32_t records = current->recordCount;
  if (start->recordCount < records) records = start->recordCount;
  if (end->recordCount < records) records = end->recordCount;
  for (int32_t i = 0; i < records; i++) {
    ddShapeRecord& r = current->records[i];
    const int32_t *s = start->records[i].data, *e = end->records[i].data;
    switch (r.type) {
      case ddRecordEnd:
      case ddRecordGroup:
        break;
      case ddRecordMove:
      case ddRecordLineTo:
        r.data[0] = mix(e[0], s[0], we, ws);
        r.data[1] = mix(e[1], s[1], we, ws);
        break;
      case ddRecordFill0:
      case ddRecordFill1: {
        // -1 selects no fill: nothing to mix.
        int32_t f = r.data[0];
        if (f < 0 || f >= current->fillCount || f >= start->fillCount || f >= end->fillCount) break;
        ddFill_interpolate(start->fills[f], end->fills[f], &current->fills[f], ratio);
        break;
      }
      case ddRecordLine:
        r.data[0] = mix(e[0], s[0], we, ws);
        // The weights reach 1024 at most, so these factors stay at 4 of 256:
        // morph lines come out nearly transparent.
        r.data[1] = int32_t(ddColor_scale(ddColor(e[1]), uint32_t(we) >> 8) +
                            ddColor_scale(ddColor(s[1]), uint32_t(ws) >> 8));
        break;
      case ddRecordCurveTo:
        for (int k = 0; k < 4; k++) r.data[k] = mix(e[k], s[k], we, ws);
        break;
      default:
        ddFatal("Unknown shaperecord type: %i", r.type);
    }
  }
  const ddShapeInstanceOps* ops = m->shape.ops;
  if (!ops->createRender) return;
  ops->destroyRender(m->shape.render);
  m->shape.render = ops->createRender(current);
  m->remade = true;
  if (instance->mask) ops->setMask(&m->shape, reinterpret_cast<ddShapeInstance*>(instance->mask));
}
