// Shape blocks: style arrays, records, groups, fill bases, gradients and the
// dictionary they land in.
#include "movie_test_support.h"

using swf::Bytes;

namespace {

class MovieShapeTest : public MovieTest {
 protected:
  // Parses a movie holding the one shape block and returns its shape.
  ddShape* shapeOf(const Bytes& block, int id = 1) {
    ddStream* s = parse(swf::movie(swf::concat({block, swf::showFrame(), swf::end()})));
    ddCharacter* c = ddDictionary_get(s->root, id);
    EXPECT_NE(c, nullptr);
    if (!c) return nullptr;
    EXPECT_EQ(c->type, ddCharacterShape);
    return reinterpret_cast<ddShapeCharacter*>(c)->shape;
  }
  static std::vector<int> types(const ddShape* shape) {
    std::vector<int> out;
    for (int i = 0; i < shape->recordCount; i++) out.push_back(shape->records[i].type);
    return out;
  }
};

TEST_F(MovieShapeTest, StyleChangesBecomeOneRecordEachAndAGroupOpensAtTheOrigin) {
  swf::Writer w;
  w.rect(-20, 200, 0, 400);
  w.raw(swf::shapeStyles(2, {{255, 0, 0}, {0, 255, 0}}, {{40, {1, 2, 3}}}));
  w.bits(2, 4);
  w.bits(1, 4);
  w.styleChange(2, 1, std::make_pair(20, 40), 2u, 1u, std::nullopt);
  w.lineEdge(100, 0);
  w.lineEdge(0, -60);
  w.lineEdge(20, 20);
  w.curveEdge(20, 0, 0, 20);
  // The origin with both fills and the line: a new group, not a move.
  w.styleChange(2, 1, std::make_pair(0, 0), 0u, 2u, 1u);
  w.lineEdge(10, 0);
  w.endShape();
  ddShape* shape = shapeOf(swf::defineShape(2, 1, w));
  ASSERT_NE(shape, nullptr);
  std::vector<int> expected = {ddRecordMove,   ddRecordFill0,  ddRecordFill1,   ddRecordLineTo,
                               ddRecordLineTo, ddRecordLineTo, ddRecordCurveTo, ddRecordGroup,
                               ddRecordFill0,  ddRecordFill1,  ddRecordLine,    ddRecordLineTo,
                               ddRecordEnd};
  ASSERT_EQ(types(shape), expected);
  const ddShapeRecord* r = shape->records;
  EXPECT_EQ(r[0].data[1], 2048);  // 40 twips
  EXPECT_EQ(r[1].data[0], 1);
  EXPECT_EQ(r[4].data[1], -20 * 1024 / 20);  // a vertical edge moves y only
  EXPECT_EQ(r[4].data[0], 120 * 1024 / 20);
  // The curve's points are absolute: control from the pen, anchor from the control.
  EXPECT_EQ(r[6].data[0], 160 * 1024 / 20);
  EXPECT_EQ(r[6].data[3], 20 * 1024 / 20);
  // Fill 0 is "none" whatever the base.
  EXPECT_EQ(r[8].data[0], -1);
  EXPECT_EQ(ddColor(r[10].data[1]), 0xFF030201u);
  EXPECT_EQ(r[11].data[0], 10 * 1024 / 20);
  EXPECT_TRUE(shape->hasCurves);
  // The declared bounds replace what the records reached.
  EXPECT_EQ(shape->bounds.xMin, -1024);
  EXPECT_EQ(shape->bounds.yMax, 400 * 1024 / 20);
}

TEST_F(MovieShapeTest, NewStylesAppendToOneFillTableAndRebaseIndices) {
  swf::Writer w;
  w.rect(0, 100, 0, 100);
  w.raw(swf::shapeStyles(32, {{1, 1, 1, 10}, {2, 2, 2, 20}}, {{20, {9, 9, 9, 99}}}));
  w.bits(2, 4);
  w.bits(1, 4);
  w.styleChange(2, 1, std::nullopt, std::nullopt, 2u, 1u);
  w.lineEdge(10, 10);
  w.bits(0, 1);  // a style change bringing new style arrays
  w.bits(16, 5);
  w.raw(swf::shapeStyles(32, {{3, 3, 3, 30}}, {{60, {7, 7, 7, 77}}}));
  w.bits(1, 4);
  w.bits(1, 4);
  w.styleChange(1, 1, std::nullopt, 0u, 1u, 1u);
  w.lineEdge(10, 10);
  w.endShape();
  ddShape* shape = shapeOf(swf::defineShape(32, 1, w));
  ASSERT_NE(shape, nullptr);
  ASSERT_EQ(shape->fillCount, 3);
  EXPECT_EQ(shape->fills[2].data.color, 0x1E030303u);
  std::vector<int> expected = {ddRecordFill1, ddRecordLine, ddRecordLineTo, ddRecordFill0,
                               ddRecordFill1, ddRecordLine, ddRecordLineTo, ddRecordEnd};
  ASSERT_EQ(types(shape), expected);
  EXPECT_EQ(shape->records[3].data[0], -1);
  EXPECT_EQ(shape->records[4].data[0], 2);  // base 2 plus entry 1 minus 1
  // The line array is replaced, not appended to.
  EXPECT_EQ(shape->records[5].data[0], 60);
  EXPECT_EQ(ddColor(shape->records[5].data[1]), 0x4D070707u);
  EXPECT_EQ(shape->lineWidth, 60);
}

// The file ends inside the fill array, whose count takes the escape to 16
// bits: the rest are fills read from zeros.
TEST_F(MovieShapeTest, StylesPastTheEndOfTheDataReadAsZeros) {
  swf::Writer w;
  w.u16(32 << 6 | 63);
  w.u32(5000);
  w.u16(1);
  w.rect(0, 10, 0, 10);
  w.raw({255, 0xE8, 0x03, 0, 9, 9, 9, 9});  // 1000 fills, one solid given
  ddStream* s = parse(swf::movie(w.bytes));
  auto* c = reinterpret_cast<ddShapeCharacter*>(ddDictionary_get(s->root, 1));
  ASSERT_NE(c, nullptr);
  ASSERT_EQ(c->shape->fillCount, 1000);
  EXPECT_EQ(c->shape->fills[0].data.color, 0x09090909u);
  EXPECT_EQ(c->shape->fills[999].kind, ddFillSolid);
  EXPECT_EQ(c->shape->fills[999].data.color, 0u);
}

TEST_F(MovieShapeTest, GradientFillsScaleTheirMatrixAndStopsInterpolateUnclamped) {
  swf::Writer w;
  w.rect(0, 10, 0, 10);
  w.raw({1, 0x10});  // one linear gradient
  w.matrix({std::make_pair(0x10000, 0x8000), std::nullopt, 20, 0});
  w.raw({2, 0, 255, 0, 0, 255, 255, 0, 0, 255, 128});  // two stops
  w.u8(0);                                             // no lines
  w.bits(0, 8);
  w.endShape();
  ddShape* shape = shapeOf(swf::defineShape(32, 1, w));
  ASSERT_NE(shape, nullptr);
  const ddFill& linear = shape->fills[0];
  EXPECT_EQ(linear.kind, ddFillLinear);
  EXPECT_EQ(linear.matrix.a, 13159);
  EXPECT_EQ(linear.matrix.d, (512 * 13159) >> 10);
  EXPECT_EQ(linear.matrix.tx, 1024);  // translation is not scaled
  ASSERT_EQ(linear.data.gradient->count, 2);
  EXPECT_EQ(linear.data.gradient->stops[1].pos, 255 * 256);

  ddGradient* g = ddGradient_create();
  ddGradient_addStop(g, 0, 0xFF0000FFu);
  ddGradient_addStop(g, 128, 0xFFFF0000u);
  ddGradient_addStop(g, 255, 0x00FF0000u);
  EXPECT_EQ(ddGradient_colorAt(g, 64 * 256), 0xFF7F007Fu);
  EXPECT_EQ(ddGradient_colorAt(g, 70000), 0x00FF0000u);
  EXPECT_EQ(ddGradient_colorAt(g, -5), 0xFF0000FFu);
  // The lookup cursor is only a cache: the same answers in any order.
  std::vector<ddColor> forward, backward;
  for (int p = 0; p <= 65535; p += 4099) forward.push_back(ddGradient_colorAt(g, p));
  for (int p = 65535 - 65535 % 4099; p >= 0; p -= 4099)
    backward.insert(backward.begin(), ddGradient_colorAt(g, p));
  EXPECT_EQ(forward, backward);
  ddGradient_destroy(g);
}

TEST_F(MovieShapeTest, AShapeIsNoBitmapAndAnUnknownFillTypeIsFatal) {
  auto fillOfType = [](int type) {
    swf::Writer w;
    w.rect(0, 10, 0, 10);
    w.raw({1, uint8_t(type)});
    if (type == 0x41) w.u16(1);
    w.matrix({});
    w.u8(0);
    w.bits(0, 8);
    w.endShape();
    return swf::defineShape(2, 2, w);
  };
  ddStream* s = parse(
      swf::movie(swf::concat({squareShape(1), fillOfType(0x41), swf::showFrame(), swf::end()})));
  auto* c = reinterpret_cast<ddShapeCharacter*>(ddDictionary_get(s->root, 2));
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->shape->fills[0].kind, ddFillSolid);
  EXPECT_EQ(c->shape->fills[0].data.color, 0u);  // transparent
  EXPECT_EQ(warnings(), std::vector<std::string>{"Requested character id is not a bitmap"});
  try {
    parse(swf::movie(swf::concat({fillOfType(0x13), swf::end()})));
    FAIL() << "no fatal report";
  } catch (const FatalError& e) {
    EXPECT_STREQ(e.what(), "Unknown fill type: 19");
  }
}

