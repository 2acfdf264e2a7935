// Device-space edges: building them from a shape's records, keeping them
// across frames, and moving them on a pure translation.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "movie/render/dd_render.h"

namespace {

int32_t wrapAdd(int32_t a, int32_t b) {
  return ddWrap(int64_t(a) + b);
}

// Rounded quotient of two ddFixed values, saturating.
ddFixed fixedDiv(int64_t p, int64_t q) {
  return ddFixed_fromDouble((p / 1024.0) / (q / 1024.0));
}

}  // namespace

void ddEdge_setRowStarts(ddEdge* e) {
  int32_t fy = e->y0 & 1023;
  e->xRowStart = wrapAdd(e->x0, -ddMulShift(e->dxdy, fy));
  int32_t fx = e->x0 & 1023;
  if (e->dxdy < 0) fx = 1024 - fx;
  e->yColStart = wrapAdd(fy, -ddMulShift(fx, e->dydx));
}

namespace {

ddEdgeGroup* newGroup() {
  ddEdgeGroup* g = static_cast<ddEdgeGroup*>(ddCalloc(1, sizeof(ddEdgeGroup)));
  g->bounds = ddRect_empty();
  return g;
}

struct Builder {
  ddRender* render;
  ddMatrix matrix;
  ddEdgeGroup* group;
  ddEdgeGroup* last;
  ddFixed penX, penY;
  ddPaint *fill0, *fill1;
  int32_t lineWidth;
  ddColor lineColor;
  ddRect bounds;
  bool mirror;

  ddPaint* paint(int32_t index) const {
    // Indices are not checked when a shape is read; one that names no fill
    // paints nothing rather than reading past the table.
    if (index < 0 || index >= render->paintCount) return nullptr;
    return &render->paints[index];
  }

  void addEdge(ddFixed xa, ddFixed ya, ddFixed xb, ddFixed yb) {
    ddRect_addPoint(&group->bounds, wrapAdd(xa, -lineWidth), wrapAdd(ya, -lineWidth));
    ddRect_addPoint(&group->bounds, wrapAdd(xa, lineWidth), wrapAdd(ya, lineWidth));
    ddRect_addPoint(&group->bounds, wrapAdd(xb, -lineWidth), wrapAdd(yb, -lineWidth));
    ddRect_addPoint(&group->bounds, wrapAdd(xb, lineWidth), wrapAdd(yb, lineWidth));
    // No edge is horizontal: a flat one is made 1/1024 pixel high.
    if (ya == yb) yb = wrapAdd(yb, 1);
    if (group->count == group->capacity) {
      group->capacity = group->capacity ? group->capacity * 2 : 16;
      group->edges =
          static_cast<ddEdge*>(ddRealloc(group->edges, size_t(group->capacity) * sizeof(ddEdge)));
    }
    ddEdge* e = &group->edges[group->count++];
    *e = ddEdge{};
    if (yb > ya) {
      e->x0 = xa, e->y0 = ya, e->x1 = xb, e->y1 = yb;
      e->reversed = 0;
      e->left = mirror ? fill0 : fill1;
      e->right = mirror ? fill1 : fill0;
    } else {
      e->x0 = xb, e->y0 = yb, e->x1 = xa, e->y1 = ya;
      e->reversed = 1;
      e->left = mirror ? fill1 : fill0;
      e->right = mirror ? fill0 : fill1;
    }
    int32_t dx = ddWrap(int64_t(e->x1) - e->x0);
    int32_t dy = ddWrap(int64_t(e->y1) - e->y0);
    e->dxdy = fixedDiv(dx, dy);
    e->dydx = dx == 0 ? 0 : fixedDiv(dy, std::abs(int64_t(dx)));
    ddEdge_setRowStarts(e);
    e->lineWidth = static_cast<uint16_t>(lineWidth);
    e->lineColor = lineColor;
  }

