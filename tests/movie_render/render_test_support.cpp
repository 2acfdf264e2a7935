#include "render_test_support.h"

#include <cmath>

namespace {

void record(ddShape* s, int type, int32_t a = 0, int32_t b = 0) {
  ddShapeRecord* r = ddShape_addRecord(s);
  *r = ddShapeRecord{type, {a, b, 0, 0}};
}

double signedArea(const std::vector<Pt>& p) {
  double a = 0;
  for (size_t i = 0; i < p.size(); i++) {
    const Pt &u = p[i], &v = p[(i + 1) % p.size()];
    a += u.x * v.y - v.x * u.y;
  }
  return a / 2;
}

}  // namespace

ddShape* polygonShape(const std::vector<std::vector<Pt>>& polygons, ddColor colour) {
  ddShape* s = ddShape_create();
  ddFill f{};
  f.kind = ddFillSolid;
  f.data.color = colour;
  f.matrix = ddMatrixIdentity;
  ddShape_addFill(s, f);
  for (const auto& poly : polygons) {
    // With y down, a positive area means clockwise on screen: inside on the right.
    bool clockwise = signedArea(poly) > 0;
    record(s, ddRecordFill0, clockwise ? -1 : 0);
    record(s, ddRecordFill1, clockwise ? 0 : -1);
    ddShape_moveTo(s, fx(poly[0].x), fx(poly[0].y));
    for (size_t i = 1; i <= poly.size(); i++) {
      const Pt& p = poly[i % poly.size()];
      ddShape_lineTo(s, fx(p.x), fx(p.y));
    }
  }
  ddShape_finish(s);
  return s;
}

ddShape* rectsShape(const std::vector<FilledRect>& rects, const std::vector<ddColor>& fills) {
  ddShape* s = ddShape_create();
  for (ddColor colour : fills) {
    ddFill f{};
    f.kind = ddFillSolid;
    f.data.color = colour;
    f.matrix = ddMatrixIdentity;
    ddShape_addFill(s, f);
  }
  for (const FilledRect& r : rects) {
    // Clockwise on screen: the inside is on the right, fill1.
    record(s, ddRecordFill0, r.outside);
    record(s, ddRecordFill1, r.fill);
    ddShape_moveTo(s, fx(r.x0), fx(r.y0));
    ddShape_lineTo(s, fx(r.x1), fx(r.y0));
    ddShape_lineTo(s, fx(r.x1), fx(r.y1));
    ddShape_lineTo(s, fx(r.x0), fx(r.y1));
    ddShape_lineTo(s, fx(r.x0), fx(r.y0));
  }
  ddShape_finish(s);
  return s;
}

ddShape* rectShape(double x0, double y0, double x1, double y1, ddColor colour) {
  return polygonShape({{{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}}}, colour);
}

void drawShape(ddRender* r, Canvas& c, const ddMatrix& m, const ddCxform& cx) {
  ddRender_update(r, nullptr, &m);
  ddRect all = c.all();
  ddRender_draw(r, c.surface, &m, &cx, &all);
}

std::vector<double> referenceCoverage(const std::vector<Pt>& poly, int w, int h) {
  // Exact: the polygon clipped to each pixel square, then its area.
  std::vector<double> out(size_t(w) * h);
  auto clip = [](const std::vector<Pt>& in, auto inside, auto cross) {
    std::vector<Pt> res;
    for (size_t i = 0; i < in.size(); i++) {
      const Pt &a = in[i], &b = in[(i + 1) % in.size()];
      bool ia = inside(a), ib = inside(b);
      if (ia) res.push_back(a);
      if (ia != ib) res.push_back(cross(a, b));
    }
    return res;
  };
  for (int y = 0; y < h; y++) {
    for (int x = 0; x < w; x++) {
      std::vector<Pt> p = poly;
      for (int side = 0; side < 4 && !p.empty(); side++) {
        const bool vertical = side < 2;
        const double limit = side == 0 ? x : side == 1 ? x + 1 : side == 2 ? y : y + 1;
        const bool keepAbove = side == 0 || side == 2;
        auto coord = [vertical](const Pt& q) { return vertical ? q.x : q.y; };
        p = clip(
            p, [&](const Pt& q) { return keepAbove ? coord(q) >= limit : coord(q) <= limit; },
            [&](const Pt& a, const Pt& b) {
              double t = (limit - coord(a)) / (coord(b) - coord(a));
              return Pt{a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
            });
      }
      out[size_t(y) * w + x] = p.size() < 3 ? 0 : std::fabs(signedArea(p));
    }
  }
  return out;
}
