// Coverage, compositing, paints, masks, edge caching and the limits of the
// rasteriser, on shapes built here in pixels.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "movie/render/dd_render.h"

namespace {

struct Pt {
  double x, y;
};
const auto rgba = [](int r, int g, int b, int a) {
  return ddColor(r | g << 8 | b << 16) | ddColor(a) << 24;
};
const auto alphaOf = [](ddColor c) { return int(c >> 24); };
const auto redOf = [](ddColor c) { return int(c & 255); };
const auto fx = [](double v) { return ddFixed_fromDouble(v); };
const ddColor white = 0xFFFFFFFFu;

double signedArea(const std::vector<Pt>& p) {
  double a = 0;
  for (size_t i = 0; i < p.size(); i++)
    a += p[i].x * p[(i + 1) % p.size()].y - p[(i + 1) % p.size()].x * p[i].y;
  return a / 2;
}

void record(ddShape* s, int type, int32_t a = 0, int32_t b = 0) {
  *ddShape_addRecord(s) = ddShapeRecord{type, {a, b, 0, 0}};
}

ddShape* withFill(ddColor colour) {
  ddShape* s = ddShape_create();
  ddShape_addFill(s, ddFill{ddFillSolid, {colour}, ddMatrixIdentity});
  return s;
}

// Closed polygons filled inside whatever their winding; `group` starts each
// after the first in a group of its own.
ddShape* polygons(const std::vector<std::vector<Pt>>& polys, ddColor colour, bool group = false) {
  ddShape* s = withFill(colour);
  for (const auto& poly : polys) {
    if (group && &poly != &polys[0]) record(s, ddRecordGroup);
    const bool clockwise = signedArea(poly) > 0;  // y down: inside on the right
    record(s, ddRecordFill0, clockwise ? -1 : 0);
    record(s, ddRecordFill1, clockwise ? 0 : -1);
    ddShape_moveTo(s, fx(poly[0].x), fx(poly[0].y));
    for (size_t i = 1; i <= poly.size(); i++)
      ddShape_lineTo(s, fx(poly[i % poly.size()].x), fx(poly[i % poly.size()].y));
  }
  ddShape_finish(s);
  return s;
}
ddShape* rect(double x0, double y0, double x1, double y1, ddColor colour) {
  return polygons({{{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}}}, colour);
}

struct Shape {
  ddShape* shape;
  ddRender* render;
  explicit Shape(ddShape* s) : shape(s), render(ddRender_create(s)) {}
  ~Shape() {
    ddRender_destroy(render);
    ddShape_destroy(shape);
  }
};

struct Canvas {
  ddSurface* surface;
  Canvas(int w, int h) : surface(ddSurface_create(w, h)) {}
  ~Canvas() { ddSurface_destroy(surface); }
  ddColor& at(int x, int y) const { return surface->pixels[y * surface->width + x]; }
  ddRect all() const { return ddRect{0, surface->width << 10, 0, surface->height << 10}; }
  void draw(const Shape& s, const ddMatrix& m = ddMatrixIdentity,
            const ddCxform& cx = ddCxformIdentity) const {
    ddRender_update(s.render, nullptr, &m);
    const ddRect clip = all();
    ddRender_draw(s.render, surface, &m, &cx, &clip);
  }
};

void expectRowsClean() {
  for (int i = 0; i < ddRowWidth; i++) {
    ASSERT_EQ(ddRender_coverageRow()[i], 0u) << i;
    ASSERT_EQ(ddRender_pixelRow()[i], 0u) << i;
    ASSERT_EQ(ddRender_maskRow()[i], 0) << i;
  }
}

// Exact area of the polygon inside pixel (x, y): clipped to its square.
double exactCoverage(std::vector<Pt> p, int x, int y) {
  for (int side = 0; side < 4 && !p.empty(); side++) {
    const double limit = side == 0 ? x : side == 1 ? x + 1 : side == 2 ? y : y + 1;
    auto at = [&](const Pt& q) { return side < 2 ? q.x : q.y; };
    auto in = [&](const Pt& q) { return side % 2 == 0 ? at(q) >= limit : at(q) <= limit; };
    std::vector<Pt> out;
    for (size_t i = 0; i < p.size(); i++) {
      const Pt &a = p[i], &b = p[(i + 1) % p.size()];
      if (in(a)) out.push_back(a);
      if (in(a) != in(b)) {
        const double t = (limit - at(a)) / (at(b) - at(a));
        out.push_back({a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)});
      }
    }
    p = out;
  }
  return p.size() < 3 ? 0 : std::fabs(signedArea(p));
}

