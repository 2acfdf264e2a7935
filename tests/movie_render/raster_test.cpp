// Coverage, compositing, edge caching and the limits of the rasteriser.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "render_test_support.h"

namespace {

const ddColor white = rgba(255, 255, 255, 255);

struct Shape {
  ddShape* shape;
  ddRender* render;
  explicit Shape(ddShape* s) : shape(s), render(ddRender_create(s)) {}
  ~Shape() {
    ddRender_destroy(render);
    ddShape_destroy(shape);
  }
};

// The row below the square has only edges that end on its top line: no span,
// so it stays empty.
TEST(Coverage, WholePixelSquareIsExactColourAndNothingOutside) {
  Canvas c(8, 8);
  Shape s(rectShape(2, 1, 6, 5, rgba(10, 20, 30, 255)));
  drawShape(s.render, c);
  for (int y = 0; y < 8; y++)
    for (int x = 0; x < 8; x++)
      EXPECT_EQ(c.at(x, y), (x >= 2 && x < 6 && y >= 1 && y < 5) ? rgba(10, 20, 30, 255) : 0u)
          << x << "," << y;
}

TEST(Coverage, HalfCoveredPixelsAtVerticalAndHorizontalEdges) {
  Canvas c(8, 8);
  Shape s(rectShape(2.5, 1.5, 6, 5, white));
  drawShape(s.render, c);
  // Left column: half covered by a vertical edge.
  EXPECT_NEAR(alphaOf(c.at(2, 3)), 128, 2);
  EXPECT_NEAR(redOf(c.at(2, 3)), 128, 2);
  // Top row: half covered, the span over the edge cell wrapping back.
  EXPECT_NEAR(alphaOf(c.at(4, 1)), 128, 2);
  EXPECT_NEAR(redOf(c.at(4, 1)), 128, 2);
  // The corner pixel is a quarter.
  EXPECT_NEAR(alphaOf(c.at(2, 1)), 64, 3);
  EXPECT_EQ(c.at(4, 3), white);
  EXPECT_EQ(c.at(4, 0), 0u);
  EXPECT_EQ(c.at(1, 3), 0u);
}

// Random polygons against their exact area per pixel. Cells take coverage in
// 20-bit steps and are read from bits 12 to 19, so pixels where edge terms
// wrap past a whole cell can be far off; the mean over many pixels is a guard
// against coverage going wrong, not a claim of exactness.
TEST(Coverage, RandomPolygonsStayNearTheExactAreaOnAverage) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> d(0.3, 23.7);
  double sum[2] = {0, 0};
  int count[2] = {0, 0}, far[2] = {0, 0};
  for (int round = 0; round < 80; round++) {
    // Star-shaped around the centre so edges within a polygon never cross.
    std::vector<Pt> poly;
    int n = 3 + round % 9;
    double cx = 12, cy = 12;
    for (int i = 0; i < n; i++) {
      double ang = (i + 0.5 * (round % 3) / 3.0) * 2 * M_PI / n;
      double r = 3 + std::fmod(d(rng), 8.5);
      Pt p{cx + r * std::cos(ang), cy + r * std::sin(ang)};
      // Vertices on pixel lines and on half pixels.
      if (round % 4 == 2) p = {std::round(p.x), std::round(p.y)};
      if (round % 4 == 3) p = {std::round(p.x * 2) / 2, std::round(p.y * 2) / 2};
      poly.push_back(p);
    }
    if (round % 2) std::reverse(poly.begin(), poly.end());
    Canvas c(24, 24);
    Shape s(polygonShape({poly}, white));
    drawShape(s.render, c);
    auto ref = referenceCoverage(poly, 24, 24);
    const int k = round % 4 >= 2;
    for (int y = 0; y < 24; y++) {
      for (int x = 0; x < 24; x++) {
        double err = std::fabs(alphaOf(c.at(x, y)) / 255.0 - ref[size_t(y) * 24 + x]);
        sum[k] += err;
        count[k]++;
        far[k] += err > 0.25;
      }
    }
  }
  const double offGrid = sum[0] / count[0], onGrid = sum[1] / count[1];
  std::printf("mean pixel error %.4f off the grid, %.4f on it; pixels off by a quarter: %d, %d\n",
              offGrid, onGrid, far[0], far[1]);
  // Measured: 0.0017 and 0.0040, with 49 and 109 of 11520 pixels off by more
  // than a quarter.
  EXPECT_LE(offGrid, 0.0025);
  EXPECT_LE(onGrid, 0.005);
  EXPECT_LE(far[0], 65);
  EXPECT_LE(far[1], 130);
}

