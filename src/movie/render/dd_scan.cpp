// Scan conversion: the active edge list, exact-area coverage of edge cells and
// spans in the shared coverage row, and the row step that fills and
// composites front to back.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "movie/render/dd_render.h"

namespace {

uint32_t coverageRow[ddRowWidth];
ddColor pixelRow[ddRowWidth];
uint8_t maskBytes[ddRowWidth];

// Scan arithmetic is done wide and wrapped back to 32 bits where it is stored,
// so hostile coordinates wrap instead of overflowing.
inline int32_t w32(int64_t v) {
  return ddWrap(v);
}
inline int32_t g(int32_t t) {
  return t & 1023;
}

struct Row {
  int y;
  int xa, xb;            // pixel limits of this draw
  ddPaint* list;         // paints touched on this row, last in first
  int spanMin, spanMax;  // cells that spans wrote, so they are cleared too
};

// Cell arithmetic is exact modulo one whole cell (1 << 20): every edge term is
// reduced into [0, 1 << 20) and spans add exactly one cell, so the bits below
// 20 hold the true coverage. A cell whose low bits are zero but which was
// reached by something is whole (see ddCoverage_level).
constexpr int64_t kOne = int64_t(1) << 20;

inline void add(const Row& row, ddPaint* p, int64_t c, int64_t v) {
  // A zero still widens the paint's range: the span that ends at this cell
  // must be read.
  if (!p) return;
  if (c < row.xa) {
    p->minX = row.xa;
    return;
  }
  if (c >= row.xb) {
    p->maxX = row.xb;
    return;
  }
  uint32_t part = uint32_t(v & (kOne - 1));
  p->coverage[c] += part || !v ? part : uint32_t(kOne);
  if (c < p->minX) p->minX = int32_t(c);
  if (c + 1 > p->maxX) p->maxX = int32_t(c + 1);
}

// `first` takes the area left of the edge, `second` the rest.
inline void split(const Row& row, ddPaint* first, ddPaint* second, int64_t c, int64_t v) {
  add(row, first, c, kOne - v);
  add(row, second, c, v);
}
inline void split2(const Row& row, ddPaint* first, ddPaint* second, int64_t c, int64_t v) {
  add(row, first, c, v);
  add(row, second, c, kOne - v);
}

void coverLeftward(ddEdge* e, ddPaint* first, ddPaint* second, const Row& row) {
  const int64_t T = int64_t(row.y) << 10, B = int64_t(row.y + 1) << 10;
  const int64_t X = e->curX, fX = g(e->curX), dxdy = e->dxdy, dydx = e->dydx;
  const int64_t xn = X + dxdy;
  const int64_t end = std::max<int64_t>(xn, e->x1);
  int64_t curY = e->curY;
  int64_t c;
  if (e->y0 < T) {
    c = X >> 10;
    if ((e->x1 >> 10) == c && e->y1 < B) {
      split(row, first, second, c, ((1024 - g(e->x1)) << 10) - ((fX - g(e->x1)) * g(e->y1)) / 2);
      return;
    }
    if (fX + dxdy > 0) {
      int64_t v = ((dxdy / 2) + fX) << 10;
      add(row, first, c, v);
      add(row, second, c, kOne - v);
      e->curX = w32(xn);
      return;
    }
    curY = w32(curY + dydx);
    int64_t v = w32((fX * curY) / 2);
    add(row, first, c, v);
    add(row, second, c, kOne - v);
  } else {
    c = e->x0 >> 10;
    if (e->y1 < B && (e->x1 >> 10) == c) {
      split(row, first, second, c, (1024 - (g(e->y1) + g(e->y0)) / 2) * (int64_t(e->x0) - e->x1));
      return;
    }
    if ((xn >> 10) == c) {
      e->curX = w32(xn);
      split(row, first, second, c, ((g(e->x0) - (xn & 1023)) * (1024 - g(e->y0))) / 2);
      return;
    }
    curY = w32(curY + dydx);
    // v is the strip left of x0 under the edge, which lies to its right.
    int64_t v = w32((1024 - (g(e->y0) + curY) / 2) * g(e->x0));
    add(row, first, c, kOne - v);
    add(row, second, c, v);
  }
  c--;
  const int64_t last = end >> 10;
  // Whole cells outside the draw only move the paint limits; skip them in one
  // step, keeping curY where the walk would have left it.
  if (c > last && c >= row.xb) {
    int64_t skip = c - std::max<int64_t>(last, row.xb - 1);
    add(row, first, c, 1);
    add(row, second, c, 1);
    curY = w32(curY + skip * dydx);
    c -= skip;
  }
  while (c > last) {
    if (c < row.xa) {
      add(row, first, c, 1);
      add(row, second, c, 1);
      curY = w32(curY + (c - last) * dydx);
      c = last;
      break;
    }
    int64_t v = w32(((dydx / 2) + curY) << 10);
    add(row, first, c, v);
    add(row, second, c, kOne - v);
    curY = w32(curY + dydx);
    c--;
  }
  e->curX = w32(int64_t(e->curX) + dxdy);
  const int64_t cx = e->curX;
  if (cx <= e->x1 && e->y1 != B) {
    split(row, first, second, c, (1024 - (g(e->y1) + curY) / 2) * (1024 - g(e->x1)));
  } else if (curY >= 1024 && e->y1 != B) {
    add(row, first, c, ddFullCell);
  } else {
    split(row, first, second, c, ((1024 - (cx & 1023)) * (1024 - curY)) / 2);
  }
  e->curY = w32(curY);
}

void coverRightward(ddEdge* e, ddPaint* first, ddPaint* second, const Row& row) {
  const int64_t T = int64_t(row.y) << 10, B = int64_t(row.y + 1) << 10;
  const int64_t X = e->curX, fX = g(e->curX), dxdy = e->dxdy, dydx = e->dydx;
  const int64_t xn = X + dxdy;
  const int64_t end = std::min<int64_t>(xn, e->x1);
  int64_t curY = e->curY;
  int64_t c;
  if (e->y0 < T) {
    c = X >> 10;
    if (e->x1 < ((c + 1) << 10) && e->y1 < B) {
      split2(row, first, second, c, (int64_t(g(e->x1)) << 10) - ((g(e->x1) - fX) * g(e->y1)) / 2);
      return;
    }
    if (fX + dxdy < 1024) {
      int64_t v = ((dxdy / 2) + fX) << 10;
      add(row, first, c, v);
      add(row, second, c, kOne - v);
      e->curX = w32(xn);
      return;
    }
    curY = w32(curY + dydx);
    int64_t v = w32(((1024 - fX) * curY) / 2);
    add(row, first, c, kOne - v);
    add(row, second, c, v);
  } else {
    c = e->x0 >> 10;
    if (e->y1 < B && e->x1 < ((c + 1) << 10)) {
      split2(row, first, second, c, (1024 - (g(e->y1) + g(e->y0)) / 2) * (int64_t(e->x1) - e->x0));
      return;
    }
    if (xn < ((c + 1) << 10)) {
      e->curX = w32(xn);
      split2(row, first, second, c, (((xn & 1023) - g(e->x0)) * (1024 - g(e->y0))) / 2);
      return;
    }
    curY = w32(curY + dydx);
    int64_t v = w32((1024 - (g(e->y0) + curY) / 2) * (1024 - g(e->x0)));
    add(row, first, c, v);
    add(row, second, c, kOne - v);
  }
  c++;
  const int64_t last = end >> 10;
  if (c < last && c < row.xa) {
    int64_t skip = std::min<int64_t>(last, row.xa) - c;
    add(row, first, c, 1);
    add(row, second, c, 1);
    curY = w32(curY + skip * dydx);
    c += skip;
  }
  while (c < last) {
    if (c >= row.xb) {
      add(row, first, c, 1);
      add(row, second, c, 1);
      curY = w32(curY + (last - c) * dydx);
      c = last;
      break;
    }
    int64_t v = w32(((dydx / 2) + curY) << 10);
    add(row, first, c, kOne - v);
    add(row, second, c, v);
    curY = w32(curY + dydx);
    c++;
  }
  e->curX = w32(int64_t(e->curX) + dxdy);
  const int64_t cx = e->curX;
  if (cx >= e->x1 && e->y1 != B) {
    split2(row, first, second, c, (1024 - (g(e->y1) + curY) / 2) * g(e->x1));
  } else if (curY >= 1024 && e->y1 != B) {
    add(row, second, c, ddFullCell);
  } else {
    split2(row, first, second, c, ((cx & 1023) * (1024 - curY)) / 2);
  }
  e->curY = w32(curY);
}

void cover(ddEdge* e, const ddEdgeGroup* group, const Row& row) {
  ddPaint* first = group->flip ? e->right : e->left;
  ddPaint* second = group->flip ? e->left : e->right;
  if (e->dxdy == 0) {
    // A vertical edge that starts inside the row leaves that row to the edge
    // that joins it there.
    if (e->y0 > (int64_t(row.y) << 10)) return;
    int64_t c = e->curX >> 10;
    if (c >= row.xa && c <= row.xb) {
      split(row, first, second, c, int64_t(1024 - g(e->curX)) << 10);
    } else {
      add(row, first, c, ddFullCell);
      add(row, second, c, ddFullCell);
    }
  } else if (e->dxdy < 0) {
    coverLeftward(e, first, second, row);
  } else {
    coverRightward(e, first, second, row);
  }
}

void pushPaint(Row& row, ddPaint* p) {
  if (!p || p->inRow) return;
  p->inRow = 1;
  p->nextInRow = row.list;
  row.list = p;
}

void unlink(ddEdgeGroup* group, ddEdge* e) {
  if (e->prevActive)
    e->prevActive->nextActive = e->nextActive;
  else
    group->active = e->nextActive;
  if (e->nextActive) e->nextActive->prevActive = e->prevActive;
  e->nextActive = e->prevActive = nullptr;
}

void activate(ddEdgeGroup* group, int y) {
  const int64_t rowTop = int64_t(y) << 10, rowBottom = int64_t(y + 1) << 10;
  while (group->nextIndex < group->count && group->sorted[group->nextIndex]->y0 < rowBottom) {
    ddEdge* e = group->sorted[group->nextIndex++];
    if (e->y1 < rowTop) continue;
    if (e->y0 <= rowTop) {
      e->curX = w32(e->xRowStart + (int64_t(y) - (e->y0 >> 10)) * e->dxdy);
      // Where the edge crosses the column boundary behind it, as on later rows.
      int64_t f = e->curX & 1023;
      if (e->dxdy <= 0) f = 1024 - f;
      e->curY = w32(-((f * e->dydx) / 1024));
    } else {
      e->curX = e->xRowStart;
      e->curY = e->yColStart;
    }
    auto goesFirst = [rowBottom](const ddEdge* n, const ddEdge* o) {
      if (n->y1 < rowBottom) return true;
      if (o->y1 < rowBottom) return false;
      return int64_t(n->curX) + n->dxdy < int64_t(o->curX) + o->dxdy;
    };
    ddEdge* prev = nullptr;
    ddEdge* at = group->active;
    while (at && !goesFirst(e, at)) {
      prev = at;
      at = at->nextActive;
    }
    e->prevActive = prev;
    e->nextActive = at;
    if (prev)
      prev->nextActive = e;
    else
      group->active = e;
    if (at) at->prevActive = e;
  }
}

// Steps 2 to 5 of a row: activation, edge cells, removal of ending edges and
// spans. Leaves the touched paints in `row.list`.
void coverRow(ddEdgeGroup* group, Row& row) {
  const int64_t rowTop = int64_t(row.y) << 10, rowBottom = int64_t(row.y + 1) << 10;
  activate(group, row.y);
  for (ddEdge* e = group->active; e;) {
    ddEdge* next = e->nextActive;
    // An edge that ended on this row's top line stays for the strip left of
    // its end; take that end exactly rather than the stepped position.
    if (e->y1 <= rowTop) e->curX = e->x1;
    cover(e, group, row);
    if ((e->y1 >> 10) > row.y) {
      int64_t f = e->curX & 1023;
      if (e->dxdy <= 0) f = 1024 - f;
      e->curY = w32(-((f * e->dydx) / 1024));
    }
    pushPaint(row, e->right);
    pushPaint(row, e->left);
    e = next;
  }
  for (ddEdge* e = group->active; e;) {
    ddEdge* next = e->nextActive;
    if (e->y1 < rowBottom) unlink(group, e);
    e = next;
  }
  for (ddEdge* e = group->active; e && e->nextActive; e = e->nextActive) {
    ddPaint* p = group->flip ? e->left : e->right;
    if (!p) continue;
    int from = int(std::max<int64_t>(e->curX >> 10, row.xa));
    int to = int(std::min<int64_t>(e->nextActive->curX >> 10, row.xb));
    for (int c = from; c < to; c++) p->coverage[c] += uint32_t(kOne);
    if (from < to) {
      row.spanMin = std::min(row.spanMin, from);
      row.spanMax = std::max(row.spanMax, to);
    }
  }
}

void resetPaint(ddPaint* p, int width) {
  p->minX = width;
  p->maxX = -1;
  p->inRow = 0;
  p->nextInRow = nullptr;
}

// Clears span cells that no paint's range took, so the row stays zero.
void clearSpans(const Row& row) {
  if (row.spanMin < row.spanMax)
    std::memset(coverageRow + row.spanMin, 0, size_t(row.spanMax - row.spanMin) * 4);
}

}  // namespace

