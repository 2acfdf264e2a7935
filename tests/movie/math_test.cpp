// Rectangles, dirty lists, matrices and colour transforms.
#include <cmath>

#include "movie_test_support.h"

namespace {

ddRect rect(ddFixed x0, ddFixed x1, ddFixed y0, ddFixed y1) {
  return ddRect{x0, x1, y0, y1};
}

bool same(const ddRect& a, const ddRect& b) {
  return a.xMin == b.xMin && a.xMax == b.xMax && a.yMin == b.yMin && a.yMax == b.yMax;
}

class MovieMathTest : public MovieTest {};

TEST_F(MovieMathTest, RectanglesAreClosedAndOnlyTheMarkerIsEmpty) {
  ddRect a = rect(0, 10, 0, 10), touching = rect(10, 20, 10, 20), apart = rect(11, 20, 0, 10);
  EXPECT_TRUE(ddRect_overlap(a, touching));
  EXPECT_FALSE(ddRect_overlap(a, apart));
  EXPECT_FALSE(ddRect_overlap(a, ddRect_empty()));
  EXPECT_TRUE(ddRect_contains(a, 10, 0));
  EXPECT_FALSE(ddRect_contains(ddRect_empty(), 0x7fffffff, 0));
  // A zero-sized rectangle is a point, not nothing.
  EXPECT_TRUE(ddRect_overlap(rect(5, 5, 5, 5), a));
  EXPECT_TRUE(same(ddRect_intersect(a, touching), rect(10, 10, 10, 10)));
  EXPECT_TRUE(ddRect_isEmpty(ddRect_intersect(a, apart)));
  EXPECT_TRUE(same(ddRect_union(ddRect_empty(), apart), apart));
  EXPECT_TRUE(same(ddRect_union(a, apart), rect(0, 20, 0, 10)));
  ddRect grown = ddRect_empty();
  ddRect_addPoint(&grown, 3, -4);
  EXPECT_TRUE(same(grown, rect(3, 3, -4, -4)));
  ddRect_addPoint(&grown, -1, 2);
  EXPECT_TRUE(same(grown, rect(-1, 3, -4, 2)));
}

TEST_F(MovieMathTest, DirtyListsMergeThroughLaterEntriesAndLeaveThemEmpty) {
  ddRectList* list = ddRectList_create();
  ddRectList_add(list, ddRect_empty());
  EXPECT_EQ(list->count, 0);
  ddRectList_add(list, rect(0, 10, 0, 10));
  ddRectList_add(list, rect(100, 110, 0, 10));
  ddRectList_add(list, rect(30, 40, 0, 10));
  ddRectList_add(list, rect(200, 210, 0, 10));
  ddRectList_add(list, rect(300, 310, 0, 10));
  ASSERT_EQ(list->count, 5);
  EXPECT_GE(list->capacity, 5);
  // Overlaps the first entry; the growing union then swallows the third,
  // which stays in the list as an empty entry.
  ddRectList_add(list, rect(5, 35, 0, 10));
  ASSERT_EQ(list->count, 5);
  EXPECT_TRUE(same(list->rects[0], rect(0, 40, 0, 10)));
  EXPECT_TRUE(same(list->rects[1], rect(100, 110, 0, 10)));
  EXPECT_TRUE(ddRect_isEmpty(list->rects[2]));
  // Touching edges overlap: this one joins the first and the second.
  ddRectList_add(list, rect(40, 100, 5, 5));
  EXPECT_TRUE(same(list->rects[0], rect(0, 110, 0, 10)));
  EXPECT_TRUE(ddRect_isEmpty(list->rects[1]));

  // Clipping keeps intersections, packed to the front, and drops the rest.
  ddRectList_clip(list, rect(0, 250, 2, 8));
  ASSERT_EQ(list->count, 2);
  EXPECT_TRUE(same(list->rects[0], rect(0, 110, 2, 8)));
  EXPECT_TRUE(same(list->rects[1], rect(200, 210, 2, 8)));
  ddRectList_destroy(list);
}

TEST_F(MovieMathTest, MatrixProductsAreShiftedOneByOne) {
  ddMatrix p = {3, 3, 0, 1024, 0, 0}, q = {512, 0, 512, 1024, 0, 0};
  // (3*512 >> 10) twice is 2; a single shift of the sum would give 3.
  EXPECT_EQ(ddMatrix_concat(p, q).a, 2);
  ddFixed x, y;
  ddMatrix_transform(ddMatrix{1, 0, 0, 1, 0, 0}, -1, -1, &x, &y);
  EXPECT_EQ(x, -1);  // arithmetic shift: floor(-1/1024)
  EXPECT_EQ(y, -1);

  // q applied first: scale after translation scales the translation.
  ddMatrix scale = {2048, 0, 0, 2048, 0, 0}, move = {1024, 0, 0, 1024, 100, 50};
  ddMatrix sm = ddMatrix_concat(scale, move), ms = ddMatrix_concat(move, scale);
  EXPECT_EQ(sm.tx, 200);
  EXPECT_EQ(sm.ty, 100);
  EXPECT_EQ(ms.tx, 100);
  ddMatrix_transform(sm, 1024, 0, &x, &y);
  EXPECT_EQ(x, 2248);
  EXPECT_EQ(y, 100);
}

TEST_F(MovieMathTest, RotationAndInversionRoundTrip) {
  ddMatrix r = ddMatrix_rotate(ddMatrixIdentity, M_PI / 2);
  EXPECT_EQ(r.a, 0);
  EXPECT_EQ(r.b, -1024);
  EXPECT_EQ(r.c, 1024);
  EXPECT_EQ(r.d, 0);
  ddMatrix m = ddMatrix_concat(ddMatrix{2048, 0, 0, 512, 3000, -700}, r);
  ddMatrix inv = ddMatrix_invert(m);
  ddMatrix back = ddMatrix_concat(m, inv);
  EXPECT_NEAR(back.a, 1024, 2);
  EXPECT_NEAR(back.b, 0, 2);
  EXPECT_NEAR(back.c, 0, 2);
  EXPECT_NEAR(back.d, 1024, 2);
  EXPECT_NEAR(back.tx, 0, 4);
  EXPECT_NEAR(back.ty, 0, 4);
  EXPECT_TRUE(ddMatrix_equal(ddMatrix_scale(m, 512, 2048),
                             ddMatrix{m.a / 2, m.b / 2, m.c * 2, m.d * 2, m.tx, m.ty}));
}

TEST_F(MovieMathTest, ColourTransformsAddWithoutScalingAndClamp) {
  ddCxform half = {128, 128, 128, 256, 10, 0, 0, 0};
  ddCxform quarter = {128, 64, 128, 256, 20, -5, 0, 0};
  ddCxform both = ddCxform_concat(half, quarter);
  EXPECT_EQ(both.rMul, 64);
  EXPECT_EQ(both.gMul, 32);
  EXPECT_EQ(both.aMul, 256);
  EXPECT_EQ(both.rAdd, 30);  // not 10 + 20 * 0.5
  EXPECT_EQ(both.gAdd, -5);
  EXPECT_TRUE(ddCxform_equal(ddCxform_concat(ddCxformIdentity, quarter), quarter));
  EXPECT_TRUE(ddCxform_equal(ddCxform_concat(half, ddCxformIdentity), half));

  ddColor colour = 0x80C86432u;  // a 128, b 200, g 100, r 50
  EXPECT_EQ(ddCxform_apply(ddCxformIdentity, colour), colour);
  ddCxform hot = {512, 256, 256, 256, 0, -300, 0, 0};
  EXPECT_EQ(ddCxform_apply(hot, colour), 0x80C80064u);
  // Premultiplied after the transform; transparent gives the zero word.
  EXPECT_EQ(ddCxform_applyPremul(hot, colour), 0x80640032u);
  ddCxform clear = {256, 256, 256, 0, 0, 0, 0, 0};
  EXPECT_EQ(ddCxform_applyPremul(clear, colour), 0u);
  EXPECT_EQ(ddCxform_applyPremul(ddCxformIdentity, 0xFF123456u), 0xFF123456u);
}

}  // namespace