// Left edges at fractions of a pixel and top edges at fractions of a row: the
// edge cell holds the partial area and the span over it a whole cell, and
// reading bits 12 to 19 drops the whole cell again.
TEST(Coverage, SpanOverAPartialEdgeCellWrapsBackToThePartialArea) {
  for (double f : {0.0, 1 / 1024.0, 0.25, 0.5, 0.75, 1023 / 1024.0}) {
    Canvas c(12, 12);
    Shape s(rectShape(2 + f, 3 + f, 10, 10, white));
    drawShape(s.render, c);
    const double left = (1 - f) * 255;
    SCOPED_TRACE(f);
    // Middle rows: the left edge's cell.
    EXPECT_NEAR(alphaOf(c.at(2, 6)), left, 2);
    EXPECT_NEAR(redOf(c.at(2, 6)), left, 2);
    // Top row, away from the corner: the top edge's cells under a span.
    EXPECT_NEAR(alphaOf(c.at(6, 3)), left, 2);
    EXPECT_EQ(c.at(6, 6), white);
  }
}

TEST(Coverage, AbuttingFillsShareTheRowWithoutBlend) {
  // Two fills of one shape meeting inside a pixel column add into the same
  // cell of the shared row. The paint that comes first in the row's list draws
  // the sum, a whole cell, and clears it; the other finds nothing there. Blue
  // is first: the list is last in first out and blue is pushed after red.
  ddShape* shape = ddShape_create();
  ddFill red{}, blue{};
  red.kind = blue.kind = ddFillSolid;
  red.data.color = rgba(255, 0, 0, 255);
  blue.data.color = rgba(0, 0, 255, 255);
  red.matrix = blue.matrix = ddMatrixIdentity;
  ddShape_addFill(shape, red);
  ddShape_addFill(shape, blue);
  auto rec = [&](int type, double a = 0, double b = 0) {
    ddShapeRecord* r = ddShape_addRecord(shape);
    *r = ddShapeRecord{
        type, {type >= ddRecordLineTo || type == ddRecordMove ? fx(a) : int32_t(a), fx(b), 0, 0}};
  };
  // Red on the left, blue on the right, one edge between them with both.
  rec(ddRecordFill0, -1);
  rec(ddRecordFill1, 0);
  rec(ddRecordMove, 4.5, 6);
  rec(ddRecordLineTo, 1, 6);
  rec(ddRecordLineTo, 1, 0);
  rec(ddRecordLineTo, 4.5, 0);
  rec(ddRecordFill0, 1);
  rec(ddRecordLineTo, 4.5, 6);
  rec(ddRecordFill0, -1);
  rec(ddRecordFill1, 1);
  rec(ddRecordMove, 4.5, 0);
  rec(ddRecordLineTo, 8, 0);
  rec(ddRecordLineTo, 8, 6);
  rec(ddRecordLineTo, 4.5, 6);
  ddShape_finish(shape);
  Shape s(shape);
  Canvas c(10, 6);
  drawShape(s.render, c);
  for (int y = 0; y < 6; y++) {
    EXPECT_EQ(c.at(2, y), rgba(255, 0, 0, 255)) << y;
    EXPECT_EQ(c.at(6, y), rgba(0, 0, 255, 255)) << y;
    ddColor seam = c.at(4, y);
    EXPECT_TRUE(seam == rgba(255, 0, 0, 255) || seam == rgba(0, 0, 255, 255)) << std::hex << seam;
    if (y >= 1 && y < 5) {
      EXPECT_EQ(seam, rgba(0, 0, 255, 255)) << y;
    }
  }
}

