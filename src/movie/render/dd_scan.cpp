// Scan conversion: the active edge list, exact-area coverage accumulated as
// signed area per cell, and the row step that fills and composites front to
// back.
#include <emmintrin.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

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

struct Row {
  int y;
  int xa, xb;  // pixel limits of this draw
  int lo, hi;  // cells [lo, hi] that hold deltas or marks
  // Paint right of the nearest edge wholly left of the draw: the owner of
  // the first cells until an edge touches one.
  ddPaint* leftPaint;
  int64_t leftX;
};

// Coverage is accumulated exactly as signed area: every edge adds, in each
// cell it crosses, the part of the cell right of it (within its height in the
// row), and carries its whole height into the next cell; a running sum over
// the row then gives each cell's covered area, 1 << 20 for a whole cell. The
// sign is +1 where the edge has a paint on its right side only, -1 on its
// left side only, and 0 between two paints, so the sum is the area covered by
// any fill of the group. Which paint draws a cell is decided apart from that:
// the paint of the edge that touched it, or for cells between edges the paint
// right of the edge before them. Two fills meeting in a cell thus never blend.

int32_t delta[ddRowWidth + 1];    // area deltas; prefix sums are coverage
ddPaint* touchOwner[ddRowWidth];  // paint of the edge that touched a cell
ddPaint* touchRight[ddRowWidth];  // paint right of that edge (may be none)
uint32_t touchStamp[ddRowWidth];  // row stamp: the cell was touched this row
uint32_t stamp = 0;
// Cells that hold a delta or a touch. Between two of them coverage and paint
// stay the same, so a row is resolved span by span rather than cell by cell.
constexpr int kEventWords = (ddRowWidth + 1 + 63) / 64;
uint64_t events[kEventWords];

inline void event(int64_t c) {
  events[c >> 6] |= uint64_t(1) << (c & 63);
}

inline void mark(Row& row, int64_t c, ddPaint* owner, ddPaint* right) {
  touchOwner[c] = owner;
  touchRight[c] = right;
  touchStamp[c] = stamp;
  event(c);
  row.lo = std::min<int>(row.lo, int(c));
  row.hi = std::max<int>(row.hi, int(c));
}

// Adds `area` (area right of the edge in cell c) and its carry `height << 10`
// into the delta row, with cells left of the draw folded into its first cell.
inline void deposit(Row& row, int64_t c, int64_t area, int64_t height, int sign) {
  if (c >= row.xb) {
    // Right of the draw: it still closes what lies left of it.
    row.hi = std::max(row.hi, row.xb);
    return;
  }
  if (c < row.xa) {
    delta[row.xa] += int32_t(sign * (height << 10));
    event(row.xa);
    row.lo = std::min(row.lo, row.xa);
    return;
  }
  delta[c] += int32_t(sign * area);
  delta[c + 1] += int32_t(sign * ((height << 10) - area));
  event(c);
  event(c + 1);
  row.hi = std::max<int>(row.hi, int(c + 1));
  row.lo = std::min<int>(row.lo, int(c));
}

// x of the edge's line at height y, rounded down; y between y0 and y1.
inline int64_t xAt(const ddEdge* e, int64_t y) {
  if (y <= e->y0) return e->x0;
  if (y >= e->y1) return e->x1;
  int64_t dy = int64_t(e->y1) - e->y0, t = (int64_t(e->x1) - e->x0) * (y - e->y0);
  return e->x0 + (t >= 0 ? t / dy : -((-t + dy - 1) / dy));
}

