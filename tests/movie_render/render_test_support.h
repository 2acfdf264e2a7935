// Shapes and surfaces for rasteriser tests, in pixels rather than ddFixed.
#pragma once

#include <vector>

#include "movie/render/dd_render.h"

struct Pt {
  double x, y;
};

// A shape of closed polygons, each filled with fill index 0 on the inside
// whatever its winding: fill1 for clockwise on screen, fill0 otherwise.
ddShape* polygonShape(const std::vector<std::vector<Pt>>& polygons, ddColor colour);
// Rectangles of one shape, each with its own fill index into `fills`.
struct FilledRect {
  double x0, y0, x1, y1;
  int fill;
  int outside = -1;  // fill index around the rectangle, -1 for none
};
ddShape* rectsShape(const std::vector<FilledRect>& rects, const std::vector<ddColor>& fills);
ddShape* rectShape(double x0, double y0, double x1, double y1, ddColor colour);

struct Canvas {
  ddSurface* surface;
  explicit Canvas(int w, int h) : surface(ddSurface_create(w, h)) {}
  ~Canvas() { ddSurface_destroy(surface); }
  ddColor at(int x, int y) const { return surface->pixels[y * surface->width + x]; }
  ddRect all() const { return ddRect{0, surface->width << 10, 0, surface->height << 10}; }
};

// Updates the render to `m` and draws it over the whole canvas.
void drawShape(ddRender* r, Canvas& c, const ddMatrix& m = ddMatrixIdentity,
               const ddCxform& cx = ddCxformIdentity);

inline int alphaOf(ddColor c) {
  return int(c >> 24);
}
inline int redOf(ddColor c) {
  return int(c & 255);
}
inline int blueOf(ddColor c) {
  return int((c >> 16) & 255);
}
inline ddColor rgba(int r, int g, int b, int a) {
  return ddColor(r) | ddColor(g) << 8 | ddColor(b) << 16 | ddColor(a) << 24;
}
inline ddFixed fx(double v) {
  return ddFixed_fromDouble(v);
}

// Area of the polygon inside each pixel, exactly, 0 to 1.
std::vector<double> referenceCoverage(const std::vector<Pt>& polygon, int w, int h);