uint32_t* ddRender_coverageRow() {
  return coverageRow;
}
ddColor* ddRender_pixelRow() {
  return pixelRow;
}
uint8_t* ddRender_maskRow() {
  return maskBytes;
}

void ddEdgeGroup_scanRow(ddEdgeGroup* group, int y, ddFixed xStart, ddFixed xEnd,
                         ddSurface* surface, const uint8_t* maskRow, const ddCxform& cxform) {
  if (!group) return;
  // Later groups are nearer the front.
  if (group->next) ddEdgeGroup_scanRow(group->next, y, xStart, xEnd, surface, maskRow, cxform);
  Row row{y, xStart >> 10, int(((int64_t(xEnd) - 1) >> 10) + 1), nullptr, ddRowWidth, 0};
  coverRow(group, row);
  int lo = ddRowWidth, hi = 0;
  const int width = surface->width;
  for (ddPaint* p = row.list; p;) {
    ddPaint* next = p->nextInRow;
    if (p->minX < 0 || p->maxX > width) {
      std::fputs("bad fill bounds", stderr);
    } else if (p->minX < p->maxX) {
      if (maskRow) {
        for (int x = p->minX; x < p->maxX; x++) {
          uint8_t m = maskRow[x];
          if (m == 255) continue;
          coverageRow[x] = (ddCoverage_level(coverageRow[x]) * m / 255) << 12;
        }
      }
      ddPaint_fillRow(p, y, pixelRow, cxform);
      lo = std::min(lo, p->minX);
      hi = std::max(hi, p->maxX);
      std::memset(coverageRow + p->minX, 0, size_t(p->maxX - p->minX) * 4);
    }
    resetPaint(p, width);
    p = next;
  }
  clearSpans(row);
  if (lo < hi) {
    ddColor* target = surface->pixels + size_t(y) * width;
    for (int x = lo; x < hi; x++) target[x] = ddColor_under(target[x], pixelRow[x]);
    std::memset(pixelRow + lo, 0, size_t(hi - lo) * 4);
  }
}

