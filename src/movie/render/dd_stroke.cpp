// Strokes: every line is an anti-aliased hairline one pixel wide, plotted
// straight into the target under what is there.
#include <algorithm>
#include <cstdlib>

#include "movie/render/dd_render.h"

namespace {

void plot(ddSurface* s, int x, int y, ddColor colour, int weight) {
  if (x < 0 || y < 0 || x >= s->width || y >= s->height) return;
  ddColor* p = s->pixels + size_t(y) * s->width + x;
  *p = ddColor_under(*p, ddColor_scale(colour, uint32_t(weight)));
}

// Splits a line across two neighbouring pixels: `across` picks the pair,
// `put(index, weight)` plots one of them.
template <class Put>
void plotPair(ddFixed pos, int minPx, int maxPx, Put put) {
  int px = pos >> 10;
  int f = (pos >> 2) & 255;
  if (f > 128) {
    put(px, 384 - f);
    if (px < maxPx - 1) put(px + 1, f - 127);
  } else {
    if (px > minPx) put(px - 1, 128 - f);
    put(px, f + 127);
  }
}

}  // namespace

void ddSurface_plotRow(ddSurface* s, ddFixed pos, int row, ddColor colour, int minPx, int maxPx) {
  plotPair(pos, minPx, maxPx, [&](int x, int w) {
    if (x >= minPx && x < maxPx) plot(s, x, row, colour, w);
  });
}

void ddSurface_plotColumn(ddSurface* s, ddFixed pos, int column, ddColor colour, int minPx,
                          int maxPx) {
  plotPair(pos, minPx, maxPx, [&](int y, int w) {
    if (y >= minPx && y < maxPx) plot(s, column, y, colour, w);
  });
}

void ddEdge_stroke(const ddEdge* e, ddColor colour, ddSurface* surface, const ddRect& clip) {
  const int64_t xMin = clip.xMin, xMax = clip.xMax, yMin = clip.yMin, yMax = clip.yMax;
  int64_t sx = e->x0, sy = e->y0, ex = e->x1, ey = e->y1;
  if (e->reversed) std::swap(sx, ex), std::swap(sy, ey);
  auto outside = [&]() {
    return (sy < yMin && ey < yMin) || (sy > yMax && ey > yMax) || (sx < xMin && ex < xMin) ||
           (sx > xMax && ex > xMax);
  };
  if (outside()) return;
  // Only the start is clipped; the walks below stop at the far limits.
  if (sy < yMin) {
    sx += ((yMin - sy) * e->dxdy) >> 10;
    sy = yMin;
  } else if (sy >= yMax) {
    sx -= ((sy - yMax + 1) * e->dxdy) >> 10;
    sy = yMax - 1;
  }
  if (outside()) return;
  const int64_t ySlope = e->reversed ? -int64_t(e->dydx) : e->dydx;
  if (sx < xMin) {
    sy += ((xMin - sx) * ySlope) >> 10;
    sx = xMin;
  } else if (sx > xMax) {
    sy += ((sx - xMax) * ySlope) >> 10;
    sx = xMax;
  }
  const int64_t dx = ex - sx, dy = ey - sy;
  const int pxMin = int(std::max<int64_t>(0, xMin >> 10));
  const int pxMax = int(std::min<int64_t>(surface->width, (xMax + 1023) >> 10));
  const int pyMin = int(std::max<int64_t>(0, yMin >> 10));
  const int pyMax = int(std::min<int64_t>(surface->height, (yMax + 1023) >> 10));
  if (std::llabs(dy) <= std::llabs(dx)) {
    // Shallow: one sample per column, at the column's centre.
    const int step = dx < 0 ? -1 : 1;
    const int64_t perColumn = dy < 0 ? -int64_t(e->dydx) : int64_t(e->dydx);
    int64_t y = sy + ((512 - (sx & 1023)) * perColumn * step) / 1024;
    for (int64_t x = sx >> 10;; x += step) {
      if (y < yMin || y >= yMax) break;
      if ((step > 0 && x >= pxMax) || (step < 0 && x < pxMin)) break;
      if (x >= pxMin && x < pxMax)
        ddSurface_plotColumn(surface, ddWrap(y), int(x), colour, pyMin, pyMax);
      if (x == (ex >> 10)) break;
      y += perColumn;
    }
  } else {
    // Steep: one sample per row.
    const int step = dy < 0 ? -1 : 1;
    const int64_t perRow = step * int64_t(e->dxdy);
    int64_t x = sx + ((512 - (sy & 1023)) * e->dxdy) / 1024;
    for (int64_t y = sy >> 10;; y += step) {
      if (y < pyMin || y >= pyMax) break;
      ddSurface_plotRow(surface, ddWrap(x), int(y), colour, pxMin, pxMax);
      if (y == (ey >> 10)) break;
      x += perRow;
    }
  }
}

void ddEdgeGroup_drawStrokes(ddEdgeGroup* group, ddSurface* surface, const ddCxform& cxform,
                             const ddRect& clip) {
  for (; group; group = group->next) {
    if (!ddRect_overlap(group->bounds, clip)) continue;
    for (int32_t i = 0; i < group->count; i++) {
      const ddEdge* e = &group->edges[i];
      if (!e->lineWidth) continue;
      // Premultiplied before the transform.
      ddColor colour = ddCxform_apply(cxform, ddColor_premultiply(e->lineColor));
      ddEdge_stroke(e, colour, surface, clip);
    }
  }
}