  // Splits until the control polygon is at most 4 pixels long.
  void curve(ddFixed x0, ddFixed y0, ddFixed cx, ddFixed cy, ddFixed x1, ddFixed y1, int depth) {
    auto dist = [](ddFixed p, ddFixed q) { return std::abs(int64_t(q) - p); };
    // Depth bounds the work on coordinates that wrapped into nonsense: 16384
    // pieces already cover a curve far longer than any surface.
    while (depth < 14 && dist(x0, cx) + dist(y0, cy) + dist(cx, x1) + dist(cy, y1) > 4096) {
      ddFixed ax = (int64_t(x0) + cx) / 2, ay = (int64_t(y0) + cy) / 2;
      ddFixed bx = (int64_t(cx) + x1) / 2, by = (int64_t(cy) + y1) / 2;
      ddFixed mx = (int64_t(ax) + bx) / 2, my = (int64_t(ay) + by) / 2;
      curve(x0, y0, ax, ay, mx, my, depth + 1);
      x0 = mx, y0 = my, cx = bx, cy = by;
      depth++;
    }
    addEdge(x0, y0, x1, y1);
  }

  void closeGroup() {
    ddEdgeGroup* g = group;
    g->sorted = static_cast<ddEdge**>(ddMalloc(size_t(g->count ? g->count : 1) * sizeof(ddEdge*)));
    for (int32_t i = 0; i < g->count; i++) g->sorted[i] = &g->edges[i];
    g->active = static_cast<ddEdge**>(ddMalloc(size_t(g->count ? g->count : 1) * sizeof(ddEdge*)));
    std::sort(g->sorted, g->sorted + g->count, [](const ddEdge* p, const ddEdge* q) {
      if (p->y0 != q->y0) return p->y0 < q->y0;
      if (p->x0 != q->x0) return p->x0 < q->x0;
      return p->dxdy < q->dxdy;
    });
    // The topmost painted edge tells on which side of an edge the span runs.
    g->flip = 0;
    for (int32_t i = 0; i < g->count; i++) {
      const ddEdge* e = g->sorted[i];
      if (e->left) {
        g->flip = 1;
        break;
      }
      if (e->right) break;
    }
    bounds = ddRect_union(bounds, g->bounds);
  }

  void startGroup() {
    ddEdgeGroup* g = newGroup();
    if (last)
      last->next = g;
    else
      render->groups = g;
    last = g;
    group = g;
  }
};

}  // namespace

int ddMatrix_compare(const ddMatrix& old, const ddMatrix& now) {
  if (old.a == 0 && old.b == 0 && old.c == 0 && old.d == 0) return ddMatrixRebuild;
  if (old.a == now.a && old.b == now.b && old.c == now.c && old.d == now.d)
    return (old.tx != now.tx || old.ty != now.ty) ? ddMatrixMoved : ddMatrixSame;
  // now composed with the adjugate of old: a multiple of the identity means a
  // uniform scale.
  ddMatrix adj = {old.d, ddWrap(-int64_t(old.b)), ddWrap(-int64_t(old.c)), old.a, 0, 0};
  ddMatrix r = ddMatrix_concat(now, adj);
  if (r.c != 0) return ddMatrixRebuild;
  if (r.b != 0 || r.a != r.d) return ddMatrixSheared;
  return ddMatrixScaled;
}

void ddEdgeGroup_freeAll(ddEdgeGroup* group) {
  while (group) {
    ddEdgeGroup* next = group->next;
    ddFree(group->edges);
    ddFree(group->sorted);
    ddFree(group->active);
    ddFree(group);
    group = next;
  }
}

