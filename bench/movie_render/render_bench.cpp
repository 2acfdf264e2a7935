// Fill speed of the rasteriser against cairo's image surface drawing the same
// random 20-vertex polygons, anti-aliased, non-zero winding, at several sizes;
// and one complex corpus frame drawn whole through the movie object and its
// shapes' edges filled by cairo. Prints the time ratios at the end.
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
#include "ratio_reporter.h"

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

// The corpus movie of many small shapes, opened at full size with a draw that
// notes every shape it draws.
struct CorpusFrame {
  struct Drawn {
    ddRender* render;
    ddCxform cxform;
  };
  static std::vector<Drawn>* recording;
  static void recordDraw(ddInstance* self, ddSurface* surface, ddRectList* dirty,
                         const ddMatrix* parent, const ddCxform* parentCxform, const ddRect* clip) {
    ddRenderShapeOps.draw(self, surface, dirty, parent, parentCxform, clip);
    if (recording)
      recording->push_back({reinterpret_cast<ddShapeInstance*>(self)->render,
                            ddCxform_concat(*parentCxform, self->cxform)});
  }
  static const ddShapeInstanceOps ops;

  std::vector<uint8_t> bytes;
  ddMovie* movie = nullptr;
  std::vector<Drawn> drawn;  // front to back, as drawn

  bool open() {
    std::string path =
        std::string(VOSTAN_SWF_CORPUS) + "/visual__simple_shapes__heavy_tesselation/test.swf";
    std::ifstream in(path, std::ios::binary);
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (bytes.empty()) return false;
    ddShapeInstance_setOps(&ops);
    movie = ddMovie_create(ddSurface_create(871, 528), bytes.data(), int32_t(bytes.size()));
    if (ddMovie_open(movie) < 0) return false;
    ddMovie_start(movie);
    ddMovie_draw(movie, nullptr, nullptr);
    recording = &drawn;
    redraw();
    recording = nullptr;
    return true;
  }
  void redraw() {
    ddRectList_add(movie->dirty, movie->viewport);
    ddMovie_draw(movie, nullptr, nullptr);
  }
  ~CorpusFrame() {
    ddMovie_dispose(movie);
    ddRender_install();
  }
};
std::vector<CorpusFrame::Drawn>* CorpusFrame::recording = nullptr;
const ddShapeInstanceOps CorpusFrame::ops = [] {
  ddShapeInstanceOps ops = ddRenderShapeOps;
  ops.draw = CorpusFrame::recordDraw;
  return ops;
}();

// The whole frame, redrawn each iteration.
void BM_CorpusFrame(benchmark::State& state) {
  CorpusFrame frame;
  if (!frame.open()) {
    state.SkipWithError("corpus movie missing or not opened");
    return;
  }
  for (auto _ : state) {
    frame.redraw();
    benchmark::DoNotOptimize(frame.movie->surface->pixels[0]);
  }
}