void cover(ddEdge* e, const ddEdgeGroup* group, Row& row) {
  ddPaint* rightSide = group->flip ? e->left : e->right;
  ddPaint* leftSide = group->flip ? e->right : e->left;
  const int sign = (rightSide ? 1 : 0) - (leftSide ? 1 : 0);
  ddPaint* owner = rightSide ? rightSide : leftSide;
  const int64_t T = int64_t(row.y) << 10, B = int64_t(row.y + 1) << 10;
  const int64_t ya = std::max<int64_t>(T, e->y0), yb = std::min<int64_t>(B, e->y1);
  // The top of this row is the bottom of the last one.
  const int64_t xt = e->scanX != INT64_MIN ? e->scanX : xAt(e, ya), xbot = xAt(e, yb);
  e->scanX = xbot;
  e->curX = w32(xbot);
  if (yb <= ya) return;
  // Walk from left to right whatever the slope; y runs along with x.
  int64_t xl = xt, xr = xbot, yl = ya, yr = yb;
  if (xl > xr) {
    std::swap(xl, xr);
    std::swap(yl, yr);
  }
  int64_t c = xl >> 10;
  const int64_t cLast = xr >> 10;
  if (cLast < row.xa) {
    // Wholly left of the draw: only its carry and the paint right of it.
    deposit(row, cLast, 0, yb - ya, sign);
    if (xr >= row.leftX) {
      row.leftX = xr;
      row.leftPaint = rightSide;
    }
    return;
  }
  auto touch = [&](int64_t cell) {
    if (cell >= row.xa && cell < row.xb) mark(row, cell, owner, rightSide);
  };
  if (c == cLast) {
    // Within one column: a trapezoid right of the edge.
    int64_t mid = ((xl & 1023) + (xr & 1023));  // twice the mean offset
    int64_t h = yb - ya;
    deposit(row, c, (h * (2048 - mid)) >> 1, h, sign);
    touch(c);
    return;
  }
  // Cells on the way may lie far outside the draw: take them in one step.
  const int64_t dx = xr - xl, dyv = yr - yl;
  // y at X is yl + dyv * (X - xl) / dx, truncated. Along whole columns it is
  // stepped rather than divided for: with m the height, m * (X - xl) =
  // q * dx + r, kept for X = px.
  const int64_t m = dyv < 0 ? -dyv : dyv;
  int64_t px = xl, py = yl;
  int64_t q = 0, r = 0, stepQ = -1, stepR = 0;
  auto yAtX = [&](int64_t X) {
    if (X == px + 1024) {
      if (stepQ < 0) stepQ = (m << 10) / dx, stepR = (m << 10) % dx;
      q += stepQ;
      r += stepR;
      if (r >= dx) q++, r -= dx;
    } else {
      q = m * (X - xl) / dx;
      r = m * (X - xl) % dx;
    }
    return yl + (dyv < 0 ? -q : q);
  };
  if (c < row.xa - 1 && cLast >= row.xa) {
    int64_t X = int64_t(row.xa - 1) << 10;
    int64_t y = yAtX(X);
    deposit(row, c, 0, std::abs(y - py), sign);
    px = X;
    py = y;
    c = row.xa - 1;
  }
  while (c <= cLast && c < row.xb) {
    int64_t X = std::min<int64_t>((c + 1) << 10, xr);
    int64_t y = c == cLast ? yr : yAtX(X);
    int64_t h = std::abs(y - py);
    int64_t f0 = px - (c << 10), f1 = X - (c << 10);
    deposit(row, c, (h * (2048 - f0 - f1)) >> 1, h, sign);
    touch(c);
    px = X;
    py = y;
    c++;
  }
  if (c <= cLast) row.hi = std::max(row.hi, row.xb);
}

// Activation on row y. Each new edge goes before the first active edge that
// it goes first of: always when it ends in this row, never before one that
// does, and otherwise when its x one row down, curX + dxdy, is less. The list
// is not sorted again later, so edges are taken not to cross.
//
// Rows of a large group activate many edges into a long list, so the new ones
// are placed together: ending ones at the head, latest first; any other before
// the first entry whose key exceeds its own, where an ending entry never does.
// That entry is the first whose running maximum of keys exceeds it, found by
// binary search, and new edges in one gap keep the order of their keys, ties
// in the order they came.
struct NewEdge {
  int64_t key;
  int32_t gap, seq;
  ddEdge* edge;
};
std::vector<ddEdge*> endingEdges;
std::vector<NewEdge> newEdges;
std::vector<int64_t> keyMax;
std::vector<ddEdge*> merged;

