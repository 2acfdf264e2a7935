#include "render_test_support.h"

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

ddShape* rectShape(double x0, double y0, double x1, double y1, ddColor colour) {
  return polygonShape({{{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}}}, colour);
}

void drawShape(ddRender* r, Canvas& c, const ddMatrix& m, const ddCxform& cx) {
  ddRender_update(r, nullptr, &m);
  ddRect all = c.all();
  ddRender_draw(r, c.surface, &m, &cx, &all);
}

std::vector<double> referenceCoverage(const std::vector<Pt>& poly, int w, int h) {
  std::vector<double> out(size_t(w) * h);
  const int n = 16;
  for (int y = 0; y < h; y++) {
    for (int x = 0; x < w; x++) {
      int inside = 0;
      for (int j = 0; j < n; j++) {
        for (int i = 0; i < n; i++) {
          double px = x + (i + 0.5) / n, py = y + (j + 0.5) / n;
          bool in = false;
          for (size_t k = 0, l = poly.size() - 1; k < poly.size(); l = k++) {
            const Pt &a = poly[k], &b = poly[l];
            if ((a.y > py) != (b.y > py) && px < (b.x - a.x) * (py - a.y) / (b.y - a.y) + a.x)
              in = !in;
          }
          inside += in;
        }
      }
      out[size_t(y) * w + x] = inside / double(n * n);
    }
  }
  return out;
}
