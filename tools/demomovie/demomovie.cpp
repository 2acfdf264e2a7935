// Writes the demo's movie: a star turning over a gradient sky while a ball
// bounces past it and fades, a shape morphing back and forth under a line of
// text, 48 frames at 24 per second, 256 by 256 pixels.
#include <cmath>
#include <cstdio>
#include <fstream>
#include <numbers>

#include "morphtext.h"
#include "swf_writer.h"

namespace {

constexpr int kTwips = 20;
constexpr int kSize = 256 * kTwips;
constexpr int kFrames = 48;

int32_t fixed16(double v) {
  return static_cast<int32_t>(std::lround(v * 65536.0));
}

// A square covering the frame, filled with a vertical linear gradient.
swf::Bytes sky(int id) {
  swf::Writer w;
  w.rect(0, kSize, 0, kSize);
  w.u8(1);
  w.u8(0x10);
  // The gradient square spans 32768 twips; turn it a quarter so it runs down.
  swf::Matrix m;
  const double s = double(kSize) / 32768.0;
  m.scale = {0, 0};
  m.rotate = {fixed16(s), fixed16(-s)};
  m.tx = kSize / 2;
  m.ty = kSize / 2;
  w.matrix(m);
  w.u8(3);
  w.u8(0);
  w.rgb(20, 30, 90);
  w.u8(160);
  w.rgb(90, 60, 150);
  w.u8(255);
  w.rgb(250, 150, 90);
  w.u8(0);  // no lines
  w.rectangleRecords(kSize, kSize);
  return swf::defineShape(22, id, w);
}

// A five-pointed star around the origin with an outline.
swf::Bytes star(int id, int outer, int inner) {
  swf::Writer w;
  w.rect(-outer, outer, -outer, outer);
  w.raw(swf::shapeStyles(22, {{255, 220, 60}}, {{40, {120, 60, 0}}}));
  w.bits(1, 4);
  w.bits(1, 4);
  int px = 0, py = -outer;
  w.styleChange(1, 1, std::make_pair(px, py), std::nullopt, 1u, 1u);
  for (int i = 1; i <= 10; ++i) {
    const double a = i * std::numbers::pi / 5 - std::numbers::pi / 2;
    const int r = (i % 2) ? inner : outer;
    const int x = static_cast<int>(std::lround(r * std::cos(a)));
    const int y = static_cast<int>(std::lround(r * std::sin(a)));
    w.lineEdge(x - px, y - py);
    px = x;
    py = y;
  }
  w.endShape();
  return swf::defineShape(22, id, w);
}

// A ball of quadratic curves around the origin, half transparent.
swf::Bytes ball(int id, int r) {
  swf::Writer w;
  w.rect(-r, r, -r, r);
  w.raw(swf::shapeStyles(32, {{230, 40, 60, 200}}, {}));
  w.bits(1, 4);
  w.bits(0, 4);
  w.styleChange(1, 0, std::make_pair(r, 0), std::nullopt, 1u, std::nullopt);
  // Eight arcs of 45 degrees, each a curve through its tangent point.
  const double k = std::tan(std::numbers::pi / 8);
  double x = r, y = 0;
  for (int i = 1; i <= 8; ++i) {
    const double a0 = (i - 1) * std::numbers::pi / 4, a1 = i * std::numbers::pi / 4;
    const double cx = r * (std::cos(a0) - k * std::sin(a0));
    const double cy = r * (std::sin(a0) + k * std::cos(a0));
    const double ex = r * std::cos(a1), ey = r * std::sin(a1);
    w.curveEdge(static_cast<int>(std::lround(cx - x)), static_cast<int>(std::lround(cy - y)),
                static_cast<int>(std::lround(ex - cx)), static_cast<int>(std::lround(ey - cy)));
    x = x + std::lround(cx - x) + std::lround(ex - cx);
    y = y + std::lround(cy - y) + std::lround(ey - cy);
  }
  w.endShape();
  return swf::defineShape(32, id, w);
}

swf::Matrix turned(double angle, int tx, int ty) {
  swf::Matrix m;
  m.scale = {fixed16(std::cos(angle)), fixed16(std::cos(angle))};
  m.rotate = {fixed16(std::sin(angle)), fixed16(-std::sin(angle))};
  m.tx = tx;
  m.ty = ty;
  return m;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: demomovie OUT.swf\n");
    return 2;
  }
  // The star and the ball are sprites, so that a click can find them by name.
  const swf::Bytes oneShape2 = swf::concat({swf::placeNew(1, 2), swf::showFrame(), swf::end()});
  const swf::Bytes oneShape3 = swf::concat({swf::placeNew(1, 3), swf::showFrame(), swf::end()});
  std::vector<swf::Bytes> body = {
      swf::setBackground(0, 0, 0),
      sky(1),
      star(2, 80 * kTwips, 32 * kTwips),
      ball(3, 22 * kTwips),
      swf::defineSprite(12, 1, oneShape2),
      swf::defineSprite(13, 1, oneShape3),
      swf::placeNew(1, 1),
      demo::morph(4, 60 * kTwips),
      demo::font(5),
      demo::text(6, 5, "VOSTAN MOVIE TEXT", 12 * kTwips, {250, 240, 220}),
      swf::placeNew(5, 6, swf::Matrix{{}, {}, 8 * kTwips, 20 * kTwips})};
  for (int f = 0; f < kFrames; ++f) {
    const double t = double(f) / kFrames;
    swf::Place s;
    s.depth = 2;
    s.matrix = turned(2 * std::numbers::pi * t, kSize / 2, kSize / 2 - 10 * kTwips);
    if (f == 0) {
      s.id = 12;
      s.name = "star";
    } else {
      s.move = true;
    }
    swf::Place b;
    b.depth = 3;
    const double bounce = std::abs(std::sin(2 * std::numbers::pi * t));
    b.matrix = swf::Matrix{};
    b.matrix->tx = static_cast<int>((30 + 196 * t) * kTwips);
    b.matrix->ty = static_cast<int>((226 - 150 * bounce) * kTwips);
    // Fades in and out once a loop through its alpha multiplier.
    const int alpha =
        static_cast<int>(256 * (0.35 + 0.65 * std::abs(std::cos(std::numbers::pi * t))));
    b.cxform = swf::Cxform{std::vector<int32_t>{256, 256, 256, alpha}, std::nullopt};
    if (f == 0) {
      b.id = 13;
      b.name = "ball";
    } else {
      b.move = true;
    }
    swf::Place m;
    m.depth = 4;
    m.ratio = demo::pingPong(f, kFrames);
    if (f == 0) {
      m.id = 4;
      m.matrix = swf::Matrix{{}, {}, 214 * kTwips, 50 * kTwips};
    } else {
      m.move = true;
    }
    body.push_back(swf::placeObject2(s));
    body.push_back(swf::placeObject2(b));
    body.push_back(swf::placeObject2(m));
    body.push_back(swf::showFrame());
  }
  body.push_back(swf::end());
  swf::Bytes all;
  for (const auto& b : body) all.insert(all.end(), b.begin(), b.end());
  swf::MovieOptions options;
  options.xMax = kSize;
  options.yMax = kSize;
  options.rate = 24;
  options.frames = kFrames;
  options.compressed = true;
  const swf::Bytes file = swf::movie(all, options);
  std::ofstream out(argv[1], std::ios::binary);
  out.write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
  return out ? 0 : 1;
}