void ddRender_buildEdges(ddRender* render, const ddMatrix& m) {
  ddEdgeGroup_freeAll(render->groups);
  render->groups = nullptr;
  Builder b{};
  b.render = render;
  b.matrix = m;
  b.penX = m.tx;
  b.penY = m.ty;
  b.bounds = ddRect_empty();
  b.mirror = ddMulShift(m.a, m.d) < ddMulShift(m.b, m.c);
  b.startGroup();
  const ddShape* shape = render->shape;
  for (int32_t i = 0; i < shape->recordCount; i++) {
    const ddShapeRecord& r = shape->records[i];
    switch (r.type) {
      case ddRecordEnd:
        b.closeGroup();
        render->bounds = b.bounds;
        return;
      case ddRecordMove:
        ddMatrix_transform(m, r.data[0], r.data[1], &b.penX, &b.penY);
        break;
      case ddRecordFill0:
        b.fill0 = b.paint(r.data[0]);
        break;
      case ddRecordFill1:
        b.fill1 = b.paint(r.data[0]);
        break;
      case ddRecordLine:
        b.lineWidth = r.data[0];
        b.lineColor = ddColor(r.data[1]);
        break;
      case ddRecordGroup:
        b.closeGroup();
        b.startGroup();
        break;
      case ddRecordLineTo: {
        ddFixed x, y;
        ddMatrix_transform(m, r.data[0], r.data[1], &x, &y);
        b.addEdge(b.penX, b.penY, x, y);
        b.penX = x, b.penY = y;
        break;
      }
      case ddRecordCurveTo: {
        ddFixed cx, cy, x, y;
        ddMatrix_transform(m, r.data[0], r.data[1], &cx, &cy);
        ddMatrix_transform(m, r.data[2], r.data[3], &x, &y);
        b.curve(b.penX, b.penY, cx, cy, x, y, 0);
        b.penX = x, b.penY = y;
        break;
      }
      default:
        ddFatal("Unexpected vertex type: %i!", r.type);
    }
  }
  // ddShape_finish guarantees an end record; a list without one still closes.
  b.closeGroup();
  render->bounds = b.bounds;
}

ddRender* ddRender_create(ddShape* shape) {
  ddShape_finish(shape);
  ddRender* r = static_cast<ddRender*>(ddCalloc(1, sizeof(ddRender)));
  r->shape = shape;
  r->bounds = ddRect_empty();
  r->paintCount = shape->fillCount;
  // Room for paints that other characters add to a render.
  r->paints =
      static_cast<ddPaint*>(ddCalloc(size_t(shape->fillCount) + ddExtraPaints, sizeof(ddPaint)));
  uint32_t* coverage = ddRender_coverageRow();
  for (int32_t i = 0; i < shape->fillCount + ddExtraPaints; i++) {
    ddPaint* p = &r->paints[i];
    if (i < shape->fillCount) {
      p->kind = shape->fills[i].kind;
      p->data = shape->fills[i].data;
      p->fillMatrix = shape->fills[i].matrix;
    }
    p->coverage = coverage;
    p->minX = ddRowWidth;
    p->maxX = -1;
  }
  return r;
}

void ddRender_destroy(ddRender* render) {
  if (!render) return;
  ddEdgeGroup_freeAll(render->groups);
  ddFree(render->paints);
  ddFree(render);
}

bool ddRender_update(ddRender* render, ddRectList* dirty, const ddMatrix* next) {
  const ddMatrix& matrix = *next;
  int state = ddMatrix_compare(render->matrix, matrix);
  // Flattening depends on scale, so any linear change rebuilds.
  if (state != ddMatrixSame && state != ddMatrixMoved) state = ddMatrixRebuild;
  if (state == ddMatrixSame) return false;
  ddRect old = render->bounds;
  for (int32_t i = 0; i < render->paintCount; i++)
    ddPaint_updateInverse(&render->paints[i], matrix);
  switch (state) {
    case ddMatrixMoved: {
      int32_t dx = ddWrap(int64_t(matrix.tx) - render->matrix.tx);
      int32_t dy = ddWrap(int64_t(matrix.ty) - render->matrix.ty);
      auto move = [dx, dy](ddRect* r) {
        if (ddRect_isEmpty(*r)) return;
        r->xMin = wrapAdd(r->xMin, dx), r->xMax = wrapAdd(r->xMax, dx);
        r->yMin = wrapAdd(r->yMin, dy), r->yMax = wrapAdd(r->yMax, dy);
      };
      // Only the first group moves; later groups keep their place.
      if (ddEdgeGroup* g = render->groups) {
        for (int32_t i = 0; i < g->count; i++) {
          ddEdge* e = &g->edges[i];
          e->x0 = wrapAdd(e->x0, dx), e->x1 = wrapAdd(e->x1, dx);
          e->y0 = wrapAdd(e->y0, dy), e->y1 = wrapAdd(e->y1, dy);
          ddEdge_setRowStarts(e);
        }
        move(&g->bounds);
      }
      move(&render->bounds);
      break;
    }
    case ddMatrixRebuild:
      ddRender_buildEdges(render, matrix);
      break;
    default:
      ddWarn("Unknown shape state %i!", state);
  }
  render->matrix = matrix;
  if (dirty) {
    ddRectList_add(dirty, old);
    ddRectList_add(dirty, render->bounds);
  }
  return true;
}

