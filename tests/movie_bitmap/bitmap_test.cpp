// Lossless bitmap blocks decode to premultiplied words, and bitmap fills paint
// them (or nothing, when the bitmap is absent).
#include <zlib.h>

#include "movie/render/dd_render.h"
#include "movie_test_support.h"

namespace {

using swf::Bytes;

Bytes deflate(const Bytes& data) {
  uLongf size = compressBound(uLong(data.size()));
  Bytes out(size);
  EXPECT_EQ(compress(out.data(), &size, data.data(), uLong(data.size())), Z_OK);
  out.resize(size);
  return out;
}

// A block 20 or 36; `colors` is given for format 3 only.
Bytes bitmapBlock(int type, int id, int format, int w, int h, const Bytes& data, int colors = 0) {
  swf::Writer b;
  b.u16(uint32_t(id));
  b.u8(uint32_t(format));
  b.u16(uint32_t(w));
  b.u16(uint32_t(h));
  if (format == 3) b.u8(uint32_t(colors - 1));
  b.raw(deflate(data));
  return swf::block(type, b.bytes, true);
}

ddColor word(int r, int g, int b, int a) {
  return ddColor(r) | ddColor(g) << 8 | ddColor(b) << 16 | ddColor(a) << 24;
}

class BitmapTest : public MovieTest {
 protected:
  // The pixels of bitmap `id` after parsing a movie of `blocks`.
  std::vector<ddColor> decode(const Bytes& blocks, int id) {
    ddStream* s = parse(swf::movie(swf::concat({blocks, swf::showFrame(), swf::end()})));
    ddCharacter* c = ddDictionary_get(s->root, id);
    EXPECT_TRUE(c && c->type == ddCharacterBitmap);
    if (!c || c->type != ddCharacterBitmap) return {};
    const ddSurface* px = reinterpret_cast<ddBitmapCharacter*>(c)->surface;
    return std::vector<ddColor>(px->pixels, px->pixels + size_t(px->width) * px->height);
  }
};

TEST_F(BitmapTest, DirectPixelsAreScaledByTheirFirstByteAndEmptyBitmapsRead) {
  // Alpha, red, green, blue per pixel, two rows of two.
  const Bytes argb = {255, 10, 20, 30, 0, 200, 100, 50, 128, 200, 100, 50, 64, 255, 255, 255};
  // 255 scales to 254 and each channel a step down; 0 empties the pixel.
  const std::vector<ddColor> expected = {word(9, 19, 29, 254), 0, word(100, 50, 25, 127),
                                         word(63, 63, 63, 63)};
  for (int type : {20, 36}) {
    for (int format : {4, 5})  // 15-bit data is read as 32-bit all the same
      EXPECT_EQ(decode(bitmapBlock(type, 3, format, 2, 2, argb), 3), expected)
          << "block " << type << " format " << format;
  }
  // An empty bitmap reads, and so does the block after it.
  for (auto [w, h] : {std::pair{0, 3}, std::pair{3, 0}}) {
    EXPECT_TRUE(decode(swf::concat({bitmapBlock(36, 1, 5, w, h, {}), squareShape(2)}), 1).empty());
    ddCharacter* shape = ddDictionary_get(streams_.back()->root, 2);
    EXPECT_TRUE(shape && shape->type == ddCharacterShape) << w << "x" << h;
  }
}

TEST_F(BitmapTest, PaletteRowsArePaddedToFourBytesAndStrayIndicesTakeEntryZero) {
  // Three entries; rows of 3 indices padded with one byte. Index 7 is past the
  // palette; the padding holds 2, which must never show.
  const Bytes rows = {1, 2, 7, 2, 0, 1, 1, 2};
  auto data = [&](Bytes palette) {
    palette.insert(palette.end(), rows.begin(), rows.end());
    return palette;
  };
  // Entries of block 20 are opaque and kept exactly as written.
  const ddColor r = word(255, 0, 0, 255), g = word(0, 255, 0, 255), b = word(0, 0, 255, 255);
  EXPECT_EQ(decode(bitmapBlock(20, 4, 3, 3, 2, data({255, 0, 0, 0, 255, 0, 0, 0, 255}), 3), 4),
            (std::vector<ddColor>{g, b, r, r, g, g}));
  // Entries of block 36 carry alpha and are premultiplied by it.
  const ddColor red = word(254, 0, 0, 254), green = word(0, 127, 0, 127);
  EXPECT_EQ(
      decode(bitmapBlock(36, 5, 3, 3, 2, data({255, 0, 0, 255, 0, 255, 0, 128, 40, 80, 120, 0}), 3),
             5),
      (std::vector<ddColor>{green, 0, red, red, green, green}));
}

// A 640-twip square filled with bitmap `bitmapId` (clipped, 20 twips a pixel)
// placed at depth 1.
// A 32-pixel square at depth 1 whose one fill is written by `fill`.
template <class F>
Bytes filledSquare(int shapeId, F fill) {
  swf::Writer body;
  body.rect(0, 640, 0, 640);
  body.u8(1);  // one fill
  fill(body);
  body.u8(0);  // no lines
  body.rectangleRecords(640, 640);
  return swf::concat({swf::defineShape(2, shapeId, body), swf::placeNew(1, shapeId)});
}

Bytes bitmapSquare(int shapeId, int bitmapId) {
  return filledSquare(shapeId, [&](swf::Writer& body) {
    body.u8(0x41);  // clipped bitmap
    body.u16(uint32_t(bitmapId));
    body.matrix(swf::Matrix{std::make_pair(20 << 16, 20 << 16), std::nullopt, 0, 0});
  });
}

TEST_F(BitmapTest, FillsPaintThePremultipliedWordsOrNothingWhenTheBitmapIsAbsent) {
  ddRender_install();
  // One half-transparent entry, and indices past the palette that fall back to it.
  Bytes data = {200, 100, 50, 128};
  for (int i = 0; i < 16 * 16; i++) data.push_back(i % 3 ? 9 : 0);
  // The second movie never defines the bitmap.
  for (auto [blocks, inside] :
       {std::pair{swf::concat({bitmapBlock(36, 1, 3, 13, 16, data, 1), bitmapSquare(2, 1)}),
                  word(100, 50, 25, 127)},
        std::pair{bitmapSquare(2, 1), ddColor(0)}}) {
    ddMovie* movie = open(swf::movie(swf::concat({blocks, swf::showFrame(), swf::end()})));
    ddMovie_draw(movie, nullptr, nullptr);
    const ddSurface* s = movie->surface;
    EXPECT_EQ(s->pixels[5 * s->width + 5], inside);
    EXPECT_EQ(s->pixels[20 * s->width + 20], inside);
    EXPECT_EQ(s->pixels[40 * s->width + 40], 0u);  // outside the square
  }
}

// A bitmap whose stated size its data cannot fill, or one past the size
// players allow, is left out; fills naming it paint nothing and the rest of
// the movie plays. A large bitmap whose data does fill it stays.
TEST_F(BitmapTest, BitmapsTheirDataCannotFillAreDroppedAndTheMovieGoesOn) {
  ddRender_install();
  const Bytes red = squareShape(3);  // 5 pixels wide, red
  for (const Bytes& bitmap : {bitmapBlock(20, 1, 5, 62525, 17173, Bytes(64, 7)),
                              bitmapBlock(36, 1, 5, 8192, 1, Bytes(8192 * 4, 0)),
                              bitmapBlock(36, 1, 3, 4000, 4000, Bytes(16, 1), 1)}) {
    warnings().clear();
    ddMovie* movie = open(swf::movie(
        swf::concat({bitmap, bitmapSquare(2, 1), red,
                     swf::placeNew(2, 3, swf::Matrix{std::nullopt, std::nullopt, 1200, 1200}),
                     swf::showFrame(), swf::end()})));
    EXPECT_EQ(ddDictionary_get(movie->rootTimeline, 1), nullptr);
    ASSERT_EQ(warnings().size(), 1u);
    EXPECT_NE(warnings()[0].find("dropped"), std::string::npos) << warnings()[0];
    ddMovie_draw(movie, nullptr, nullptr);
    const ddSurface* s = movie->surface;
    EXPECT_EQ(s->pixels[5 * s->width + 5], 0u) << "the bitmap fill paints nothing";
    EXPECT_EQ(s->pixels[62 * s->width + 62], word(255, 0, 0, 255)) << "the next shape draws";
  }
  // Data that inflates to the full size keeps its bitmap, at the most zlib packs.
  for (auto [w, h] : {std::pair{8191, 1}, std::pair{2000, 2000}}) {
    const std::vector<ddColor> px =
        decode(bitmapBlock(36, 1, 5, w, h, Bytes(size_t(w) * h * 4, 0)), 1);
    EXPECT_EQ(px.size(), size_t(w) * h);
  }
}

// A gradient block that lists no stops paints opaque black, with the colour
// transform applied as to any other colour.
TEST_F(BitmapTest, GradientWithoutStopsPaintsOpaqueBlack) {
  ddRender_install();
  const Bytes square = filledSquare(2, [](swf::Writer& body) {
    body.u8(0x10);  // linear gradient
    body.matrix(swf::Matrix{});
    body.u8(0);  // no stops
  });
  ddMovie* movie = open(swf::movie(swf::concat({square, swf::showFrame(), swf::end()})));
  ddMovie_draw(movie, nullptr, nullptr);
  const ddSurface* s = movie->surface;
  EXPECT_EQ(s->pixels[5 * s->width + 5], word(0, 0, 0, 255));
  EXPECT_EQ(s->pixels[20 * s->width + 20], word(0, 0, 0, 255));
  EXPECT_EQ(s->pixels[40 * s->width + 40], 0u);
}

}  // namespace