// A point belongs to the shape when the nearest edge to its left has a paint
// on its right: a square of one fill set inside a square of another is hit
// in both, where counting crossings would call the inner one a hole; a true
// hole, an area left of everything and one outside the bounds are not.
TEST(Hit, NearestEdgeOnTheLeftDecidesByThePaintOnItsRight) {
  const ddColor red = rgba(255, 0, 0, 255), blue = rgba(0, 0, 255, 255);
  Shape nested(rectsShape({{0, 0, 10, 10, 0}, {3, 3, 7, 7, 1, 0}}, {red, blue}));
  Shape ring(rectsShape({{0, 0, 10, 10, 0}, {3, 3, 7, 7, -1, 0}}, {red}));
  Canvas c(12, 12);
  drawShape(nested.render, c);
  drawShape(ring.render, c);
  auto hit = [](const Shape& s, double x, double y) {
    return ddRender_hit(s.render, fx(x), fx(y));
  };
  EXPECT_TRUE(hit(nested, 5, 5));
  EXPECT_TRUE(hit(nested, 1.5, 5));
  EXPECT_TRUE(hit(nested, 8.5, 5));
  EXPECT_FALSE(hit(ring, 5, 5));
  EXPECT_TRUE(hit(ring, 1.5, 5));
  EXPECT_TRUE(hit(ring, 5, 1.5));
  EXPECT_FALSE(hit(ring, -1, 5));
  EXPECT_FALSE(hit(ring, 11, 5));
  EXPECT_FALSE(hit(ring, 5, 10.5));
}

TEST(Compositing, FrontToBackWithSemiTransparentLayers) {
  Canvas c(4, 4);
  // Drawn nearest first: half red over half blue over opaque white.
  Shape front(rectShape(0, 0, 4, 4, rgba(255, 0, 0, 128)));
  Shape middle(rectShape(0, 0, 4, 4, rgba(0, 0, 255, 128)));
  Shape back(rectShape(0, 0, 4, 4, white));
  drawShape(front.render, c);
  drawShape(middle.render, c);
  drawShape(back.render, c);
  ddColor p = c.at(1, 1);
  // Over-compositing: red 0.5 + white 0.25, blue 0.25 + white 0.25, green
  // white 0.25, all in 8-bit steps that lose a little.
  EXPECT_GE(alphaOf(p), 254);
  EXPECT_NEAR(redOf(p), 191, 3);
  EXPECT_NEAR(int((p >> 8) & 255), 63, 3);
  EXPECT_NEAR(blueOf(p), 126, 3);
  Canvas d(4, 4);
  Shape opaque(rectShape(0, 0, 4, 4, rgba(0, 0, 255, 255)));
  drawShape(opaque.render, d);
  p = d.at(1, 1);
  // An opaque pixel takes nothing more.
  Shape later(rectShape(0, 0, 4, 4, rgba(0, 255, 0, 255)));
  drawShape(later.render, d);
  EXPECT_EQ(d.at(1, 1), p);
}

