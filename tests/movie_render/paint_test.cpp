// Paints and strokes.
#include <gtest/gtest.h>

#include <cmath>

#include "render_test_support.h"

TEST(Paint, IsqrtIsExactFloorTimes32) {
  for (uint64_t n = 0; n <= 0xFFFFFFFFull; n += (n < 70000 ? 1 : n / 977 + 1)) {
    uint32_t expect = uint32_t(std::floor(std::sqrt(double(n)))) * 32;
    ASSERT_EQ(ddIsqrt(uint32_t(n)), expect) << n;
  }
  EXPECT_EQ(ddIsqrt(0xFFFFFFFFu), 0x1FFFE0u);
}

namespace {

struct Drawn {
  ddShape* shape;
  ddRender* render;
  explicit Drawn(ddShape* s) : shape(s), render(ddRender_create(s)) {}
  ~Drawn() {
    ddRender_destroy(render);
    ddShape_destroy(shape);
  }
};

ddShape* filledRect(double x0, double y0, double x1, double y1, const ddFill& fill) {
  ddShape* s = rectShape(x0, y0, x1, y1, 0);
  s->fills[0] = fill;
  return s;
}

// Black to white across 16 pixels starting at x 0.
ddFill blackToWhite() {
  ddFill f{};
  f.kind = ddFillLinear;
  f.data.gradient = ddGradient_create();
  ddGradient_addStop(f.data.gradient, 0, rgba(0, 0, 0, 255));
  ddGradient_addStop(f.data.gradient, 255, rgba(255, 255, 255, 255));
  f.matrix = ddMatrix{128, 0, 0, 128, 8 << 10, 0};
  return f;
}

}  // namespace

TEST(Paint, LinearGradientEndsPadAndTheTransformedBranchHasItsOwnRamp) {
  Drawn d(filledRect(0, 0, 24, 1, blackToWhite()));
  Canvas c(24, 1);
  drawShape(d.render, c);
  EXPECT_LT(redOf(c.at(0, 0)), 12);
  EXPECT_NEAR(redOf(c.at(8, 0)), 128, 10);
  EXPECT_NEAR(redOf(c.at(15, 0)), 239, 6);
  for (int x = 16; x < 24; x++) EXPECT_EQ(c.at(x, 0), rgba(255, 255, 255, 255)) << x;
  for (int x = 1; x < 24; x++) EXPECT_GE(redOf(c.at(x, 0)), redOf(c.at(x - 1, 0)));

  // With a colour transform the position is taken without offset and halving:
  // black up to the middle, then the whole ramp over the right half.
  Drawn e(filledRect(0, 0, 24, 1, blackToWhite()));
  Canvas t(24, 1);
  ddCxform cx = ddCxformIdentity;
  cx.gMul = 255;
  drawShape(e.render, t, ddMatrixIdentity, cx);
  EXPECT_LT(redOf(t.at(7, 0)), 12);
  EXPECT_NEAR(redOf(t.at(12, 0)), 128, 12);
  EXPECT_EQ(redOf(t.at(20, 0)), 255);
}

TEST(Paint, TiledBitmapRepeatsAcrossNegativeCoordinatesAndClippedOneClamps) {
  ddSurface* bm = ddSurface_create(2, 1);
  bm->pixels[0] = rgba(255, 0, 0, 255);
  bm->pixels[1] = rgba(0, 0, 255, 255);
  ddFill f{};
  f.kind = ddFillTiledBitmap;
  f.data.bitmap = bm;
  f.matrix = ddMatrix{1024, 0, 0, 1024, 3 << 10, 0};  // origin at x 3: u < 0 left of it
  Drawn tiled(filledRect(0, 0, 10, 1, f));
  Canvas c(10, 1);
  drawShape(tiled.render, c);
  for (int x = 0; x + 2 < 10; x++) EXPECT_EQ(c.at(x, 0), c.at(x + 2, 0)) << x;
  EXPECT_EQ(c.at(3, 0), rgba(255, 0, 0, 255));
  EXPECT_EQ(c.at(4, 0), rgba(0, 0, 255, 255));

  f.kind = ddFillClippedBitmap;
  Drawn clipped(filledRect(0, 0, 10, 1, f));
  Canvas k(10, 1);
  drawShape(clipped.render, k);
  for (int x = 0; x <= 3; x++) EXPECT_EQ(k.at(x, 0), rgba(255, 0, 0, 255)) << x;
  for (int x = 4; x < 10; x++) EXPECT_EQ(k.at(x, 0), rgba(0, 0, 255, 255)) << x;
  // Half way between the two pixels the smoothing mixes them.
  EXPECT_EQ(ddBitmap_sampleClamped(bm, 512, 0), ddColor_lerp(bm->pixels[0], bm->pixels[1], 512));
  EXPECT_EQ(redOf(ddBitmap_sampleTiled(bm, -512, 0)), redOf(ddBitmap_sampleTiled(bm, 1536, 0)));
  ddSurface_destroy(bm);
}