void activate(ddEdgeGroup* group, int y) {
  const int64_t rowTop = int64_t(y) << 10, rowBottom = int64_t(y + 1) << 10;
  endingEdges.clear();
  newEdges.clear();
  while (group->nextIndex < group->count && group->sorted[group->nextIndex]->y0 < rowBottom) {
    ddEdge* e = group->sorted[group->nextIndex++];
    if (e->y1 < rowTop) continue;
    e->scanX = INT64_MIN;
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
    if (e->y1 < rowBottom)
      endingEdges.push_back(e);
    else
      newEdges.push_back({int64_t(e->curX) + e->dxdy, 0, int32_t(newEdges.size()), e});
  }
  if (endingEdges.empty() && newEdges.empty()) return;
  const int n = group->activeCount;
  ddEdge** list = group->active;
  if (!newEdges.empty()) {
    keyMax.resize(size_t(n));
    int64_t running = INT64_MIN;
    for (int i = 0; i < n; i++) {
      const ddEdge* e = list[i];
      if (e->y1 >= rowBottom) running = std::max(running, int64_t(e->curX) + e->dxdy);
      keyMax[size_t(i)] = running;
    }
    for (NewEdge& ne : newEdges)
      ne.gap = int32_t(std::upper_bound(keyMax.begin(), keyMax.end(), ne.key) - keyMax.begin());
    std::sort(newEdges.begin(), newEdges.end(), [](const NewEdge& p, const NewEdge& q) {
      if (p.gap != q.gap) return p.gap < q.gap;
      if (p.key != q.key) return p.key < q.key;
      return p.seq < q.seq;
    });
  }
  merged.clear();
  merged.insert(merged.end(), endingEdges.rbegin(), endingEdges.rend());
  size_t k = 0;
  for (int i = 0; i <= n; i++) {
    for (; k < newEdges.size() && newEdges[k].gap == i; k++) merged.push_back(newEdges[k].edge);
    if (i < n) merged.push_back(list[i]);
  }
  std::copy(merged.begin(), merged.end(), list);
  group->activeCount = int32_t(merged.size());
}

// Activation, coverage of every active edge, removal of edges that end in
// the row. Leaves the deltas and marks of cells [row.lo, row.hi].
void coverRow(ddEdgeGroup* group, Row& row) {
  const int64_t rowBottom = int64_t(row.y + 1) << 10;
  activate(group, row.y);
  stamp++;
  ddEdge** list = group->active;
  const int n = group->activeCount;
  for (int i = 0; i < n; i++) cover(list[i], group, row);
  int kept = 0;
  for (int i = 0; i < n; i++)
    if (list[i]->y1 >= rowBottom) list[kept++] = list[i];
  group->activeCount = kept;
}

// Coverage level 0 to 255 of a running area sum.
inline uint32_t levelOf(int64_t sum) {
  return uint32_t(std::min<int64_t>(255, ((sum < 0 ? -sum : sum) + 2048) >> 12));
}

// Walks the cells [lo, min(hi + 1, xb)) as pieces of one coverage level and
// one paint, in order, and hands each to `sink.piece(x0, x1, level, paint)`:
// each touched cell alone, and the untouched cells between two of them as one
// span. Clears the deltas and events it passes. Cells at xb and beyond still
// add to the sum but are not drawn.
template <class Sink>
void resolve(const Row& row, Sink& sink) {
  const int end = std::min(row.hi + 1, row.xb);
  int64_t sum = 0;
  ddPaint* current = row.leftPaint;
  int x = row.lo;
  for (int w = row.lo >> 6; w <= row.hi >> 6; w++) {
    uint64_t bits = events[w];
    if (w == row.lo >> 6) bits &= ~uint64_t(0) << (row.lo & 63);
    if (w == row.hi >> 6 && (row.hi & 63) != 63) bits &= (uint64_t(2) << (row.hi & 63)) - 1;
    events[w] &= ~bits;
    while (bits) {
      const int k = w * 64 + __builtin_ctzll(bits);
      bits &= bits - 1;
      if (k > x && x < end) sink.piece(x, std::min(k, end), levelOf(sum), current);
      sum += delta[k];
      delta[k] = 0;
      if (k < end) {
        ddPaint* owner = current;
        if (touchStamp[k] == stamp) {
          owner = touchOwner[k];
          current = touchRight[k];
        }
        sink.piece(k, k + 1, levelOf(sum), owner);
      }
      x = k + 1;
    }
  }
  if (x < end) sink.piece(x, end, levelOf(sum), current);
  sink.finish(end);
}