// Long spans go under the target several pixels at a time; every target pixel
// must still end as ddColor_under of itself and the span's colour, whatever
// its neighbours hold and wherever the span starts and ends.
TEST(Compositing, SpansGoUnderMixedTargetsAsPixelByPixel) {
  const int alphas[] = {0, 255, 1, 128, 254, 0, 255, 77};
  const int w = 47, h = 4;
  for (ddColor colour : {rgba(200, 100, 50, 255), rgba(90, 250, 10, 200)}) {
    for (int start = 1; start <= 4; start++) {
      Canvas c(w, h);
      for (int y = 0; y < h; y++) {
        for (int x = 0; x < w; x++) {
          // Long stretches of one kind of pixel, then a mix, so that both
          // the whole-block and the per-pixel paths run.
          int a = x < 20 ? alphas[(x / 8 + y) % 8] : alphas[(x * 5 + y) % 8];
          // Alpha 0 with colour left in it still counts as empty.
          int r = a ? a * 3 / 4 : x % 7;
          c.surface->pixels[y * w + x] = rgba(r, a / 2, a / 3, a);
        }
      }
      std::vector<ddColor> before(c.surface->pixels, c.surface->pixels + w * h);
      // Rows 1 and 2 are spans between two edge cells; the half-covered rows
      // 0 and 3 are edge cells throughout. What the shape gives an empty
      // target is what goes under each pixel.
      Shape s(rectShape(start, 0.5, w - 1 - start, h - 0.5, colour));
      Canvas alone(w, h);
      drawShape(s.render, alone);
      EXPECT_EQ(alone.at(w / 2, 1), ddColor_premultiply(colour));
      EXPECT_NEAR(alphaOf(alone.at(w / 2, 0)), alphaOf(colour) / 2, 2);
      drawShape(s.render, c);
      for (int y = 0; y < h; y++) {
        for (int x = 0; x < w; x++) {
          const ddColor want = ddColor_under(before[y * w + x], alone.at(x, y));
          ASSERT_EQ(c.at(x, y), want) << x << "," << y << " start " << start;
        }
      }
    }
  }
}

// Solid paints whose ranges do not meet go straight under the target; under
// a mask every paint fills the pixel row first. A mask over everything must
// not change a pixel.
TEST(Compositing, StraightUnderTheTargetAsThroughThePixelRow) {
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> d(-2, 42);
  for (int round = 0; round < 40; round++) {
    std::vector<Pt> poly;
    for (int i = 0; i < 3 + round % 6; i++) {
      double ang = i * 2 * M_PI / (3 + round % 6), r = 4 + std::fmod(d(rng), 16);
      poly.push_back({20 + r * std::cos(ang), 12 + r * std::sin(ang)});
    }
    const ddColor colour = rgba(int(rng() % 256), 90, 200, round % 2 ? 255 : int(rng() % 256));
    Canvas plain(40, 24), masked(40, 24);
    for (int i = 0; i < 40 * 24; i++) {
      const int a = int(rng() % 3) * 127;
      plain.surface->pixels[i] = masked.surface->pixels[i] = rgba(a / 2, a / 3, a, a);
    }
    Shape s(polygonShape({poly}, colour)), all(rectShape(-1, -1, 41, 25, white));
    drawShape(s.render, plain);
    ddMatrix m = ddMatrixIdentity;
    ddRender_update(all.render, nullptr, &m);
    s.render->mask = all.render;
    drawShape(s.render, masked);
    s.render->mask = nullptr;
    for (int i = 0; i < 40 * 24; i++)
      ASSERT_EQ(plain.surface->pixels[i], masked.surface->pixels[i]) << round << " at " << i;
  }
}

TEST(EdgeCache, MatrixCompareClassifiesChanges) {
  ddMatrix zero{};
  ddMatrix id = ddMatrixIdentity;
  ddMatrix moved = {1024, 0, 0, 1024, 5000, 0};
  ddMatrix scaled = {2048, 0, 0, 2048, 0, 0};
  ddMatrix stretched = {2048, 0, 0, 1024, 0, 0};
  ddMatrix skewed = {1024, 512, 0, 1024, 0, 0};
  ddMatrix rotated = {0, -1024, 1024, 0, 0, 0};
  EXPECT_EQ(ddMatrix_compare(zero, id), 8);
  EXPECT_EQ(ddMatrix_compare(id, id), 0);
  EXPECT_EQ(ddMatrix_compare(id, moved), 1);
  EXPECT_EQ(ddMatrix_compare(id, scaled), 2);
  EXPECT_EQ(ddMatrix_compare(id, stretched), 4);
  EXPECT_EQ(ddMatrix_compare(id, skewed), 4);
  EXPECT_EQ(ddMatrix_compare(id, rotated), 8);
}

