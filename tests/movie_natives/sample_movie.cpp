#include "sample_movie.h"

#include <zlib.h>

namespace sample {

namespace {

constexpr int kTwips = 20;

swf::Bytes deflate(const swf::Bytes& data) {
  uLongf size = compressBound(uLong(data.size()));
  swf::Bytes out(size);
  compress(out.data(), &size, data.data(), uLong(data.size()));
  out.resize(size);
  return out;
}

// 8 by 8 direct pixels with alpha: a colour ramp, half of it half transparent.
swf::Bytes bitmap(int id) {
  swf::Bytes argb;
  for (int y = 0; y < 8; y++) {
    for (int x = 0; x < 8; x++) {
      argb.push_back(uint8_t(y < 4 ? 255 : 128));
      argb.push_back(uint8_t(x * 32));
      argb.push_back(uint8_t(y * 32));
      argb.push_back(uint8_t(255 - x * 32));
    }
  }
  swf::Writer w;
  w.u16(uint32_t(id));
  w.u8(5);
  w.u16(8);
  w.u16(8);
  w.raw(deflate(argb));
  return swf::block(36, w.bytes, true);
}

void rectOutline(swf::Writer& body, int width, int height) {
  body.rectangleRecords(width * kTwips, height * kTwips);
}

// A square of `size` pixels filled with bitmap `bitmapId`, tiled every 20 px.
swf::Bytes bitmapSquare(int id, int bitmapId, int size) {
  swf::Writer body;
  body.rect(0, size * kTwips, 0, size * kTwips);
  body.u8(1);
  body.u8(0x40);
  body.u16(uint32_t(bitmapId));
  // 50 twips (2.5 px) a bitmap pixel: the 8 pixels repeat every 20 px.
  body.matrix(swf::Matrix{std::make_pair(50 << 16, 50 << 16), std::nullopt, 0, 0});
  body.u8(0);
  rectOutline(body, size, size);
  return swf::defineShape(2, id, body);
}

}  // namespace

swf::Bytes colouredRect(int id, int width, int height, uint8_t r, uint8_t g, uint8_t b, uint8_t a) {
  swf::Writer body;
  body.rect(0, width * kTwips, 0, height * kTwips);
  body.raw(swf::shapeStyles(32, {{r, g, b, a}}, {}));
  rectOutline(body, width, height);
  return swf::defineShape(32, id, body);
}

swf::Bytes colouredSquare(int id, int size, uint8_t r, uint8_t g, uint8_t b, uint8_t a) {
  return colouredRect(id, size, size, r, g, b, a);
}

swf::Bytes translate(int depth, int id, int x, int y, const char* name) {
  swf::Place p;
  p.depth = depth;
  if (id >= 0)
    p.id = id;
  else
    p.move = true;
  p.matrix = swf::Matrix{std::nullopt, std::nullopt, x * kTwips, y * kTwips};
  if (name) p.name = name;
  return swf::placeObject2(p);
}

swf::Bytes movie(bool compressed) {
  swf::Bytes sprite = swf::concat({translate(1, 2, 0, 0), swf::showFrame(), translate(1, -1, 40, 0),
                                   swf::showFrame(), swf::end()});
  swf::Bytes body = swf::concat({
      swf::setBackground(0x33, 0x66, 0x99),
      colouredSquare(1, kSquareSize, 230, 40, 40),
      colouredSquare(2, kSpriteSquare, 40, 200, 60, 200),
      bitmap(3),
      bitmapSquare(4, 3, kBitmapSize),
      swf::defineSprite(10, 2, sprite),
      translate(1, 1, kSquareX, kSquareY),
      translate(2, 10, kHeroX, kHeroY, "hero"),
      translate(3, 4, kBitmapX, kBitmapY),
      translate(7, 10, kOtherX, kOtherY),
      swf::showFrame(),
      translate(1, -1, kSquareMovedX, kSquareMovedY),
      swf::showFrame(),
      swf::removeObject2(7),
      swf::showFrame(),
      swf::end(),
  });
  swf::MovieOptions options;
  options.frames = 3;
  options.rateFraction = 128;
  options.rate = 24;
  options.compressed = compressed;
  return swf::movie(body, options);
}

}  // namespace sample