// Edges at fractions of a pixel: the edge cell holds the partial area and a
// span over it adds a whole cell, which reading bits 12 to 19 drops again.
TEST(Coverage, PartialEdgeCellsUnderSpansKeepTheirPartialArea) {
  for (double f : {0.0, 1 / 1024.0, 0.25, 0.5, 0.75, 1023 / 1024.0}) {
    SCOPED_TRACE(f);
    Canvas c(12, 12);
    Shape s(rect(2 + f, 3 + f, 10, 10, white));
    c.draw(s);
    const double left = (1 - f) * 255;
    EXPECT_NEAR(alphaOf(c.at(2, 6)), left, 2);  // left edge's cell
    EXPECT_NEAR(redOf(c.at(2, 6)), left, 2);
    EXPECT_NEAR(alphaOf(c.at(6, 3)), left, 2);  // top edge's cells under a span
    EXPECT_NEAR(alphaOf(c.at(2, 3)), left * (1 - f), 3);
    EXPECT_EQ(c.at(6, 6), white);
    for (int i = 0; i < 12; i++) {
      EXPECT_EQ(c.at(1, i) | c.at(i, 2) | c.at(10, i) | c.at(i, 10), 0u) << i;
    }
  }
}

// Cells take coverage in 20-bit steps read from bits 12 to 19, so pixels
// where edge terms wrap can be far off; the mean is a guard, not exactness.
TEST(Coverage, RandomPolygonsStayNearTheExactAreaOnAverage) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> d(0.3, 23.7);
  double sum[2] = {0, 0};
  int far[2] = {0, 0};
  for (int round = 0; round < 80; round++) {
    // Star-shaped around the centre so that edges never cross.
    std::vector<Pt> poly;
    const int n = 3 + round % 9;
    for (int i = 0; i < n; i++) {
      const double ang = (i + 0.5 * (round % 3) / 3.0) * 2 * M_PI / n;
      const double r = 3 + std::fmod(d(rng), 8.5);
      Pt p{12 + r * std::cos(ang), 12 + r * std::sin(ang)};
      if (round % 4 == 2) p = {std::round(p.x), std::round(p.y)};
      if (round % 4 == 3) p = {std::round(p.x * 2) / 2, std::round(p.y * 2) / 2};
      poly.push_back(p);
    }
    if (round % 2) std::reverse(poly.begin(), poly.end());
    Canvas c(24, 24);
    Shape s(polygons({poly}, white));
    c.draw(s);
    const int k = round % 4 >= 2;
    for (int y = 0; y < 24; y++)
      for (int x = 0; x < 24; x++) {
        const double err = std::fabs(alphaOf(c.at(x, y)) / 255.0 - exactCoverage(poly, x, y));
        sum[k] += err;
        far[k] += err > 0.25;
      }
  }
  // Measured: 0.0017 and 0.0040, with 49 and 109 of 23040 pixels each off by more
  // than a quarter.
  EXPECT_LE(sum[0] / 23040, 0.0025);
  EXPECT_LE(sum[1] / 23040, 0.005);
  EXPECT_LE(far[0], 65);
  EXPECT_LE(far[1], 130);
}

// Two fills meeting inside a pixel column add into the same cell: the paint
// first in the row's list (blue, pushed last) draws the whole sum, the other
// finds nothing, so the seam never blends.
TEST(Coverage, FillsMeetingInACellDoNotBlend) {
  ddShape* shape = withFill(rgba(255, 0, 0, 255));
  ddShape_addFill(shape, ddFill{ddFillSolid, {rgba(0, 0, 255, 255)}, ddMatrixIdentity});
  auto path = [&](int fill0, int fill1, std::vector<Pt> pts) {
    record(shape, ddRecordFill0, fill0);
    record(shape, ddRecordFill1, fill1);
    ddShape_moveTo(shape, fx(pts[0].x), fx(pts[0].y));
    for (size_t i = 1; i < pts.size(); i++) ddShape_lineTo(shape, fx(pts[i].x), fx(pts[i].y));
  };
  path(-1, 0, {{4.5, 6}, {1, 6}, {1, 0}, {4.5, 0}});
  path(1, 0, {{4.5, 0}, {4.5, 6}});  // one edge with both fills
  path(-1, 1, {{4.5, 0}, {8, 0}, {8, 6}, {4.5, 6}});
  ddShape_finish(shape);
  Shape s(shape);
  Canvas c(10, 6);
  c.draw(s);
  for (int y = 0; y < 6; y++) {
    EXPECT_EQ(c.at(2, y), rgba(255, 0, 0, 255)) << y;
    EXPECT_EQ(c.at(6, y), rgba(0, 0, 255, 255)) << y;
    if (y >= 1 && y < 5) {
      EXPECT_EQ(c.at(4, y), rgba(0, 0, 255, 255)) << y;
    }
  }
}