namespace {

ddShape* strokeShape(int widthTwips, ddColor colour, const std::vector<Pt>& path) {
  ddShape* s = ddShape_create();
  *ddShape_addRecord(s) = ddShapeRecord{ddRecordLine, {widthTwips, int32_t(colour), 0, 0}};
  ddShape_moveTo(s, fx(path[0].x), fx(path[0].y));
  for (size_t i = 1; i < path.size(); i++) ddShape_lineTo(s, fx(path[i].x), fx(path[i].y));
  ddShape_finish(s);
  return s;
}

}  // namespace

TEST(Stroke, AnyWidthIsTheSameHairlineSplitOverTwoPixels) {
  std::vector<Pt> path = {{1, 2.5}, {14, 5.3}, {9, 13}, {2, 12}};
  Drawn thin(strokeShape(40, rgba(255, 255, 255, 255), path));
  Drawn thick(strokeShape(400, rgba(255, 255, 255, 255), path));
  Canvas a(16, 16), b(16, 16);
  drawShape(thin.render, a);
  drawShape(thick.render, b);
  int lit = 0;
  for (int i = 0; i < 256; i++) {
    EXPECT_EQ(a.surface->pixels[i], b.surface->pixels[i]) << i;
    lit += a.surface->pixels[i] != 0;
  }
  EXPECT_GT(lit, 25);

  // A horizontal line through the middle of row 4 lights that row alone; on
  // the row's top line it splits between the rows.
  Drawn mid(strokeShape(20, rgba(255, 255, 255, 255), {{1, 4.5}, {9, 4.5}}));
  Canvas m(12, 8);
  drawShape(mid.render, m);
  EXPECT_GT(alphaOf(m.at(5, 4)), 250);
  EXPECT_EQ(m.at(5, 3), 0u);
  EXPECT_EQ(m.at(5, 5), 0u);
  Drawn edge(strokeShape(20, rgba(255, 255, 255, 255), {{1, 4}, {9, 4}}));
  Canvas n(12, 8);
  drawShape(edge.render, n);
  EXPECT_NEAR(alphaOf(n.at(5, 4)), 128, 2);
  EXPECT_NEAR(alphaOf(n.at(5, 3)), 128, 2);
}

TEST(Mask, ShapeIsDrawnOnlyInsideItsMask) {
  Drawn shape(rectShape(0, 0, 8, 4, rgba(0, 255, 0, 255)));
  Drawn mask(rectShape(2, 1, 5, 3, rgba(0, 0, 0, 255)));
  ddMatrix m = ddMatrixIdentity;
  ddRender_update(mask.render, nullptr, &m);
  shape.render->mask = mask.render;
  Canvas c(8, 4);
  drawShape(shape.render, c);
  for (int y = 0; y < 4; y++)
    for (int x = 0; x < 8; x++) {
      bool inside = x >= 2 && x < 5 && y >= 1 && y < 3;
      EXPECT_EQ(c.at(x, y), inside ? rgba(0, 255, 0, 255) : 0u) << x << "," << y;
    }
  for (int i = 0; i < ddRowWidth; i++) ASSERT_EQ(ddRender_maskRow()[i], 0);

  // The mask takes the raw cell, not its coverage: a mask edge a quarter into
  // a pixel, or three quarters, lets the shape through whole.
  for (double left : {2.25, 2.75}) {
    Drawn partial(rectShape(left, 1, 5, 3, rgba(0, 0, 0, 255)));
    ddRender_update(partial.render, nullptr, &m);
    shape.render->mask = partial.render;
    Canvas d(8, 4);
    drawShape(shape.render, d);
    EXPECT_EQ(d.at(2, 2), rgba(0, 255, 0, 255)) << left;
    EXPECT_EQ(d.at(3, 2), rgba(0, 255, 0, 255)) << left;
    EXPECT_EQ(d.at(1, 2), 0u) << left;
    EXPECT_EQ(d.at(5, 2), 0u) << left;
    shape.render->mask = nullptr;
  }
}