TEST(EdgeCache, TranslationMovesOnlyTheFirstGroupAndReportsBothAreas) {
  ddShape* shape = rectShape(0, 0, 2, 2, white);
  // A second group after a group record.
  shape->recordCount--;  // drop the end record
  ddShape_addRecord(shape)->type = ddRecordGroup;
  ddShapeRecord* f1 = ddShape_addRecord(shape);
  *f1 = ddShapeRecord{ddRecordFill1, {0, 0, 0, 0}};
  ddShape_moveTo(shape, fx(4), fx(4));
  ddShape_lineTo(shape, fx(6), fx(4));
  ddShape_lineTo(shape, fx(6), fx(6));
  ddShape_lineTo(shape, fx(4), fx(6));
  ddShape_lineTo(shape, fx(4), fx(4));
  ddShape_finish(shape);
  Shape s(shape);
  ddMatrix m = ddMatrixIdentity;
  EXPECT_TRUE(ddRender_update(s.render, nullptr, &m));
  ddEdgeGroup* first = s.render->groups;
  ASSERT_NE(first->next, nullptr);
  ddEdge* firstEdges = first->edges;
  ddFixed firstX = first->edges[0].x0, secondX = first->next->edges[0].x0;
  EXPECT_FALSE(ddRender_update(s.render, nullptr, &m));

  ddRectList* dirty = ddRectList_create();
  ddMatrix moved = {1024, 0, 0, 1024, 3 << 10, 1 << 10};
  ddRect before = s.render->bounds;
  EXPECT_TRUE(ddRender_update(s.render, dirty, &moved));
  EXPECT_EQ(s.render->groups, first);  // kept, not rebuilt
  EXPECT_EQ(first->edges, firstEdges);
  EXPECT_EQ(first->edges[0].x0, firstX + (3 << 10));
  EXPECT_EQ(first->next->edges[0].x0, secondX);
  EXPECT_EQ(s.render->bounds.xMin, before.xMin + (3 << 10));
  ddRect both = ddRect_union(before, s.render->bounds);
  ASSERT_GE(dirty->count, 1);
  ddRect got = ddRect_empty();
  for (int i = 0; i < dirty->count; i++) got = ddRect_union(got, dirty->rects[i]);
  EXPECT_EQ(got.xMin, both.xMin);
  EXPECT_EQ(got.xMax, both.xMax);

  // The moved first group draws at its new place.
  Canvas c(10, 10);
  ddRect all = c.all();
  ddRender_draw(s.render, c.surface, &moved, &ddCxformIdentity, &all);
  EXPECT_EQ(c.at(3, 1), white);
  EXPECT_EQ(c.at(0, 0), 0u);
  EXPECT_EQ(c.at(4, 4), white);  // second group stayed
  ddRectList_destroy(dirty);
}

TEST(EdgeCache, ScalingACurveRefinesItsFlattening) {
  ddShape* shape = ddShape_create();
  ddFill f{};
  f.kind = ddFillSolid;
  f.data.color = white;
  f.matrix = ddMatrixIdentity;
  ddShape_addFill(shape, f);
  *ddShape_addRecord(shape) = ddShapeRecord{ddRecordFill1, {0, 0, 0, 0}};
  ddShape_moveTo(shape, 0, 0);
  ddShape_curveTo(shape, fx(8), 0, fx(8), fx(8));
  ddShape_lineTo(shape, 0, 0);
  ddShape_finish(shape);
  Shape s(shape);
  ddMatrix small = ddMatrixIdentity, big = {8192, 0, 0, 8192, 0, 0};
  ddRender_update(s.render, nullptr, &small);
  int smallCount = s.render->groups->count;
  ddRender_update(s.render, nullptr, &big);
  int bigCount = s.render->groups->count;
  EXPECT_GT(bigCount, smallCount);
  // No flattened piece has a control polygon over 4 pixels: each straight
  // edge spans at most 4 pixels of x plus y.
  for (int i = 0; i + 1 < s.render->groups->count; i++) {
    const ddEdge& e = s.render->groups->edges[i];
    EXPECT_LE(std::abs(e.x1 - e.x0) + std::abs(e.y1 - e.y0), 4096 + 2);
  }
}