TEST(Compositing, FrontToBackWithSemiTransparentLayers) {
  Canvas c(4, 4);
  Shape front(rect(0, 0, 4, 4, rgba(255, 0, 0, 128))),
      middle(rect(0, 0, 4, 4, rgba(0, 0, 255, 128)));
  Shape back(rect(0, 0, 4, 4, white)), later(rect(0, 0, 4, 4, rgba(0, 255, 0, 255)));
  c.draw(front);
  c.draw(middle);
  c.draw(back);
  const ddColor p = c.at(1, 1);
  // Red 0.5 + white 0.25, green white 0.25, blue 0.25 + white 0.25.
  EXPECT_GE(alphaOf(p), 254);
  EXPECT_NEAR(redOf(p), 191, 3);
  EXPECT_NEAR(int((p >> 8) & 255), 63, 3);
  EXPECT_NEAR(int((p >> 16) & 255), 126, 3);
  c.at(1, 1) = rgba(0, 0, 255, 255);
  c.draw(later);  // opaque pixels take nothing more
  EXPECT_EQ(c.at(1, 1), rgba(0, 0, 255, 255));
}

// Spans and solid paints go under the target four pixels at a time; each
// target pixel must still end as ddColor_under of itself and what the shape
// gives an empty target, and a mask over everything (which sends every paint
// through the pixel row) must not change a pixel.
TEST(Compositing, BlockPathsMatchThePixelRow) {
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> d(-2, 42);
  const int alphas[] = {0, 255, 1, 128, 254, 0, 255, 77};
  for (int round = 0; round < 40; round++) {
    std::vector<Pt> poly;
    const int n = 3 + round % 6;
    for (int i = 0; i < n; i++) {
      const double ang = i * 2 * M_PI / n, r = 4 + std::fmod(d(rng), 16);
      poly.push_back({20 + r * std::cos(ang), 12 + r * std::sin(ang)});
    }
    if (round % 4 == 0)
      poly = {{1.0 + round % 5, 0.5}, {38, 0.5}, {38, 23.5}, {1.0 + round % 5, 23.5}};
    const ddColor colour = rgba(int(rng() % 256), 90, 200, round % 2 ? 255 : int(rng() % 256));
    Canvas plain(40, 24), masked(40, 24), alone(40, 24);
    for (int i = 0; i < 40 * 24; i++) {
      // Long runs of one kind of target pixel, then a mix; alpha 0 with
      // colour left in it still counts as empty.
      const int x = i % 40, a = x < 20 ? alphas[(x / 8 + i / 40) % 8] : alphas[(x * 5 + i) % 8];
      plain.surface->pixels[i] = masked.surface->pixels[i] =
          rgba(a ? a * 3 / 4 : x % 7, a / 2, a / 3, a);
    }
    std::vector<ddColor> before(plain.surface->pixels, plain.surface->pixels + 40 * 24);
    Shape s(polygons({poly}, colour)), all(rect(-1, -1, 41, 25, white));
    alone.draw(s);
    plain.draw(s);
    ddRender_update(all.render, nullptr, &ddMatrixIdentity);
    s.render->mask = all.render;
    masked.draw(s);
    s.render->mask = nullptr;
    for (int i = 0; i < 40 * 24; i++) {
      ASSERT_EQ(plain.surface->pixels[i], ddColor_under(before[i], alone.surface->pixels[i]))
          << round << " at " << i;
      ASSERT_EQ(plain.surface->pixels[i], masked.surface->pixels[i]) << round << " at " << i;
    }
  }
}

