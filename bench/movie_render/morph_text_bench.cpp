// Frames per second at 640 by 480 of a movie sweeping a morph shape through
// 100 ratios, one frame each, and of a frame full of text redrawn whole.
#include <benchmark/benchmark.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "movie/dd_movie.h"
#include "movie/render/dd_render.h"
#include "swf_writer.h"

namespace {

constexpr int kWidth = 640, kHeight = 480, kTwips = 20;
constexpr int kRatios = 100;

using Points = std::vector<std::pair<int32_t, int32_t>>;

// A 24-pointed star that becomes a wide ellipse, filling most of the frame.
swf::Bytes sweepMovie() {
  Points star, ellipse;
  const int cx = kWidth * kTwips / 2, cy = kHeight * kTwips / 2;
  for (int i = 0; i < 48; i++) {
    const double a = 2 * std::numbers::pi * i / 48;
    const double r = (i % 2 ? 80 : 220) * kTwips;
    star.push_back({cx + int32_t(r * std::cos(a)), cy + int32_t(r * std::sin(a))});
    ellipse.push_back(
        {cx + int32_t(300 * kTwips * std::cos(a)), cy + int32_t(200 * kTwips * std::sin(a))});
  }
  swf::Bytes body = swf::defineMorphShape(
      1, {{{240, 200, 40, 255}, {40, 120, 240, 160}}}, {}, swf::closedPolygon(star),
      swf::closedPolygon(ellipse, false), {0, kWidth * kTwips, 0, kHeight * kTwips});
  for (int f = 0; f < kRatios; f++) {
    swf::Place p;
    p.depth = 1;
    p.ratio = f * 65535 / (kRatios - 1);
    if (f == 0)
      p.id = 1;
    else
      p.move = true;
    body = swf::concat({body, swf::placeObject2(p), swf::showFrame()});
  }
  swf::MovieOptions o;
  o.xMax = kWidth * kTwips;
  o.yMax = kHeight * kTwips;
  o.frames = kRatios;
  return swf::movie(swf::concat({body, swf::end()}), o);
}

// Glyphs with curves and bars in the 1024 square: a ring, a bar, a bowl.
std::vector<swf::Writer> glyphs() {
  swf::Writer ring;
  ring.bits(1, 4);
  ring.bits(0, 4);
  ring.styleChange(1, 0, std::make_pair(0, -400), std::nullopt, 1u, std::nullopt);
  ring.curveEdge(0, -400, 400, 0);
  ring.curveEdge(400, 0, 0, 400);
  ring.curveEdge(0, 400, -400, 0);
  ring.curveEdge(-400, 0, 0, -400);
  ring.styleChange(1, 0, std::make_pair(200, -400), std::nullopt, std::nullopt, std::nullopt);
  ring.curveEdge(0, 200, 200, 0);
  ring.curveEdge(200, 0, 0, -200);
  ring.curveEdge(0, -200, -200, 0);
  ring.curveEdge(-200, 0, 0, 200);
  ring.endShape();
  swf::Writer bowl;
  bowl.bits(1, 4);
  bowl.bits(0, 4);
  bowl.styleChange(1, 0, std::make_pair(0, -600), std::nullopt, 1u, std::nullopt);
  bowl.lineEdge(150, 0);
  bowl.curveEdge(0, 450, 300, 0);
  bowl.curveEdge(300, 0, 0, -450);
  bowl.lineEdge(150, 0);
  bowl.curveEdge(0, 600, -450, 0);
  bowl.curveEdge(-450, 0, 0, -600);
  bowl.endShape();
  return {ring, swf::glyphRectangle(300, -800, 200, 800), bowl};
}

// 40 lines of 80 glyphs, 12 pixels high.
swf::Bytes textMovie() {
  swf::Font2 font;
  font.glyphs = glyphs();
  font.codes = {'o', 'l', 'u'};
  std::vector<swf::TextRecord> lines;
  for (int line = 0; line < 40; line++) {
    swf::TextRecord r;
    r.font = 1;
    r.height = 12 * kTwips;
    r.colour = swf::Solid{uint8_t(line * 6), 40, 90};
    r.x = 0;
    r.y = int16_t((line + 1) * 12 * kTwips);
    for (int k = 0; k < 80; k++) r.glyphs.push_back({uint32_t((k + line) % 3), 8 * kTwips});
    lines.push_back(r);
  }
  swf::MovieOptions o;
  o.xMax = kWidth * kTwips;
  o.yMax = kHeight * kTwips;
  return swf::movie(swf::concat({swf::defineFont2(1, font), swf::defineText(33, 2, lines, 2, 12),
                                 swf::placeNew(1, 2), swf::showFrame(), swf::end()}),
                    o);
}

struct Movie {
  swf::Bytes bytes;
  ddMovie* movie = nullptr;
  explicit Movie(swf::Bytes b) : bytes(std::move(b)) {
    ddRender_install();
    movie = ddMovie_create(ddSurface_create(kWidth, kHeight), bytes.data(), int32_t(bytes.size()));
    if (ddMovie_open(movie) == 0) {
      ddMovie_start(movie);
      ddMovie_draw(movie, nullptr, nullptr);
    }
  }
  ~Movie() { ddMovie_dispose(movie); }
};

// Each iteration shows the next ratio: the working copy is mixed, its edges
// rebuilt, and the old and new areas drawn.
void BM_MorphSweep(benchmark::State& state) {
  Movie m(sweepMovie());
  if (!m.movie->rootClip) {
    state.SkipWithError("movie did not open");
    return;
  }
  int frame = 0;
  for (auto _ : state) {
    frame = (frame + 1) % kRatios;
    ddClip_moveFrame(m.movie, m.movie->rootClip, frame);
    ddMovie_draw(m.movie, nullptr, nullptr);
    benchmark::DoNotOptimize(m.movie->surface->pixels[0]);
  }
  state.counters["fps"] =
      benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
}

// The whole text frame redrawn each iteration: 3200 glyph renders.
void BM_TextFrame(benchmark::State& state) {
  Movie m(textMovie());
  if (!m.movie->rootClip) {
    state.SkipWithError("movie did not open");
    return;
  }
  for (auto _ : state) {
    ddRectList_add(m.movie->dirty, m.movie->viewport);
    ddMovie_draw(m.movie, nullptr, nullptr);
    benchmark::DoNotOptimize(m.movie->surface->pixels[0]);
  }
  state.counters["fps"] =
      benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
}

BENCHMARK(BM_MorphSweep)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TextFrame)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
