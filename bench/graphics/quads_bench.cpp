// Textured quads per second from C++: through D3DGraphics's immediate mode
// and the OpenGL backend, and as plain GL calls. With the Java run of
// bench_quads_java this separates the layer's cost from the JNI crossings.
#include <SDL.h>
#include <benchmark/benchmark.h>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/glcorearb.h>

#include <cstdio>
#include <memory>

#include "device_window.h"
#include "graphics/d3d_graphics.h"
#include "plain_quads.h"

namespace {

// The quads draw in clip space, inside one open scene.
struct Window : vostan::bench::DeviceWindow {
  Window() : DeviceWindow("quads", 320, 240) {
    const float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    graphics->setMatrix(0, identity);
    graphics->beginScene();
  }
};

Window& window() {
  static Window w;
  return w;
}

void BM_ImmediateQuads(benchmark::State& state) {
  vostan::D3DGraphics& g = *window().graphics;
  const int count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    for (int i = 0; i < count; ++i) {
      const float x = static_cast<float>(i % 16) / 16.0f, y = static_cast<float>(i % 9) / 9.0f;
      g.begin(7);
      g.t2fV2f(0, 0, x, y);
      g.t2fV2f(1, 0, x + 0.1f, y);
      g.t2fV2f(1, 1, x + 0.1f, y + 0.1f);
      g.t2fV2f(0, 1, x, y + 0.1f);
      g.end();
    }
    glFinish();  // the GPU's work counts, as in the plain loop
  }
  state.counters["quads/s"] = benchmark::Counter(static_cast<double>(count) * state.iterations(),
                                                 benchmark::Counter::kIsRate);
}
BENCHMARK(BM_ImmediateQuads)->Arg(5000)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_PlainGLQuads(benchmark::State& state) {
  window();
  const int count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    const int64_t ns = vostan::test::plainQuads(count);
    state.SetIterationTime(static_cast<double>(ns) * 1e-9);
  }
  state.counters["quads/s"] = benchmark::Counter(static_cast<double>(count) * state.iterations(),
                                                 benchmark::Counter::kIsRate);
}
BENCHMARK(BM_PlainGLQuads)->Arg(5000)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