// The rest of a block after a shape's end record is read as blocks, and a
// character defined again under an id replaces the first, which stays owned
// (the fixture's leak count checks it is freed).
TEST_F(MovieShapeTest, BlocksAfterAnEarlyEndAndTheDictionary) {
  Bytes shape = squareShape(1);
  shape.insert(shape.end(), {0x40, 0x00});  // a ShowFrame header inside the block
  uint32_t length = uint32_t(shape[2] | shape[3] << 8 | shape[4] << 16) + 2;
  shape[2] = uint8_t(length);
  shape[3] = uint8_t(length >> 8);
  swf::MovieOptions o;
  o.frames = 3;
  ddStream* s = parse(swf::movie(swf::concat({shape, squareShape(300), squareShape(7),
                                              squareShape(7, 22), swf::showFrame(), swf::end()}),
                                 o));
  EXPECT_EQ(s->root->framesRead, 2);
  ddDictionary* d = s->root->dictionary;
  EXPECT_EQ(d->count, 301);
  EXPECT_EQ(ddDictionary_get(s->root, 5), nullptr);
  EXPECT_EQ(ddDictionary_get(s->root, 70000), nullptr);
  EXPECT_EQ(d->retiredCount, 1);
  EXPECT_NE(ddDictionary_get(s->root, 7), d->retired[0]);
}

}  // namespace