void ddEdgeGroup_maskRow(ddEdgeGroup* group, int y, ddFixed xStart, ddFixed xEnd,
                         ddSurface* surface, uint8_t* maskRow) {
  if (!group) return;
  if (group->next) ddEdgeGroup_maskRow(group->next, y, xStart, xEnd, surface, maskRow);
  Row row{y, xStart >> 10, int(((int64_t(xEnd) - 1) >> 10) + 1), nullptr, ddRowWidth, 0};
  coverRow(group, row);
  const int width = surface->width;
  for (ddPaint* p = row.list; p;) {
    ddPaint* next = p->nextInRow;
    if (p->minX >= 0 && p->maxX <= width && p->minX < p->maxX) {
      // The raw cell is added: masks are hard-edged.
      for (int x = p->minX; x < p->maxX; x++)
        maskRow[x] = uint8_t(std::min<uint64_t>(255, uint64_t(maskRow[x]) + coverageRow[x]));
      std::memset(coverageRow + p->minX, 0, size_t(p->maxX - p->minX) * 4);
    }
    resetPaint(p, width);
    p = next;
  }
  clearSpans(row);
}

void ddEdgeGroup_reset(ddEdgeGroup* group) {
  for (; group; group = group->next) {
    group->nextIndex = 0;
    while (group->active) unlink(group, group->active);
  }
}