bool ddEdgeGroup_hit(const ddEdgeGroup* group, ddFixed x, ddFixed y) {
  if (!group) return false;
  if (ddEdgeGroup_hit(group->next, x, y)) return true;
  if (!ddRect_contains(group->bounds, x, y)) return false;
  int64_t best = -1;
  const ddPaint* paint = nullptr;
  for (int32_t i = 0; i < group->count; i++) {
    const ddEdge* e = group->sorted[i];
    if (e->y0 > y) break;
    if (e->y1 <= y) continue;
    int64_t ex = e->x0 + (int64_t(e->x1) - e->x0) * (int64_t(y) - e->y0) / (int64_t(e->y1) - e->y0);
    if (ex < x && ex > best) {
      best = ex;
      paint = e->right;
    }
  }
  return paint != nullptr;
}

bool ddRender_hit(const ddRender* render, ddFixed x, ddFixed y) {
  if (render->mask && !ddRender_hit(render->mask, x, y)) return false;
  if (!ddRect_contains(render->bounds, x, y)) return false;
  return ddEdgeGroup_hit(render->groups, x, y);
}

// Placed shapes drawing through their render.

namespace {

ddShapeInstance* asShape(ddInstance* self) {
  return reinterpret_cast<ddShapeInstance*>(self);
}

ddRender* createRender(ddShape* shape) {
  return ddRender_create(shape);
}

void shapeUpdate(ddInstance* self, ddRectList* dirty, const ddMatrix* parent) {
  ddShapeInstance* si = asShape(self);
  ddMatrix m = ddMatrix_concat(*parent, self->matrix);
  ddRender_update(si->render, dirty, &m);
  self->bounds = si->render->bounds;
}

void shapeDraw(ddInstance* self, ddSurface* surface, ddRectList*, const ddMatrix* parent,
               const ddCxform* parentCxform, const ddRect* clip) {
  ddShapeInstance* si = asShape(self);
  ddMatrix m = ddMatrix_concat(*parent, self->matrix);
  ddCxform cx = ddCxform_concat(*parentCxform, self->cxform);
  ddRender_draw(si->render, surface, &m, &cx, clip);
}

void shapeDestroy(ddInstance* self) {
  ddRender_destroy(asShape(self)->render);
  ddFree(self);
}

void shapeSetMask(ddShapeInstance* target, ddShapeInstance* mask) {
  target->render->mask = mask ? mask->render : nullptr;
}

ddRect updateRender(ddRender* render, ddRectList* dirty, const ddMatrix& matrix) {
  ddRender_update(render, dirty, &matrix);
  return render->bounds;
}

void drawRender(ddRender* render, ddSurface* surface, const ddMatrix& matrix,
                const ddCxform& cxform, const ddRect& clip) {
  ddRender_draw(render, surface, &matrix, &cxform, &clip);
}

}  // namespace

void ddRender_setTextColor(ddRender* render, ddColor colour) {
  if (render->paintCount > 0)
    ddWarn("glyph shape instance already has fill!");
  else
    render->paintCount = 1;  // within the room every render keeps for added paints
  // Glyph records all name fill 0, so this one paint colours the glyph.
  ddPaint& p = render->paints[0];
  p.kind = ddFillSolid;
  p.data.color = colour;
  p.fillMatrix = ddMatrixIdentity;
}

const ddShapeInstanceOps ddRenderShapeOps = {createRender, shapeUpdate,  shapeDraw,
                                             shapeDestroy, shapeSetMask, ddRender_destroy,
                                             updateRender, drawRender,   ddRender_setTextColor};

void ddRender_install() {
  ddShapeInstance_setOps(&ddRenderShapeOps);
}