// A mask lets the shape through where it covers, and it takes the raw cell,
// not its level: an edge a quarter or three quarters into a pixel lets it
// through whole.
TEST(Mask, ShapeShowsOnlyInsideItsHardEdgedMask) {
  const ddColor green = rgba(0, 255, 0, 255);
  Shape shape(rect(0, 0, 8, 4, green));
  for (double left : {2.0, 2.25, 2.75}) {
    SCOPED_TRACE(left);
    Shape mask(rect(left, 1, 5, 3, white));
    ddRender_update(mask.render, nullptr, &ddMatrixIdentity);
    shape.render->mask = mask.render;
    Canvas c(8, 4);
    c.draw(shape);
    for (int y = 0; y < 4; y++)
      for (int x = 0; x < 8; x++)
        EXPECT_EQ(c.at(x, y), x >= 2 && x < 5 && y >= 1 && y < 3 ? green : 0u) << x << "," << y;
    shape.render->mask = nullptr;
    expectRowsClean();
  }
}

ddShape* filledRect(double w, const ddFill& fill) {
  ddShape* s = rect(0, 0, w, 1, 0);
  s->fills[0] = fill;
  return s;
}

TEST(Paint, GradientEndsPadAndTheTransformedBranchHasItsOwnRamp) {
  auto blackToWhite = [] {
    ddFill f{ddFillLinear, {}, ddMatrix{128, 0, 0, 128, 8 << 10, 0}};  // 16 pixels from x 0
    f.data.gradient = ddGradient_create();
    ddGradient_addStop(f.data.gradient, 0, rgba(0, 0, 0, 255));
    ddGradient_addStop(f.data.gradient, 255, white);
    return f;
  };
  Shape plain(filledRect(24, blackToWhite())), transformed(filledRect(24, blackToWhite()));
  Canvas c(24, 1), t(24, 1);
  c.draw(plain);
  EXPECT_LT(redOf(c.at(0, 0)), 12);
  EXPECT_NEAR(redOf(c.at(8, 0)), 128, 10);
  EXPECT_NEAR(redOf(c.at(15, 0)), 239, 6);
  for (int x = 16; x < 24; x++) EXPECT_EQ(c.at(x, 0), white) << x;
  for (int x = 1; x < 24; x++) EXPECT_GE(redOf(c.at(x, 0)), redOf(c.at(x - 1, 0))) << x;
  // With a colour transform the position is taken without offset and halving:
  // black up to the middle, then the whole ramp over the right half.
  ddCxform cx = ddCxformIdentity;
  cx.gMul = 255;
  t.draw(transformed, ddMatrixIdentity, cx);
  EXPECT_LT(redOf(t.at(7, 0)), 12);
  EXPECT_NEAR(redOf(t.at(12, 0)), 128, 12);
  EXPECT_EQ(redOf(t.at(20, 0)), 255);
}

TEST(Paint, TiledBitmapRepeatsLeftOfItsOriginAndClippedOneClamps) {
  ddSurface* bm = ddSurface_create(2, 1);
  bm->pixels[0] = rgba(255, 0, 0, 255);
  bm->pixels[1] = rgba(0, 0, 255, 255);
  ddFill f{ddFillTiledBitmap, {}, ddMatrix{1024, 0, 0, 1024, 3 << 10, 0}};  // origin at x 3
  f.data.bitmap = bm;
  Shape tiled(filledRect(10, f));
  f.kind = ddFillClippedBitmap;
  Shape clipped(filledRect(10, f));
  Canvas c(10, 1), k(10, 1);
  c.draw(tiled);
  k.draw(clipped);
  for (int x = 0; x + 2 < 10; x++) EXPECT_EQ(c.at(x, 0), c.at(x + 2, 0)) << x;
  EXPECT_EQ(c.at(3, 0), bm->pixels[0]);
  EXPECT_EQ(c.at(4, 0), bm->pixels[1]);
  for (int x = 0; x < 10; x++) EXPECT_EQ(k.at(x, 0), bm->pixels[x <= 3 ? 0 : 1]) << x;
  EXPECT_EQ(ddBitmap_sampleClamped(bm, 512, 0), ddColor_lerp(bm->pixels[0], bm->pixels[1], 512));
  ddSurface_destroy(bm);
}

TEST(Paint, IsqrtIsTheExactFloorTimes32) {
  for (uint64_t n = 0; n <= 0xFFFFFFFFull; n += (n < 70000 ? 1 : n / 977 + 1))
    ASSERT_EQ(ddIsqrt(uint32_t(n)), uint32_t(std::floor(std::sqrt(double(n)))) * 32) << n;
  EXPECT_EQ(ddIsqrt(0xFFFFFFFFu), 0x1FFFE0u);
}