void resetPaint(ddPaint* p, int width) {
  p->minX = width;
  p->maxX = -1;
  p->inRow = 0;
  p->nextInRow = nullptr;
}

// ddColor_scale for s up to 255, two channels per multiply.
inline ddColor scaleWord(ddColor c, uint32_t s) {
  return ((((c & 0x00FF00FFu) * s) >> 8) & 0x00FF00FFu) |
         (((c >> 8) & 0x00FF00FFu) * s & 0xFF00FF00u);
}

// ddColor_under of one target pixel; src is not transparent.
inline void under(ddColor* t, ddColor src) {
  const ddColor d = *t;
  if (d >= 0xFF000000u) return;
  *t = d < 0x01000000u ? src : scaleWord(src, 255 - (d >> 24)) + d;
}

// One colour under four target pixels.
inline void under4(ddColor* t, __m128i d, __m128i colour, __m128i colour16) {
  const __m128i alpha = _mm_srli_epi32(d, 24);
  const __m128i empty = _mm_cmpeq_epi32(alpha, _mm_setzero_si128());
  const __m128i full = _mm_cmpeq_epi32(alpha, _mm_set1_epi32(255));
  if (_mm_movemask_epi8(empty) == 0xFFFF) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(t), colour);
    return;
  }
  if (_mm_movemask_epi8(full) == 0xFFFF) return;
  // Each channel of the colour times 255 - alpha, shifted down by 8, then
  // added to the target as a whole word.
  const __m128i s32 = _mm_sub_epi32(_mm_set1_epi32(255), alpha);
  const __m128i s16 = _mm_packs_epi32(s32, s32);
  const __m128i pairs = _mm_unpacklo_epi16(s16, s16);
  const __m128i sLo = _mm_unpacklo_epi32(pairs, pairs), sHi = _mm_unpackhi_epi32(pairs, pairs);
  const __m128i lo = _mm_srli_epi16(_mm_mullo_epi16(colour16, sLo), 8);
  const __m128i hi = _mm_srli_epi16(_mm_mullo_epi16(colour16, sHi), 8);
  __m128i out = _mm_add_epi32(_mm_packus_epi16(lo, hi), d);
  out = _mm_or_si128(_mm_and_si128(empty, colour), _mm_andnot_si128(empty, out));
  out = _mm_or_si128(_mm_and_si128(full, d), _mm_andnot_si128(full, out));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(t), out);
}

// One colour under n target pixels, four at a time; sixteen at once where
// the target is still all zero.
void underSpan(ddColor* t, int n, ddColor src) {
  if (src < 0x01000000u) return;
  const __m128i colour = _mm_set1_epi32(int(src));
  const __m128i colour16 = _mm_unpacklo_epi8(colour, _mm_setzero_si128());
  auto at = [t](int i) { return reinterpret_cast<__m128i*>(t + i); };
  int i = 0;
  for (; i + 16 <= n; i += 16) {
    const __m128i d0 = _mm_loadu_si128(at(i)), d1 = _mm_loadu_si128(at(i + 4));
    const __m128i d2 = _mm_loadu_si128(at(i + 8)), d3 = _mm_loadu_si128(at(i + 12));
    const __m128i any = _mm_or_si128(_mm_or_si128(d0, d1), _mm_or_si128(d2, d3));
    if (_mm_movemask_epi8(_mm_cmpeq_epi32(any, _mm_setzero_si128())) == 0xFFFF) {
      _mm_storeu_si128(at(i), colour);
      _mm_storeu_si128(at(i + 4), colour);
      _mm_storeu_si128(at(i + 8), colour);
      _mm_storeu_si128(at(i + 12), colour);
      continue;
    }
    under4(t + i, d0, colour, colour16);
    under4(t + i + 4, d1, colour, colour16);
    under4(t + i + 8, d2, colour, colour16);
    under4(t + i + 12, d3, colour, colour16);
  }
  for (; i + 4 <= n; i += 4) under4(t + i, _mm_loadu_si128(at(i)), colour, colour16);
  for (; i < n; i++) under(t + i, src);
}