bool ddRender_draw(ddRender* render, ddSurface* surface, const ddMatrix* matrix,
                   const ddCxform* cxform, const ddRect* clip) {
  if (surface->width > ddRowWidth) {
    ddWarn("Surface %i pixels wide is wider than %i: not drawn", surface->width, ddRowWidth);
    return false;
  }
  if (!render->groups) return true;
  const ddRect whole = {0, int32_t(surface->width) << 10, 0, int32_t(surface->height) << 10};
  ddRect r = ddRect_intersect(render->bounds, *clip);
  if (render->mask) r = ddRect_intersect(r, render->mask->bounds);
  // The clip is taken to lie on the surface; keep every row and cell inside it.
  r = ddRect_intersect(r, whole);
  if (ddRect_isEmpty(r)) return true;
  if ((r.yMin >> 10) >= surface->height || (r.yMax & ~1023) < 0 ||
      (r.xMin >> 10) >= surface->width || (r.xMax & ~1023) < 0)
    return true;
  ddRect strokeClip = ddRect_intersect(*clip, whole);
  if (!ddRect_isEmpty(strokeClip))
    ddEdgeGroup_drawStrokes(render->groups, surface, *cxform, strokeClip);
  const int yEnd = std::min<int>(surface->height - 1, (r.yMax - 1) >> 10);
  if (render->mask && render->mask->groups) {
    ddEdgeGroup* maskGroups = render->mask->groups;
    for (int y = r.yMin >> 10; y <= yEnd; y++) {
      std::memset(maskBytes, 0, sizeof maskBytes);
      ddEdgeGroup_maskRow(maskGroups, y, r.xMin, r.xMax, surface, maskBytes);
      ddEdgeGroup_scanRow(render->groups, y, r.xMin, r.xMax, surface, maskBytes, *cxform);
    }
    ddEdgeGroup_reset(maskGroups);
    std::memset(maskBytes, 0, sizeof maskBytes);
  } else {
    for (int y = r.yMin >> 10; y <= yEnd; y++)
      ddEdgeGroup_scanRow(render->groups, y, r.xMin, r.xMax, surface, nullptr, *cxform);
  }
  ddEdgeGroup_reset(render->groups);
  return true;
}