// The same frame through cairo: each fill of each edge group becomes closed
// paths of the edges that bound it, turned so that the fill lies on one side,
// and the fills go over one another back to front. The paths are made once,
// as the rasteriser keeps its edges.
void BM_CorpusFrameCairo(benchmark::State& state) {
  CorpusFrame frame;
  if (!frame.open()) {
    state.SkipWithError("corpus movie missing or not opened");
    return;
  }
  const int width = frame.movie->surface->width, height = frame.movie->surface->height;
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
  cairo_t* cr = cairo_create(surface);
  cairo_set_fill_rule(cr, CAIRO_FILL_RULE_WINDING);
  struct Fill {
    cairo_path_t* path;
    double r, g, b, a;
  };
  std::vector<Fill> fills;
  size_t segments = 0;
  for (auto d = frame.drawn.rbegin(); d != frame.drawn.rend(); ++d) {
    for (ddEdgeGroup* g = d->render->groups; g; g = g->next) {
      struct Seg {
        int64_t x0, y0, x1, y1;
      };
      std::map<ddPaint*, std::vector<Seg>> byPaint;
      for (int32_t i = 0; i < g->count; i++) {
        const ddEdge& e = g->edges[i];
        ddPaint* right = g->flip ? e.left : e.right;
        ddPaint* left = g->flip ? e.right : e.left;
        if (right == left) continue;
        if (right) byPaint[right].push_back({e.x0, e.y0, e.x1, e.y1});
        if (left) byPaint[left].push_back({e.x1, e.y1, e.x0, e.y0});
      }
      for (auto& [paint, segs] : byPaint) {
        // Chain segments end to start into closed sub-paths.
        std::multimap<std::pair<int64_t, int64_t>, size_t> starts;
        for (size_t k = 0; k < segs.size(); k++) starts.insert({{segs[k].x0, segs[k].y0}, k});
        std::vector<bool> used(segs.size());
        cairo_new_path(cr);
        for (size_t k = 0; k < segs.size(); k++) {
          if (used[k]) continue;
          size_t at = k;
          cairo_move_to(cr, segs[at].x0 / 1024.0, segs[at].y0 / 1024.0);
          while (true) {
            used[at] = true;
            cairo_line_to(cr, segs[at].x1 / 1024.0, segs[at].y1 / 1024.0);
            segments++;
            // A flat edge was stored 1/1024 pixel high: its end may lie one
            // unit off the start of the next.
            size_t found = segs.size();
            for (int64_t dy : {0, -1, 1}) {
              auto range = starts.equal_range({segs[at].x1, segs[at].y1 + dy});
              for (auto n = range.first; n != range.second && found == segs.size(); ++n)
                if (!used[n->second]) found = n->second;
            }
            if (found == segs.size()) break;
            at = found;
          }
          cairo_close_path(cr);
        }
        ddColor c = paint->kind == ddFillSolid ? paint->data.color : 0xFF808080u;
        c = ddCxform_apply(d->cxform, c);
        fills.push_back({cairo_copy_path(cr), (c & 255) / 255.0, ((c >> 8) & 255) / 255.0,
                         ((c >> 16) & 255) / 255.0, (c >> 24) / 255.0});
      }
    }
  }
  cairo_new_path(cr);
  unsigned char* data = cairo_image_surface_get_data(surface);
  const int stride = cairo_image_surface_get_stride(surface);
  for (auto _ : state) {
    cairo_surface_flush(surface);
    std::memset(data, 0, size_t(stride) * height);
    cairo_surface_mark_dirty(surface);
    for (const Fill& f : fills) {
      cairo_append_path(cr, f.path);
      cairo_set_source_rgba(cr, f.r, f.g, f.b, f.a);
      cairo_fill(cr);
    }
    cairo_surface_flush(surface);
    benchmark::DoNotOptimize(data[0]);
  }
  state.counters["fills"] = double(fills.size());
  state.counters["segments"] = double(segments);
  for (Fill& f : fills) cairo_path_destroy(f.path);
  cairo_destroy(cr);
  cairo_surface_destroy(surface);
}

BENCHMARK(BM_Vostan)->Arg(16)->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK(BM_Cairo)->Arg(16)->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK(BM_CorpusFrame)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CorpusFrameCairo)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  vostan::bench::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  std::printf("\nsize   vostan/cairo time (below 1: vostan faster)\n");
  for (int size : {16, 64, 256, 1024}) {
    auto v = reporter.perIteration.find("BM_Vostan/" + std::to_string(size));
    auto c = reporter.perIteration.find("BM_Cairo/" + std::to_string(size));
    if (v != reporter.perIteration.end() && c != reporter.perIteration.end())
      std::printf("%5d  %.2f\n", size, v->second / c->second);
  }
  auto v = reporter.perIteration.find("BM_CorpusFrame");
  auto c = reporter.perIteration.find("BM_CorpusFrameCairo");
  if (v != reporter.perIteration.end() && c != reporter.perIteration.end())
    std::printf("frame  %.2f\n", v->second / c->second);
  return 0;
}