// Draws a group's row: solid paints go straight under the target span by
// span; other paints, and any paint under a mask, fill their run of cells
// into the pixel row first, as one call so that their walk across the fill
// starts where the run does.
struct DrawSink {
  ddColor* target;
  const uint8_t* mask;
  const ddCxform& cxform;
  int y, width;
  ddPaint* run = nullptr;
  int runStart = 0;
  bool direct = false;
  ddColor colour = 0;

  __attribute__((always_inline)) void piece(int x0, int x1, uint32_t level, ddPaint* p) {
    if (p != run) {
      flush(x0);
      run = p;
      runStart = x0;
      if (!p) return;
      direct = !mask && p->kind == ddFillSolid;
      if (direct) colour = ddColor_premultiply(ddCxform_apply(cxform, p->data.color));
    }
    if (!p) return;
    if (direct) {
      if (!level) return;
      const ddColor src = level == 255 ? colour : scaleWord(colour, level);
      if (x1 - x0 == 1) {
        if (src >= 0x01000000u) under(target + x0, src);
      } else {
        underSpan(target + x0, x1 - x0, src);
      }
    } else if (mask) {
      for (int x = x0; x < x1; x++)
        coverageRow[x] = (mask[x] == 255 ? level : level * mask[x] / 255) << 12;
    } else {
      std::fill(coverageRow + x0, coverageRow + x1, level << 12);
    }
  }

  void flush(int x1) {
    if (!run) return;
    if (!direct) {
      run->minX = runStart;
      run->maxX = x1;
      ddPaint_fillRow(run, y, pixelRow, cxform);
      for (int x = runStart; x < x1; x++) {
        const ddColor src = pixelRow[x];
        if (src >= 0x01000000u) under(target + x, src);
      }
      std::memset(pixelRow + runStart, 0, size_t(x1 - runStart) * 4);
      std::memset(coverageRow + runStart, 0, size_t(x1 - runStart) * 4);
    }
    resetPaint(run, width);
  }

  void finish(int end) {
    flush(end);
    run = nullptr;
  }
};

// Masks are hard-edged: any coverage under a paint lets the shape through.
struct MaskSink {
  uint8_t* maskRow;
  void piece(int x0, int x1, uint32_t level, ddPaint* p) {
    if (p && level) std::memset(maskRow + x0, 255, size_t(x1 - x0));
  }
  void finish(int) {}
};

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
  Row row{y,       xStart >> 10, int(((int64_t(xEnd) - 1) >> 10) + 1), ddRowWidth + 1, -1,
          nullptr, INT64_MIN};
  coverRow(group, row);
  if (row.lo > row.hi) return;
  DrawSink sink{surface->pixels + size_t(y) * surface->width, maskRow, cxform, y, surface->width};
  resolve(row, sink);
}

void ddEdgeGroup_maskRow(ddEdgeGroup* group, int y, ddFixed xStart, ddFixed xEnd,
                         ddSurface* surface, uint8_t* maskRow) {
  if (!group) return;
  if (group->next) ddEdgeGroup_maskRow(group->next, y, xStart, xEnd, surface, maskRow);
  Row row{y,       xStart >> 10, int(((int64_t(xEnd) - 1) >> 10) + 1), ddRowWidth + 1, -1,
          nullptr, INT64_MIN};
  coverRow(group, row);
  if (row.lo > row.hi) return;
  MaskSink sink{maskRow};
  resolve(row, sink);
}

void ddEdgeGroup_reset(ddEdgeGroup* group) {
  for (; group; group = group->next) {
    group->nextIndex = 0;
    group->activeCount = 0;
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
