// Rectangles, dirty lists, matrices and colour transforms.
#include "movie_test_support.h"

namespace {

ddRect rect(ddFixed x0, ddFixed x1, ddFixed y0, ddFixed y1) {
  return ddRect{x0, x1, y0, y1};
}

bool same(const ddRect& a, const ddRect& b) {
  return a.xMin == b.xMin && a.xMax == b.xMax && a.yMin == b.yMin && a.yMax == b.yMax;
}

class MovieMathTest : public MovieTest {};

// Rectangles are closed: touching edges overlap, a zero-sized one is a point.
TEST_F(MovieMathTest, DirtyListsMergeThroughLaterEntriesAndLeaveThemEmpty) {
  ddRect a = rect(0, 10, 0, 10);
  EXPECT_TRUE(same(ddRect_intersect(a, rect(10, 20, 10, 20)), rect(10, 10, 10, 10)));
  EXPECT_TRUE(ddRect_overlap(rect(5, 5, 5, 5), a));
  EXPECT_FALSE(ddRect_overlap(a, ddRect_empty()));
  EXPECT_TRUE(same(ddRect_union(ddRect_empty(), a), a));

  ddRectList* list = ddRectList_create();
  ddRectList_add(list, ddRect_empty());
  EXPECT_EQ(list->count, 0);
  for (ddFixed x : {0, 100, 30, 200, 300}) ddRectList_add(list, rect(x, x + 10, 0, 10));
  ASSERT_EQ(list->count, 5);
  // Overlaps the first entry; the growing union then swallows the third,
  // which stays in the list as an empty entry.
  ddRectList_add(list, rect(5, 35, 0, 10));
  ASSERT_EQ(list->count, 5);
  EXPECT_TRUE(same(list->rects[0], rect(0, 40, 0, 10)));
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

TEST_F(MovieMathTest, MatrixProductsAreShiftedOneByOneAndApplyTheRightFirst) {
  ddMatrix p = {3, 3, 0, 1024, 0, 0}, q = {512, 0, 512, 1024, 0, 0};
  // (3*512 >> 10) twice is 2; a single shift of the sum would give 3.
  EXPECT_EQ(ddMatrix_concat(p, q).a, 2);
  ddFixed x, y;
  ddMatrix_transform(ddMatrix{1, 0, 0, 1, 0, 0}, -1, -1, &x, &y);
  EXPECT_EQ(x, -1);  // arithmetic shift: floor(-1/1024)
  // Scale after translation scales the translation.
  ddMatrix scale = {2048, 0, 0, 2048, 0, 0}, move = {1024, 0, 0, 1024, 100, 50};
  EXPECT_EQ(ddMatrix_concat(scale, move).tx, 200);
  EXPECT_EQ(ddMatrix_concat(move, scale).tx, 100);
}

TEST_F(MovieMathTest, ColourTransformsAddWithoutScalingAndClamp) {
  ddCxform half = {128, 128, 128, 256, 10, 0, 0, 0};
  ddCxform both = ddCxform_concat(half, {128, 64, 128, 256, 20, -5, 0, 0});
  EXPECT_EQ(both.gMul, 32);
  EXPECT_EQ(both.rAdd, 30);  // not 10 + 20 * 0.5
  EXPECT_EQ(both.gAdd, -5);

  ddColor colour = 0x80C86432u;  // a 128, b 200, g 100, r 50
  ddCxform hot = {512, 256, 256, 256, 0, -300, 0, 0};
  EXPECT_EQ(ddCxform_apply(hot, colour), 0x80C80064u);
  // Premultiplied after the transform; transparent gives the zero word.
  EXPECT_EQ(ddCxform_applyPremul(hot, colour), 0x80640032u);
  EXPECT_EQ(ddCxform_applyPremul({256, 256, 256, 0, 0, 0, 0, 0}, colour), 0u);
}

}  // namespace