TEST(EdgeCache, MirroredMatrixFillsTheSameCells) {
  Shape s(rectShape(1, 1, 3.5, 4, white));
  Canvas plain(8, 8), mirrored(8, 8);
  drawShape(s.render, plain);
  Shape t(rectShape(1, 1, 3.5, 4, white));
  ddMatrix flip = {-1024, 0, 0, 1024, 8 << 10, 0};
  drawShape(t.render, mirrored, flip);
  for (int y = 0; y < 8; y++)
    for (int x = 0; x < 8; x++) EXPECT_EQ(plain.at(x, y), mirrored.at(7 - x, y)) << x << "," << y;
}

TEST(Limits, ShapeOutsideTheClipChangesNothingAndWideTargetsAreRefused) {
  Canvas c(8, 8);
  Shape s(rectShape(1, 1, 5, 5, white));
  ddMatrix m = ddMatrixIdentity;
  ddRender_update(s.render, nullptr, &m);
  ddRect clip = {6 << 10, 8 << 10, 6 << 10, 8 << 10};
  EXPECT_TRUE(ddRender_draw(s.render, c.surface, &m, &ddCxformIdentity, &clip));
  for (int i = 0; i < 64; i++) EXPECT_EQ(c.surface->pixels[i], 0u);
  for (int i = 0; i < ddRowWidth; i++) ASSERT_EQ(ddRender_coverageRow()[i], 0u);

  // Clipped partly: only the clip's pixels change.
  ddRect part = {0, 3 << 10, 0, 8 << 10};
  ddRender_draw(s.render, c.surface, &m, &ddCxformIdentity, &part);
  EXPECT_EQ(c.at(2, 2), white);
  EXPECT_EQ(c.at(3, 2), 0u);

  ddSurface* wide = ddSurface_create(ddRowWidth + 1, 2);
  ddRect all = {0, (ddRowWidth + 1) << 10, 0, 2 << 10};
  EXPECT_FALSE(ddRender_draw(s.render, wide, &m, &ddCxformIdentity, &all));
  for (int i = 0; i < 16; i++) EXPECT_EQ(wide->pixels[ddRowWidth + 1 + i], 0u);
  ddSurface_destroy(wide);
}

TEST(Limits, SharedRowsAreZeroAfterShapesThatLeaveTheSurface) {
  // Edges far left, right, above and below the target, and a huge shape.
  Canvas c(16, 16);
  Shape s(polygonShape({{{-3000, -50}, {4000, 3}, {20, 9000}}, {{5, 5}, {9, 5}, {7, 12}}},
                       rgba(0, 128, 0, 255)));
  drawShape(s.render, c);
  for (int i = 0; i < ddRowWidth; i++) {
    ASSERT_EQ(ddRender_coverageRow()[i], 0u) << i;
    ASSERT_EQ(ddRender_pixelRow()[i], 0u) << i;
  }
  EXPECT_EQ(alphaOf(c.at(10, 2)), 255);

  // Spans run from every edge to the next, so one runs across the gap between
  // the squares, past the cells its paint's edges touched: nobody reads those
  // cells, and they are cleared all the same.
  Shape apart(rectsShape({{1, 1, 3, 5, 0, 1}, {6, 1, 8, 5, 2}},
                         {rgba(255, 0, 0, 255), rgba(0, 0, 255, 255), rgba(0, 255, 0, 255)}));
  Canvas d(10, 6);
  drawShape(apart.render, d);
  for (int i = 0; i < ddRowWidth; i++) ASSERT_EQ(ddRender_coverageRow()[i], 0u) << i;
}

}  // namespace
