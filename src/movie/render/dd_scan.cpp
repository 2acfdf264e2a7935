// Scan conversion: the active edge list, coverage of edge cells and spans in
// the shared coverage row, and the row step that fills each paint over its
// range and composites front to back.
#include <emmintrin.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "movie/render/dd_render.h"
#include "movie/render/dd_simd.h"

namespace {

uint32_t coverageRow[ddRowWidth];
ddColor pixelRow[ddRowWidth];
uint8_t maskBytes[ddRowWidth];

// Scan arithmetic is done wide and wrapped back to 32 bits where it is stored,
// so hostile coordinates wrap instead of overflowing.
inline int32_t w32(int64_t v) {
  return ddWrap(v);
}
inline int64_t g(int64_t t) {
  return t & 1023;
}

struct Row {
  int y;
  int xa, xb;     // pixel limits of this draw
  ddPaint* list;  // paints of this row, last pushed first
};

// Spans of the current row. Their paint clears its own range when it fills;
// what lies outside that range is cleared after all paints of the row.
struct Span {
  int from, to;
  ddPaint* paint;
};
std::vector<Span> spans;

// Cells hold coverage in units where a whole cell is ddFullCell; an add of
// zero does nothing, and an add outside the draw only limits the range.
inline void add(const Row& row, ddPaint* p, int64_t c, int64_t v) {
  if (!p || uint32_t(v) == 0) return;
  if (c < row.xa) {
    p->minX = row.xa;
    return;
  }
  if (c >= row.xb) {
    p->maxX = row.xb;
    return;
  }
  p->coverage[c] += uint32_t(v);
  if (c < p->minX) p->minX = int32_t(c);
  if (c + 1 > p->maxX) p->maxX = int32_t(c + 1);
}

// `first` takes the area left of the edge, `second` the rest: split gets the
// part right of it, split2 the part left of it.
inline void split(const Row& row, ddPaint* first, ddPaint* second, int64_t c, int64_t v) {
  add(row, first, c, int64_t(ddFullCell) - v);
  add(row, second, c, v);
}
inline void split2(const Row& row, ddPaint* first, ddPaint* second, int64_t c, int64_t v) {
  add(row, first, c, v);
  add(row, second, c, int64_t(ddFullCell) - v);
}

// Whole cells crossed by an edge, from c towards `last` (exclusive) in steps
// of `dir`. In each, `first` gets v = ((dydx / 2) + curY) * 1024 and `second`
// the rest (swapped when `swap`), and curY rises by dydx. Cells outside the
// draw only limit the ranges, so a run of them is taken in one step: v differs
// between neighbouring cells unless it is the same in all of them, so looking
// at two of them tells whether any gave a non-zero add.
inline int64_t crossCells(const Row& row, ddPaint* first, ddPaint* second, int64_t c, int64_t last,
                          int dir, bool swap, ddEdge* e) {
  const int64_t dydx = e->dydx, half = dydx / 2;
  int64_t curY = e->curY;
  auto cell = [&](int64_t at) {
    const int64_t v = w32((half + curY) * 1024);
    if (swap) {
      add(row, first, at, int64_t(ddFullCell) - v);
      add(row, second, at, v);
    } else {
      add(row, first, at, v);
      add(row, second, at, int64_t(ddFullCell) - v);
    }
    curY = w32(curY + dydx);
  };
  while (dir < 0 ? c > last : c < last) {
    const bool outside = c < row.xa || c >= row.xb;
    if (!outside) {
      cell(c);
      c += dir;
      continue;
    }
    // Cells from c up to the draw's edge or `last`, whichever comes first.
    int64_t stop = dir < 0 ? (c >= row.xb ? std::max<int64_t>(last, row.xb - 1) : last)
                           : (c < row.xa ? std::min<int64_t>(last, row.xa) : last);
    int64_t n = dir < 0 ? c - stop : stop - c;
    cell(c);
    if (n > 1) cell(c + dir);
    if (n > 2) curY = w32(curY + (n - 2) * dydx);
    c = stop;
  }
  e->curY = int32_t(curY);
  return c;
}

void coverLeftward(ddEdge* e, ddPaint* first, ddPaint* second, const Row& row) {
  const int64_t T = int64_t(row.y) << 10, B = int64_t(row.y + 1) << 10;
  const int64_t X = e->curX, fX = g(X), dxdy = e->dxdy, dydx = e->dydx;
  const int64_t x0 = e->x0, y0 = e->y0, x1 = e->x1, y1 = e->y1;
  const int64_t xn = X + dxdy;
  const int64_t end = std::max(xn, x1);
  int64_t c;
  if (y0 < T) {
    c = X >> 10;
    if ((x1 >> 10) == c && y1 < B) {
      split(row, first, second, c, ((1024 - g(x1)) * 1024) - ((fX - g(x1)) * g(y1)) / 2);
      return;
    }
    if (fX + dxdy > 0) {
      const int64_t v = ((dxdy / 2) + fX) * 1024;
      split2(row, first, second, c, v);
      e->curX = w32(xn);
      return;
    }
    e->curY = w32(int64_t(e->curY) + dydx);
    split2(row, first, second, c, (fX * e->curY) / 2);
  } else {
    c = x0 >> 10;
    if (y1 < B && (x1 >> 10) == c) {
      split(row, first, second, c, (1024 - (g(y1) + g(y0)) / 2) * (x0 - x1));
      return;
    }
    if ((xn >> 10) == c) {
      e->curX = w32(xn);
      split(row, first, second, c, ((g(x0) - g(xn)) * (1024 - g(y0))) / 2);
      return;
    }
    e->curY = w32(int64_t(e->curY) + dydx);
    split2(row, first, second, c, (1024 - (g(y0) + e->curY) / 2) * g(x0));
  }
  c = crossCells(row, first, second, c - 1, end >> 10, -1, false, e);
  e->curX = w32(int64_t(e->curX) + dxdy);
  const int64_t cx = e->curX, curY = e->curY;
  if (cx <= x1 && y1 != B)
    split(row, first, second, c, (1024 - (g(y1) + curY) / 2) * (1024 - g(x1)));
  else if (curY >= 1024 && y1 != B)
    add(row, first, c, ddFullCell);
  else
    split(row, first, second, c, ((1024 - g(cx)) * (1024 - curY)) / 2);
}

void coverRightward(ddEdge* e, ddPaint* first, ddPaint* second, const Row& row) {
  const int64_t T = int64_t(row.y) << 10, B = int64_t(row.y + 1) << 10;
  const int64_t X = e->curX, fX = g(X), dxdy = e->dxdy, dydx = e->dydx;
  const int64_t x0 = e->x0, y0 = e->y0, x1 = e->x1, y1 = e->y1;
  const int64_t xn = X + dxdy;
  const int64_t end = std::min(xn, x1);
  int64_t c;
  if (y0 < T) {
    c = X >> 10;
    if (x1 < (c + 1) * 1024 && y1 < B) {
      split2(row, first, second, c, g(x1) * 1024 - ((g(x1) - fX) * g(y1)) / 2);
      return;
    }
    if (fX + dxdy < 1024) {
      split2(row, first, second, c, ((dxdy / 2) + fX) * 1024);
      e->curX = w32(xn);
      return;
    }
    e->curY = w32(int64_t(e->curY) + dydx);
    split(row, first, second, c, ((1024 - fX) * e->curY) / 2);
  } else {
    c = x0 >> 10;
    if (y1 < B && x1 < (c + 1) * 1024) {
      split2(row, first, second, c, (1024 - (g(y1) + g(y0)) / 2) * (x1 - x0));
      return;
    }
    if (xn < (c + 1) * 1024) {
      e->curX = w32(xn);
      split2(row, first, second, c, ((g(xn) - g(x0)) * (1024 - g(y0))) / 2);
      return;
    }
    e->curY = w32(int64_t(e->curY) + dydx);
    split2(row, first, second, c, (1024 - (g(y0) + e->curY) / 2) * (1024 - g(x0)));
  }
  c = crossCells(row, first, second, c + 1, end >> 10, 1, true, e);
  e->curX = w32(int64_t(e->curX) + dxdy);
  const int64_t cx = e->curX, curY = e->curY;
  if (cx >= x1 && y1 != B)
    split2(row, first, second, c, (1024 - (g(y1) + curY) / 2) * g(x1));
  else if (curY >= 1024 && y1 != B)
    add(row, second, c, ddFullCell);
  else
    split2(row, first, second, c, (g(cx) * (1024 - curY)) / 2);
}

void cover(ddEdge* e, const ddEdgeGroup* group, const Row& row) {
  ddPaint* first = group->flip ? e->right : e->left;
  ddPaint* second = group->flip ? e->left : e->right;
  if (e->dxdy == 0) {
    // A vertical edge starting inside the row leaves it to the edge it joins.
    if (e->y0 > (int64_t(row.y) << 10)) return;
    const int64_t c = e->curX >> 10;
    if (c >= row.xa && c <= row.xb) {
      split(row, first, second, c, (1024 - g(e->curX)) * 1024);
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
    if (e->y0 <= rowTop) {
      e->curX = w32(e->xRowStart + (int64_t(y) - (e->y0 >> 10)) * e->dxdy);
      e->curY = w32(-((int64_t(1024 - (e->curX & 1023)) * e->dydx) / 1024));
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

// Activation, edge cells, removal of the edges that end in the row, and the
// spans between the edges that go on. Leaves the row's paints in `row.list`.
void coverRow(ddEdgeGroup* group, Row& row) {
  const int64_t rowBottom = int64_t(row.y + 1) << 10;
  activate(group, row.y);
  ddEdge** list = group->active;
  const int n = group->activeCount;
  for (int i = 0; i < n; i++) {
    ddEdge* e = list[i];
    cover(e, group, row);
    if ((e->y1 >> 10) > row.y) {
      int64_t f = e->curX & 1023;
      if (e->dxdy <= 0) f = 1024 - f;
      e->curY = w32(-((f * e->dydx) / 1024));
    }
    pushPaint(row, e->right);
    pushPaint(row, e->left);
  }
  int kept = 0;
  for (int i = 0; i < n; i++)
    if (list[i]->y1 >= rowBottom) list[kept++] = list[i];
  group->activeCount = kept;
  for (int i = 0; i + 1 < kept; i++) {
    ddPaint* p = group->flip ? list[i]->left : list[i]->right;
    if (!p) continue;
    const int from = int(std::max<int64_t>(list[i]->curX >> 10, row.xa));
    const int to = int(std::min<int64_t>(list[i + 1]->curX >> 10, row.xb));
    if (from >= to) continue;
    uint32_t* cells = p->coverage;
    const __m128i whole = _mm_set1_epi32(int(ddFullCell));
    int c = from;
    for (; c + 4 <= to; c += 4) {
      __m128i* at = reinterpret_cast<__m128i*>(cells + c);
      _mm_storeu_si128(at, _mm_add_epi32(_mm_loadu_si128(at), whole));
    }
    for (; c < to; c++) cells[c] += ddFullCell;
    spans.push_back({from, to, p});
  }
}

void resetPaint(ddPaint* p, int width) {
  p->minX = width;
  p->maxX = -1;
  p->inRow = 0;
  p->nextInRow = nullptr;
}

// Span cells that their paint's range did not take, once every paint has
// filled and before the ranges are reset. Another paint's range may have
// taken them, but they are left zero for the next row all the same.
void clearSpans() {
  for (const Span& s : spans) {
    const int lo = s.paint->minX, hi = s.paint->maxX;
    if (lo >= hi || lo >= s.to || hi <= s.from) {
      std::memset(coverageRow + s.from, 0, size_t(s.to - s.from) * 4);
      continue;
    }
    if (s.from < lo) std::memset(coverageRow + s.from, 0, size_t(lo - s.from) * 4);
    if (s.to > hi) std::memset(coverageRow + hi, 0, size_t(s.to - hi) * 4);
  }
  spans.clear();
}

// After the row: every paint of the list back to idle.
void resetPaints(ddPaint* list, int width) {
  for (ddPaint* p = list; p;) {
    ddPaint* next = p->nextInRow;
    resetPaint(p, width);
    p = next;
  }
}

// ddColor_under of one target pixel.
inline void under(ddColor* t, ddColor src) {
  const ddColor d = *t;
  if (d >= 0xFF000000u || src < 0x01000000u) return;
  *t = d < 0x01000000u ? src : scaleWord(src, 255 - (d >> 24)) + d;
}

// Four source pixels under four target pixels, as `under` does one by one.
inline void underVec(ddColor* t, __m128i src) {
  const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(t));
  const __m128i zero = _mm_setzero_si128();
  const __m128i alpha = _mm_srli_epi32(d, 24);
  const __m128i srcEmpty = _mm_cmpeq_epi32(_mm_srli_epi32(src, 24), zero);
  const __m128i keep = _mm_or_si128(_mm_cmpeq_epi32(alpha, _mm_set1_epi32(255)), srcEmpty);
  if (_mm_movemask_epi8(keep) == 0xFFFF) return;
  const __m128i empty = _mm_cmpeq_epi32(alpha, zero);
  if (_mm_movemask_epi8(_mm_or_si128(empty, keep)) == 0xFFFF) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(t),
                     _mm_or_si128(_mm_and_si128(keep, d), _mm_andnot_si128(keep, src)));
    return;
  }
  // The source scaled by 255 - alpha, added to the target as a whole word.
  __m128i out = _mm_add_epi32(scaleVec(src, _mm_sub_epi32(_mm_set1_epi32(255), alpha)), d);
  out = _mm_or_si128(_mm_and_si128(empty, src), _mm_andnot_si128(empty, out));
  out = _mm_or_si128(_mm_and_si128(keep, d), _mm_andnot_si128(keep, out));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(t), out);
}

// Four row pixels under the target, the row pixels cleared.
inline void under4(ddColor* t, ddColor* s) {
  __m128i* at = reinterpret_cast<__m128i*>(s);
  const __m128i src = _mm_loadu_si128(at);
  _mm_storeu_si128(at, _mm_setzero_si128());
  underVec(t, src);
}

// The pixel row under the target row over [lo, hi), then cleared.
void composite(ddColor* target, int lo, int hi) {
  int x = lo;
  for (; x + 4 <= hi; x += 4) under4(target + x, pixelRow + x);
  for (; x < hi; x++) {
    under(target + x, pixelRow[x]);
    pixelRow[x] = 0;
  }
}

// A solid paint's range straight under the target: what filling it into an
// empty pixel row and compositing that would give, when no other paint of
// the row shares its cells. Its cells are cleared as they are read.
void underSolid(ddPaint* p, ddColor* target, const ddCxform& cxform) {
  const ddColor colour = ddColor_premultiply(ddCxform_apply(cxform, p->data.color));
  uint32_t* cells = p->coverage;
  const int end = p->maxX;
  if (colour < 0x01000000u) {
    std::memset(cells + p->minX, 0, size_t(end - p->minX) * 4);
    return;
  }
  const __m128i byte = _mm_set1_epi32(255), zero = _mm_setzero_si128();
  const __m128i fill = _mm_set1_epi32(int(colour));
  auto one = [&](int x, uint32_t c) {
    if (c) under(target + x, c == 255 ? colour : scaleWord(colour, c));
  };
  // Four cells at a time; whole cells take the colour itself and empty ones
  // scale it to nothing.
  auto four = [&](int at, __m128i c) {
    if (_mm_movemask_epi8(_mm_cmpeq_epi32(c, byte)) == 0xFFFF) {
      underVec(target + at, fill);
    } else if (_mm_movemask_epi8(_mm_cmpeq_epi32(c, zero)) != 0xFFFF) {
      const __m128i whole = _mm_cmpeq_epi32(c, byte);
      underVec(target + at, _mm_or_si128(_mm_and_si128(whole, fill),
                                         _mm_andnot_si128(whole, scaleVec(fill, c))));
    }
  };
  auto levels = [&](int at) {
    __m128i* cell = reinterpret_cast<__m128i*>(cells + at);
    const __m128i c = _mm_and_si128(_mm_srli_epi32(_mm_loadu_si128(cell), 12), byte);
    _mm_storeu_si128(cell, zero);
    return c;
  };
  int x = p->minX;
  // Sixteen at a time first: the inside of a large shape is long runs of whole
  // cells over an empty or opaque target, and gaps between shapes long runs of
  // empty cells.
  for (; x + 16 <= end; x += 16) {
    const __m128i c0 = levels(x), c1 = levels(x + 4), c2 = levels(x + 8), c3 = levels(x + 12);
    const __m128i both = _mm_and_si128(_mm_and_si128(c0, c1), _mm_and_si128(c2, c3));
    if (_mm_movemask_epi8(_mm_cmpeq_epi32(both, byte)) == 0xFFFF) {
      __m128i* t = reinterpret_cast<__m128i*>(target + x);
      const __m128i d0 = _mm_loadu_si128(t), d1 = _mm_loadu_si128(t + 1);
      const __m128i d2 = _mm_loadu_si128(t + 2), d3 = _mm_loadu_si128(t + 3);
      const __m128i any = _mm_or_si128(_mm_or_si128(d0, d1), _mm_or_si128(d2, d3));
      if (_mm_movemask_epi8(_mm_cmpeq_epi32(_mm_srli_epi32(any, 24), zero)) == 0xFFFF) {
        _mm_storeu_si128(t, fill);
        _mm_storeu_si128(t + 1, fill);
        _mm_storeu_si128(t + 2, fill);
        _mm_storeu_si128(t + 3, fill);
        continue;
      }
      const __m128i all = _mm_and_si128(_mm_and_si128(d0, d1), _mm_and_si128(d2, d3));
      if (_mm_movemask_epi8(_mm_cmpeq_epi32(_mm_srli_epi32(all, 24), byte)) == 0xFFFF) continue;
    } else if (_mm_movemask_epi8(_mm_cmpeq_epi32(
                   _mm_or_si128(_mm_or_si128(c0, c1), _mm_or_si128(c2, c3)), zero)) == 0xFFFF) {
      continue;
    }
    four(x, c0);
    four(x + 4, c1);
    four(x + 8, c2);
    four(x + 12, c3);
  }
  for (; x + 4 <= end; x += 4) four(x, levels(x));
  for (; x < end; x++) {
    one(x, ddCoverage_level(cells[x]));
    cells[x] = 0;
  }
}

// True when no two paints of the list have ranges that meet: each paint then
// has its pixels to itself. Long lists are not looked at.
bool rangesApart(const ddPaint* list) {
  const ddPaint* seen[8];
  int n = 0;
  for (const ddPaint* p = list; p; p = p->nextInRow) {
    if (p->minX >= p->maxX) continue;
    if (n == 8) return false;
    for (int i = 0; i < n; i++)
      if (p->minX < seen[i]->maxX && seen[i]->minX < p->maxX) return false;
    seen[n++] = p;
  }
  return true;
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
  Row row{y, xStart >> 10, int(((int64_t(xEnd) - 1) >> 10) + 1), nullptr};
  coverRow(group, row);
  int lo = ddRowWidth, hi = 0;
  const int width = surface->width;
  ddColor* target = surface->pixels + size_t(y) * width;
  // Paints whose ranges are apart go under the target one by one.
  const bool apart = !maskRow && rangesApart(row.list);
  // Each paint fills its whole range from the shared cells, and clears them:
  // where two paints met in a cell, the first in the list draws their sum.
  for (ddPaint* p = row.list; p; p = p->nextInRow) {
    if (p->minX < 0 || p->maxX > width) {
      std::fputs("bad fill bounds", stderr);
    } else if (apart && p->minX < p->maxX) {
      if (p->kind == ddFillSolid) {
        underSolid(p, target, cxform);
      } else {
        ddPaint_fillRow(p, y, pixelRow, cxform);
        composite(target, p->minX, p->maxX);
      }
    } else if (p->minX < p->maxX) {
      uint32_t* cells = p->coverage;
      if (maskRow) {
        for (int x = p->minX; x < p->maxX; x++) {
          const uint32_t m = maskRow[x];
          if (m < 255) cells[x] = m ? uint32_t(uint64_t(m) * cells[x] / 255) : 0;
        }
      }
      ddPaint_fillRow(p, y, pixelRow, cxform);
      lo = std::min(lo, p->minX);
      hi = std::max(hi, p->maxX);
    }
  }
  clearSpans();
  resetPaints(row.list, width);
  if (lo < hi) composite(target, lo, hi);
}

void ddEdgeGroup_maskRow(ddEdgeGroup* group, int y, ddFixed xStart, ddFixed xEnd,
                         ddSurface* surface, uint8_t* maskRow) {
  if (!group) return;
  if (group->next) ddEdgeGroup_maskRow(group->next, y, xStart, xEnd, surface, maskRow);
  Row row{y, xStart >> 10, int(((int64_t(xEnd) - 1) >> 10) + 1), nullptr};
  coverRow(group, row);
  const int width = surface->width;
  for (ddPaint* p = row.list; p; p = p->nextInRow) {
    if (p->minX >= 0 && p->maxX <= width && p->minX < p->maxX) {
      // The raw cell, not its coverage level: masks are hard-edged.
      uint32_t* cells = p->coverage;
      for (int x = p->minX; x < p->maxX; x++)
        maskRow[x] = uint8_t(std::min<uint64_t>(255, uint64_t(maskRow[x]) + cells[x]));
      std::memset(cells + p->minX, 0, size_t(p->maxX - p->minX) * 4);
    }
  }
  clearSpans();
  resetPaints(row.list, width);
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