// A move keeps the edges and shifts only the first group; both the old and
// the new area are reported.
TEST(EdgeCache, TranslationMovesOnlyTheFirstGroupAndReportsBothAreas) {
  Shape s(
      polygons({{{0, 0}, {2, 0}, {2, 2}, {0, 2}}, {{4, 4}, {6, 4}, {6, 6}, {4, 6}}}, white, true));
  EXPECT_TRUE(ddRender_update(s.render, nullptr, &ddMatrixIdentity));
  EXPECT_FALSE(ddRender_update(s.render, nullptr, &ddMatrixIdentity));
  ddEdgeGroup* first = s.render->groups;
  ASSERT_NE(first->next, nullptr);
  const ddEdge* edges = first->edges;
  const ddRect before = s.render->bounds;
  ddRectList* dirty = ddRectList_create();
  const ddMatrix moved = {1024, 0, 0, 1024, 3 << 10, 1 << 10};
  EXPECT_TRUE(ddRender_update(s.render, dirty, &moved));
  EXPECT_EQ(s.render->groups, first);
  EXPECT_EQ(first->edges, edges);
  ddRect got = ddRect_empty();
  for (int i = 0; i < dirty->count; i++) got = ddRect_union(got, dirty->rects[i]);
  const ddRect both = ddRect_union(before, s.render->bounds);
  EXPECT_EQ(got.xMin, both.xMin);
  EXPECT_EQ(got.xMax, both.xMax);
  ddRectList_destroy(dirty);
  Canvas c(10, 10);
  const ddRect all = c.all();
  ddRender_draw(s.render, c.surface, &moved, &ddCxformIdentity, &all);
  EXPECT_EQ(c.at(3, 1), white);
  EXPECT_EQ(c.at(0, 0), 0u);
  EXPECT_EQ(c.at(4, 4), white);  // the second group stayed
}

// Shapes far outside the target, a span across a gap its paint's edges never
// touch, clips and a target wider than the shared rows: nothing drawn where it
// must not be and the shared rows left zero.
TEST(Limits, ClipsWideTargetsAndShapesLeavingTheSurface) {
  Canvas c(16, 16);
  Shape huge(polygons({{{-3000, -50}, {4000, 3}, {20, 9000}}, {{5, 5}, {9, 5}, {7, 12}}}, white));
  c.draw(huge);
  expectRowsClean();
  EXPECT_EQ(c.at(10, 2), white);
  // The left square has a second fill outside it, so a span runs from its
  // right edge across the gap to the next square.
  ddShape* apart = withFill(white);
  ddShape_addFill(apart, ddFill{ddFillSolid, {rgba(0, 0, 255, 255)}, ddMatrixIdentity});
  for (int i = 0; i < 2; i++) {
    const double x0 = i ? 6 : 1;
    record(apart, ddRecordFill0, i ? -1 : 1);
    record(apart, ddRecordFill1, 0);
    ddShape_moveTo(apart, fx(x0), fx(1));
    for (Pt p : {Pt{x0 + 2, 1}, Pt{x0 + 2, 5}, Pt{x0, 5}, Pt{x0, 1}})
      ddShape_lineTo(apart, fx(p.x), fx(p.y));
  }
  ddShape_finish(apart);
  Shape gap(apart);
  Canvas g(10, 6);
  g.draw(gap);
  expectRowsClean();

  Shape s(rect(1, 1, 5, 5, white));
  Canvas k(8, 8);
  ddRender_update(s.render, nullptr, &ddMatrixIdentity);
  const ddRect outside = {6 << 10, 8 << 10, 6 << 10, 8 << 10}, part = {0, 3 << 10, 0, 8 << 10};
  EXPECT_TRUE(ddRender_draw(s.render, k.surface, &ddMatrixIdentity, &ddCxformIdentity, &outside));
  for (int i = 0; i < 64; i++) EXPECT_EQ(k.surface->pixels[i], 0u);
  ddRender_draw(s.render, k.surface, &ddMatrixIdentity, &ddCxformIdentity, &part);
  EXPECT_EQ(k.at(2, 2), white);
  EXPECT_EQ(k.at(3, 2), 0u);
  Canvas wide(ddRowWidth + 1, 2);
  const ddRect all = wide.all();
  EXPECT_FALSE(ddRender_draw(s.render, wide.surface, &ddMatrixIdentity, &ddCxformIdentity, &all));
  for (int i = 0; i < 2 * (ddRowWidth + 1); i++) ASSERT_EQ(wide.surface->pixels[i], 0u);
}

}  // namespace
