// Morph shapes and text in whole movies: what the reader makes of their
// blocks, damaged ones included, and what they draw compared with plain
// shapes at the geometry they should reach.
#include <cstring>

#include "movie/natives/movie_host.h"
#include "movie/render/dd_render.h"
#include "movie_test_support.h"

namespace {

using swf::Bytes;

const swf::Solid red{255, 0, 0}, blue{0, 0, 255};

using Points = std::vector<std::pair<int32_t, int32_t>>;
const Points startSquare = {{200, 200}, {2200, 200}, {2200, 1200}, {200, 1200}};
const Points endQuad = {{1000, 600}, {5000, 1000}, {4400, 3400}, {1400, 3000}};

Bytes morphBlock(int id, const swf::Writer& end = swf::closedPolygon(endQuad, false)) {
  return swf::defineMorphShape(id, {{red, blue}}, {}, swf::closedPolygon(startSquare), end);
}

swf::Bytes placeAt(int depth, std::optional<int> id, int ratio, bool move) {
  swf::Place p;
  p.depth = depth;
  p.id = id;
  p.ratio = ratio;
  p.move = move;
  return swf::placeObject2(p);
}

// A plain shape of ddFixed points (pixels at scale 1) in one solid colour.
ddShape* fixedPolygon(const std::vector<std::pair<ddFixed, ddFixed>>& p, ddColor colour) {
  ddShape* s = ddShape_create();
  ddShape_addFill(s, ddFill{ddFillSolid, {colour}, ddMatrixIdentity});
  *ddShape_addRecord(s) = ddShapeRecord{ddRecordFill1, {0, 0, 0, 0}};
  ddShape_moveTo(s, p[0].first, p[0].second);
  for (size_t i = 1; i <= p.size(); i++)
    ddShape_lineTo(s, p[i % p.size()].first, p[i % p.size()].second);
  ddShape_finish(s);
  return s;
}

class MorphTextTest : public MovieTest {
 protected:
  void SetUp() override {
    MovieTest::SetUp();
    ddRender_install();
  }
  ddMovie* openDrawn(const Bytes& body, int frames = 1) {
    swf::MovieOptions o;
    o.frames = uint16_t(frames);
    ddMovie* m = open(swf::movie(body, o));
    ddMovie_draw(m, nullptr, nullptr);
    return m;
  }
  // The pixels `shape` gives alone on an empty surface of the movie's size.
  static std::vector<ddColor> drawnAlone(ddShape* shape, const ddMovie* like) {
    ddSurface* s = ddSurface_create(like->width, like->height);
    ddRender* r = ddRender_create(shape);
    ddRender_update(r, nullptr, &ddMatrixIdentity);
    const ddRect clip{0, like->width << 10, 0, like->height << 10};
    ddRender_draw(r, s, &ddMatrixIdentity, &ddCxformIdentity, &clip);
    std::vector<ddColor> out(s->pixels, s->pixels + size_t(s->width) * s->height);
    ddRender_destroy(r);
    ddSurface_destroy(s);
    ddShape_destroy(shape);
    return out;
  }
  static std::vector<ddColor> pixels(const ddMovie* m) {
    return std::vector<ddColor>(m->surface->pixels,
                                m->surface->pixels + size_t(m->width) * m->height);
  }
  static int differing(const std::vector<ddColor>& a, const std::vector<ddColor>& b) {
    int n = 0;
    for (size_t i = 0; i < a.size(); i++) n += a[i] != b[i];
    return n;
  }
};

// Ratio 0 is the start, 32768 the middle, and 65535 stops at 1023/1024 of the
// end because the weights come from the ratio shifted down by 6; the colour's
// weights reach the whole end colour there. Going back to the start clears
// what the end covered.
TEST_F(MorphTextTest, MorphsDrawTheirShapeMixedAtThePlacementsRatio) {
  ddMovie* m =
      openDrawn(swf::concat({morphBlock(1), placeAt(1, 1, 0, false), swf::showFrame(),
                             placeAt(1, std::nullopt, 32768, true), swf::showFrame(),
                             placeAt(1, std::nullopt, 65535, true), swf::showFrame(),
                             placeAt(1, std::nullopt, 0, true), swf::showFrame(), swf::end()}),
                4);
  auto fixedOf = [](const Points& p, auto f) {
    std::vector<std::pair<ddFixed, ddFixed>> out;
    for (const auto& [x, y] : p) out.push_back({f(ddFixed_fromTwips(x)), f(ddFixed_fromTwips(y))});
    return out;
  };
  const auto start = fixedOf(startSquare, [](ddFixed v) { return v; });
  const auto end = fixedOf(endQuad, [](ddFixed v) { return ddFixed(int64_t(v) * 1023 >> 10); });
  std::vector<std::pair<ddFixed, ddFixed>> middle;
  for (size_t i = 0; i < start.size(); i++) {
    const auto e = fixedOf(endQuad, [](ddFixed v) { return v; })[i];
    middle.push_back({(start[i].first + e.first) >> 1, (start[i].second + e.second) >> 1});
  }
  const ddColor startColour = 0xFF0000FFu, endColour = 0xFFFF0000u;
  // Each side weighs 128 of 256 in the middle.
  const ddColor middleColour = 0xFE7F007Fu;

  EXPECT_EQ(differing(pixels(m), drawnAlone(fixedPolygon(start, startColour), m)), 0);
  ddClip_moveFrame(m, m->rootClip, 1);
  ddMovie_draw(m, nullptr, nullptr);
  EXPECT_EQ(differing(pixels(m), drawnAlone(fixedPolygon(middle, middleColour), m)), 0);
  ddClip_moveFrame(m, m->rootClip, 2);
  ddMovie_draw(m, nullptr, nullptr);
  EXPECT_EQ(differing(pixels(m), drawnAlone(fixedPolygon(end, endColour), m)), 0);
  ddClip_moveFrame(m, m->rootClip, 3);
  ddMovie_draw(m, nullptr, nullptr);
  EXPECT_EQ(differing(pixels(m), drawnAlone(fixedPolygon(start, startColour), m)), 0);
  EXPECT_TRUE(warnings().empty());
}

// A morph under a mask draws whole and silently, as morphs are not masked;
// a plain shape under the same mask is cut, and the list's bounds are cut by
// the mask for both.
TEST_F(MorphTextTest, MasksPassOverMorphsAndCutPlainShapes) {
  swf::Place mask;
  mask.depth = 1;
  mask.id = 2;
  mask.clipDepth = 4;
  mask.matrix = swf::Matrix{{}, {}, 0, 2000};
  swf::Place plain;
  plain.depth = 3;
  plain.id = 3;
  plain.matrix = swf::Matrix{{}, {}, 0, 2000};
  ddMovie* m = openDrawn(swf::concat(
      {morphBlock(1), squareShape(2, 2, 1000), squareShape(3, 2, 4000), swf::placeObject2(mask),
       placeAt(2, 1, 0, false), swf::placeObject2(plain), swf::showFrame(), swf::end()}));
  EXPECT_TRUE(warnings().empty());
  auto at = [m](int x, int y) { return m->surface->pixels[y * m->width + x]; };
  EXPECT_EQ(at(100, 50), 0xFF0000FFu);  // the morph, outside the 50-pixel mask
  EXPECT_EQ(at(20, 110), 0xFF0000FFu);  // the plain shape where the mask is
  EXPECT_EQ(at(20, 150), 0u);           // ... and not below it
  const ddRect& b = m->rootClip->head.bounds;
  EXPECT_EQ(b.xMax, 50 << 10);
  EXPECT_EQ(b.yMin, 100 << 10);
  EXPECT_EQ(b.yMax, 150 << 10);

  // A morph cannot mask: it warns and masks nothing, and is not drawn itself.
  warnings().clear();
  mask.id = 1;
  plain.depth = 2;
  ddMovie* m2 =
      openDrawn(swf::concat({morphBlock(1), squareShape(3, 2, 4000), swf::placeObject2(mask),
                             swf::placeObject2(plain), swf::showFrame(), swf::end()}));
  ASSERT_EQ(warnings().size(), 1u);
  EXPECT_EQ(warnings()[0], "Unsupported mask type: 1");
  EXPECT_EQ(m2->surface->pixels[150 * m2->width + 150], 0xFF0000FFu);
  EXPECT_EQ(m2->surface->pixels[20 * m2->width + 20], 0u);
}

// End edges that disagree with the start's in number or style: extra ones
// are dropped, missing ones leave the start's coordinates, a style change is
// fatal, and all-zero bounds define nothing.
TEST_F(MorphTextTest, DamagedMorphsStayInsideTheirShapes) {
  Points more = endQuad;
  more.push_back({600, 3000});
  more.push_back({300, 2000});
  Points fewer = {{1000, 600}, {5000, 1000}};
  for (const Points& end : {more, fewer}) {
    ddMovie* m =
        openDrawn(swf::concat({morphBlock(1, swf::closedPolygon(end, false)),
                               placeAt(1, 1, 65535, false), swf::showFrame(), swf::end()}));
    const ddMorphInstance* i = reinterpret_cast<ddMorphInstance*>(instanceAt(m->rootClip, 1));
    ASSERT_NE(i, nullptr);
    const ddShape* start = reinterpret_cast<ddMorphCharacter*>(i->shape.head.character)->start;
    ASSERT_EQ(i->current->recordCount, start->recordCount);
    const ddShapeRecord& last = i->current->records[i->current->recordCount - 2];
    // With fewer end edges the last keeps its start point, scaled by 1023/1024.
    if (end.size() < endQuad.size()) {
      EXPECT_EQ(last.data[0], int32_t(int64_t(ddFixed_fromTwips(200)) * 1023 >> 10));
    }
  }

  swf::Writer styled;
  styled.bits(1, 4);
  styled.bits(0, 4);
  styled.styleChange(1, 0, std::nullopt, 1u, std::nullopt, std::nullopt);
  styled.endShape();
  EXPECT_THROW(openDrawn(swf::concat({morphBlock(1, styled), swf::end()})), FatalError);
}

TEST_F(MorphTextTest, MorphsWithZeroBoundsDefineNothing) {
  ddMovie* m = openDrawn(
      swf::concat({swf::defineMorphShape(1, {{red, blue}}, {}, swf::closedPolygon(startSquare),
                                         swf::closedPolygon(endQuad, false), {0, 0, 0, 0}),
                   squareShape(2), placeAt(1, 1, 0, false), swf::placeNew(2, 2), swf::showFrame(),
                   swf::end()}));
  EXPECT_EQ(ddDictionary_get(m->rootTimeline, 1), nullptr);
  // The block was passed whole: the shape after it is read.
  EXPECT_EQ(instances(m->rootClip).size(), 1u);
}

// Fills of one kind mix: gradients stop by stop and with their matrices;
// fills of different kinds leave the working copy as it was.
TEST_F(MorphTextTest, FillsMixByKind) {
  auto gradient = [](std::initializer_list<std::pair<int, ddColor>> stops, ddFixed scale) {
    ddFill f{ddFillLinear, {}, ddMatrix{scale, 0, 0, scale, 0, 0}};
    f.data.gradient = ddGradient_create();
    for (const auto& [ratio, colour] : stops) ddGradient_addStop(f.data.gradient, ratio, colour);
    return f;
  };
  ddFill a = gradient({{0, 0xFF0000FFu}, {100, 0xFF00FF00u}}, 1024);
  ddFill b = gradient({{200, 0xFFFF0000u}, {255, 0xFF00FF00u}}, 3072);
  ddFill out = gradient({{0, 0}, {100, 0}}, 0);
  ddFill_interpolate(a, b, &out, 32768);
  const ddGradient* g = out.data.gradient;
  EXPECT_EQ(g->stops[0].pos, 100 * 256);
  EXPECT_EQ(g->stops[1].pos, 177 * 256);  // (100 + 255) / 2, truncated
  EXPECT_EQ(ddGradient_colorAt(out.data.gradient, 100 * 256), 0xFE7F007Fu);
  EXPECT_EQ(g->stops[0].dRed, -127 * 65536 / (77 * 256));
  EXPECT_EQ(g->stops[0].dGreen, (254 - 0) * 65536 / (77 * 256));
  EXPECT_EQ(out.matrix.a, 2048);

  ddFill solid{ddFillSolid, {0xFF123456u}, ddMatrixIdentity};
  ddFill kept = solid;
  ddFill_interpolate(solid, a, &kept, 40000);
  EXPECT_EQ(kept.data.color, 0xFF123456u);
  for (ddFill* f : {&a, &b, &out}) ddGradient_destroy(f->data.gradient);
}

// Fonts

// Glyph 0 is a tall bar, glyph 1 a square, glyph 2 empty, in the 1024 square.
std::vector<swf::Writer> glyphs() {
  swf::Writer empty;
  empty.bits(0, 8);
  empty.endShape();
  return {swf::glyphRectangle(0, -800, 300, 800), swf::glyphRectangle(100, -500, 500, 500), empty};
}

swf::TextRecord run(std::optional<int> font, int height, std::optional<int16_t> x,
                    std::optional<int16_t> y, std::vector<std::pair<uint32_t, int32_t>> g) {
  swf::TextRecord r;
  r.font = font;
  r.height = height;
  r.x = x;
  r.y = y;
  r.colour = swf::Solid{0, 0, 255};
  r.glyphs = std::move(g);
  return r;
}

// A glyph shape as a plain shape placed where the text puts it: scaled by
// height / 1024 and moved to the pen.
Bytes glyphAsShape(int id, int glyph, swf::Solid colour) {
  const int32_t box[3][4] = {{0, -800, 300, 800}, {100, -500, 500, 500}, {0, 0, 0, 0}};
  const int32_t* b = box[glyph];
  swf::Writer w;
  w.rect(b[0], b[0] + b[2], b[1], b[1] + b[3]);
  w.raw(swf::shapeStyles(32, {colour}, {}));
  w.bits(1, 4);
  w.bits(0, 4);
  w.styleChange(1, 0, std::make_pair(b[0], b[1]), std::nullopt, 1u, std::nullopt);
  w.lineEdge(b[2], 0);
  w.lineEdge(0, b[3]);
  w.lineEdge(-b[2], 0);
  w.lineEdge(0, -b[3]);
  w.endShape();
  return swf::defineShape(32, id, w);
}

Bytes placeScaled(int depth, int id, int height, int32_t x, int32_t y) {
  swf::Place p;
  p.depth = depth;
  p.id = id;
  p.matrix = swf::Matrix{std::make_pair(height * 64, height * 64), {}, x, y};
  return swf::placeObject2(p);
}

// A run in two styles, the second continuing where the first ended, with an
// index past the font and an empty glyph among them, against the glyphs
// placed one by one as plain shapes.
TEST_F(MorphTextTest, GlyphRunsDrawLikeTheirGlyphShapesPlacedAlone) {
  const int h = 1024;
  std::vector<swf::TextRecord> records = {
      run(1, h, 400, 2000, {{0, 600}, {7, 400}, {1, 700}}),
      run(std::nullopt, 0, std::nullopt, std::nullopt, {{2, 300}, {0, 500}})};
  records[1].colour = swf::Solid{0, 128, 0};
  ddMovie* text =
      openDrawn(swf::concat({swf::defineFont(1, glyphs()), swf::defineText(33, 2, records, 4, 12),
                             swf::placeNew(1, 2), swf::showFrame(), swf::end()}));
  const swf::Solid b{0, 0, 255}, g{0, 128, 0};
  ddMovie* plain = openDrawn(
      swf::concat({glyphAsShape(1, 0, b), glyphAsShape(2, 1, b), glyphAsShape(3, 0, g),
                   placeScaled(1, 1, h, 400, 2000), placeScaled(2, 2, h, 400 + 600 + 400, 2000),
                   placeScaled(3, 3, h, 400 + 1700 + 300, 2000), swf::showFrame(), swf::end()}));
  EXPECT_EQ(differing(pixels(text), pixels(plain)), 0);
  EXPECT_GT(text->surface->pixels[80 * text->width + 25], 0u);
  EXPECT_EQ(reinterpret_cast<ddTextInstance*>(instanceAt(text->rootClip, 1))->glyphs.count, 4);
  EXPECT_TRUE(warnings().empty());
}

// Edit text looks its characters up in the font's code table; characters
// outside it are dropped without moving the pen, and the empty glyph moves
// it by its advance only.
TEST_F(MorphTextTest, EditTextLaysOutByCodeTableAndAdvances) {
  swf::Font2 font;
  font.glyphs = glyphs();
  font.codes = {'A', 'B', ' '};
  font.advances = {400, 600, 1000};
  font.kerning = {{'A', 'B', uint16_t(-300)}};  // no effect
  font.wideOffsets = true;
  ddMovie* text = openDrawn(swf::concat({swf::defineFont2(1, font),
                                         swf::defineEditText(2, 1, 512, {200, 0, 0, 255}, "AxB A"),
                                         swf::placeNew(1, 2), swf::showFrame(), swf::end()}));
  // Pens 0, 400 and, after the space's advance, 2000 in glyph units are 0,
  // 200 and 1000 twips at half size; the baseline sits 38/1024 of the height
  // down.
  const swf::Solid r{200, 0, 0};
  ddMovie* plain =
      openDrawn(swf::concat({glyphAsShape(1, 0, r), glyphAsShape(2, 1, r), glyphAsShape(3, 0, r),
                             placeScaled(1, 1, 512, 0, 380), placeScaled(2, 2, 512, 200, 380),
                             placeScaled(3, 3, 512, 1000, 380), swf::showFrame(), swf::end()}));
  EXPECT_EQ(differing(pixels(text), pixels(plain)), 0);
  const ddFont* f = reinterpret_cast<ddFont*>(ddDictionary_get(text->rootTimeline, 1));
  EXPECT_EQ(f->codeTable[int('B')], 1);
  EXPECT_EQ(f->advances[1], 600 * 1024 / 20);
}

// Text takes part in hit tests through the clip that holds it, glyph by
// glyph; edit text does not.
TEST_F(MorphTextTest, HitTestsSeeGlyphsOfStaticText) {
  Bytes sprite = swf::defineSprite(
      3, 1, swf::concat({swf::placeNew(1, 2), swf::placeNew(2, 4), swf::showFrame(), swf::end()}));
  swf::Font2 font;
  font.glyphs = glyphs();
  font.codes = {'A', 'B', ' '};
  Bytes file = swf::movie(
      swf::concat({swf::defineFont2(1, font),
                   swf::defineText(11, 2, {run(1, 1024, 0, 1000, {{0, 1000}, {1, 500}})}),
                   swf::defineEditText(4, 1, 1024, {0, 0, 0, 255}, "A"), sprite,
                   swf::placeNew(1, 3), swf::showFrame(), swf::end()}));
  ddMovie* m = ddMovie_openBytes(file.data(), int32_t(file.size()), 550, 400);
  ASSERT_NE(m, nullptr);
  ddMovie_draw(m, nullptr, nullptr);
  ddClip* clip = reinterpret_cast<ddClip*>(instanceAt(m->rootClip, 1));
  EXPECT_EQ(ddMovie_hitClip(m, 7, 30), clip);      // inside the bar
  EXPECT_EQ(ddMovie_hitClip(m, 25, 30), nullptr);  // between the glyphs
  EXPECT_EQ(ddMovie_hitClip(m, 60, 40), clip);     // inside the square
  EXPECT_EQ(ddMovie_hitClip(m, 7, 5), nullptr);    // the edit text's bar, drawn but not hit
  EXPECT_NE(m->surface->pixels[5 * m->width + 7], 0u);
  ddMovie_dispose(m);
}

// Fonts and text that name what is not there: offsets past the block, a
// text record on an absent font, font info for a non-font, a non-font
// selected as a font.
TEST_F(MorphTextTest, DamagedFontsAndTextStayInsideTheirBuffers) {
  swf::Writer offsets;
  offsets.u16(9);
  offsets.u16(6);       // three glyphs
  offsets.u16(0xFFF0);  // far past the block
  offsets.u16(2);       // before the table's end
  offsets.raw({0x10, 0x00, 0x10});
  // The text comes first: the font's first glyph reads on to the file's end.
  ddMovie* m = openDrawn(swf::concat(
      {swf::defineText(
           11, 2, {run(1, 1024, 0, 1000, {{0, 500}, {2, 500}}), run(5, 1024, 0, 1000, {{0, 500}})}),
       swf::placeNew(1, 2), swf::showFrame(), swf::block(10, offsets.bytes, true), swf::end()}));
  EXPECT_EQ(reinterpret_cast<ddTextInstance*>(instanceAt(m->rootClip, 1))->glyphs.count, 0);
  ASSERT_NE(ddDictionary_get(m->rootTimeline, 9), nullptr);

  warnings().clear();
  // Info on a non-font leaves the stream after the name's length: the rest
  // of its block is misread as block headers.
  ddMovie* info = openDrawn(swf::concat(
      {swf::defineFont(2, glyphs()), swf::defineFontInfo(2, "Serif", {'x', 'y', 0x1234}, true),
       squareShape(1), swf::defineFontInfo(1, "Sans", {'a'}), swf::end()}));
  ASSERT_FALSE(warnings().empty());
  EXPECT_EQ(warnings()[0], "fontInfo found for non-font character");
  const ddFont* f = reinterpret_cast<ddFont*>(ddDictionary_get(info->rootTimeline, 2));
  ASSERT_NE(f, nullptr);
  EXPECT_STREQ(f->name, "Serif");
  EXPECT_EQ(f->codeTable[int('y')], 1);

  EXPECT_THROW(openDrawn(swf::concat(
                   {squareShape(1), swf::defineText(11, 2, {run(1, 1024, 0, 0, {})}), swf::end()})),
               FatalError);
}

TEST_F(MorphTextTest, EditTextOnAMissingFontIsFatal) {
  EXPECT_THROW(
      openDrawn(swf::concat({swf::defineEditText(2, 1, 512, {0, 0, 0, 255}, "A"), swf::end()})),
      FatalError);
}

}  // namespace
