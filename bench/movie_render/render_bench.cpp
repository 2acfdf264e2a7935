// Fill speed of the rasteriser against cairo's image surface drawing the same
// random 20-vertex polygons, anti-aliased, non-zero winding, at several sizes;
// and one complex corpus frame drawn whole through the movie object. Prints
// the ratio of best times per size at the end.
#include <benchmark/benchmark.h>
#include <cairo.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "corpus_render.h"
#include "movie/dd_movie.h"
#include "movie/render/dd_render.h"

namespace {

constexpr int kPolygons = 16;

struct Pt {
  double x, y;
};

// Random polygons whose vertices lie anywhere in a size by size square.
std::vector<std::vector<Pt>> polygons(int size) {
  std::mt19937 rng{uint32_t(size)};
  std::uniform_real_distribution<double> d(0, size);
  std::vector<std::vector<Pt>> out(kPolygons);
  for (auto& p : out)
    for (int i = 0; i < 20; i++) p.push_back({d(rng), d(rng)});
  return out;
}

ddShape* shapeOf(const std::vector<Pt>& poly) {
  ddShape* s = ddShape_create();
  ddFill f{};
  f.kind = ddFillSolid;
  f.data.color = 0xFF2080C0u;
  f.matrix = ddMatrixIdentity;
  ddShape_addFill(s, f);
  ddShapeRecord* r = ddShape_addRecord(s);
  *r = ddShapeRecord{ddRecordFill1, {0, 0, 0, 0}};
  ddShape_moveTo(s, ddFixed_fromDouble(poly[0].x), ddFixed_fromDouble(poly[0].y));
  for (size_t i = 1; i <= poly.size(); i++) {
    const Pt& p = poly[i % poly.size()];
    ddShape_lineTo(s, ddFixed_fromDouble(p.x), ddFixed_fromDouble(p.y));
  }
  ddShape_finish(s);
  return s;
}

void BM_Vostan(benchmark::State& state) {
  const int size = int(state.range(0));
  auto polys = polygons(size);
  std::vector<ddShape*> shapes;
  std::vector<ddRender*> renders;
  for (auto& p : polys) {
    shapes.push_back(shapeOf(p));
    renders.push_back(ddRender_create(shapes.back()));
    ddRender_update(renders.back(), nullptr, &ddMatrixIdentity);
  }
  ddSurface* surface = ddSurface_create(size, size);
  const ddRect all = {0, size << 10, 0, size << 10};
  size_t i = 0;
  for (auto _ : state) {
    std::memset(surface->pixels, 0, size_t(size) * size * 4);
    ddRender_draw(renders[i++ % kPolygons], surface, &ddMatrixIdentity, &ddCxformIdentity, &all);
    benchmark::DoNotOptimize(surface->pixels[0]);
  }
  for (size_t k = 0; k < shapes.size(); k++) {
    ddRender_destroy(renders[k]);
    ddShape_destroy(shapes[k]);
  }
  ddSurface_destroy(surface);
}

void BM_Cairo(benchmark::State& state) {
  const int size = int(state.range(0));
  auto polys = polygons(size);
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size, size);
  cairo_t* cr = cairo_create(surface);
  cairo_set_antialias(cr, CAIRO_ANTIALIAS_DEFAULT);
  cairo_set_fill_rule(cr, CAIRO_FILL_RULE_WINDING);
  cairo_set_source_rgba(cr, 0.75, 0.5, 0.125, 1);
  unsigned char* data = cairo_image_surface_get_data(surface);
  const int stride = cairo_image_surface_get_stride(surface);
  size_t i = 0;
  for (auto _ : state) {
    cairo_surface_flush(surface);
    std::memset(data, 0, size_t(stride) * size);
    cairo_surface_mark_dirty(surface);
    const auto& p = polys[i++ % kPolygons];
    cairo_move_to(cr, p[0].x, p[0].y);
    for (size_t k = 1; k < p.size(); k++) cairo_line_to(cr, p[k].x, p[k].y);
    cairo_close_path(cr);
    cairo_fill(cr);
    cairo_surface_flush(surface);
    benchmark::DoNotOptimize(data[0]);
  }
  cairo_destroy(cr);
  cairo_surface_destroy(surface);
}

// The whole frame of a movie of many small shapes, redrawn each iteration.
void BM_CorpusFrame(benchmark::State& state) {
  std::string path =
      std::string(VOSTAN_SWF_CORPUS) + "/visual__simple_shapes__heavy_tesselation/test.swf";
  std::ifstream in(path, std::ios::binary);
  std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                             std::istreambuf_iterator<char>());
  if (bytes.empty()) {
    state.SkipWithError("no corpus movie");
    return;
  }
  ddRender_install();
  ddMovie* movie = ddMovie_create(ddSurface_create(871, 528), bytes.data(), int32_t(bytes.size()));
  if (ddMovie_open(movie) < 0) {
    state.SkipWithError("movie does not open");
    return;
  }
  ddMovie_start(movie);
  ddMovie_draw(movie, nullptr, nullptr);
  for (auto _ : state) {
    ddRectList_add(movie->dirty, movie->viewport);
    ddMovie_draw(movie, nullptr, nullptr);
    benchmark::DoNotOptimize(movie->surface->pixels[0]);
  }
  ddMovie_dispose(movie);
}

BENCHMARK(BM_Vostan)->Arg(16)->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK(BM_Cairo)->Arg(16)->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK(BM_CorpusFrame)->Unit(benchmark::kMillisecond);

// Keeps the time per iteration of every run, to print the ratios.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  std::map<std::string, double> perIteration;
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& r : runs)
      if (r.iterations > 0 && r.run_type == Run::RT_Iteration)
        perIteration[r.benchmark_name()] = r.GetAdjustedRealTime();
    ConsoleReporter::ReportRuns(runs);
  }
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  std::printf("\nsize   vostan/cairo time (below 1: vostan faster)\n");
  for (int size : {16, 64, 256, 1024}) {
    auto v = reporter.perIteration.find("BM_Vostan/" + std::to_string(size));
    auto c = reporter.perIteration.find("BM_Cairo/" + std::to_string(size));
    if (v != reporter.perIteration.end() && c != reporter.perIteration.end())
      std::printf("%5d  %.2f\n", size, v->second / c->second);
  }
  return 0;
}
