// The Java benchmark's loop without the JVM and without a device: frame moves
// and draws at 640 by 480 with the upload reduced to a copy of the surface,
// so that the JNI and texture costs of bench_movie_java can be told apart.
#include <benchmark/benchmark.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

#include "movie/natives/movie_host.h"

namespace {

std::vector<uint8_t> corpusMovie(const char* name) {
  std::ifstream in(std::string(VOSTAN_SWF_CORPUS) + "/" + name + "/test.swf", std::ios::binary);
  return std::vector<uint8_t>((std::istreambuf_iterator<char>(in)),
                              std::istreambuf_iterator<char>());
}

void copyUpload(void* context, int32_t, int32_t, int32_t w, int32_t h, const void* rgba) {
  std::memcpy(context, rgba, size_t(w) * h * 4);
}

void drawFrames(benchmark::State& state, const char* name, bool cycle) {
  ddSetWarnSink([](const char*) {});
  std::vector<uint8_t> bytes = corpusMovie(name);
  ddMovie* movie = ddMovie_openBytes(bytes.data(), int32_t(bytes.size()), 640, 480);
  if (!movie) {
    state.SkipWithError("movie not found or unreadable");
    return;
  }
  std::vector<uint8_t> texture(640 * 480 * 4);
  const ddTextureTarget target{true, 640, 480, copyUpload, texture.data()};
  const int frames = movie->rootTimeline->framesRead > 0 ? movie->rootTimeline->framesRead : 1;
  int i = 0;
  for (auto _ : state) {
    ddClip_moveFrame(movie, movie->rootClip, cycle ? i++ % frames : 0);
    ddMovie_drawToTexture(movie, 0, 0, target);
    benchmark::DoNotOptimize(texture.data());
  }
  state.counters["frames/s"] =
      benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
  ddMovie_dispose(movie);
}

const char* kLoop = "from_gnash__misc-ming.all__loop__simple_loop_test";

void BM_FramesCycling(benchmark::State& state) {
  drawFrames(state, kLoop, true);
}
void BM_NothingChanged(benchmark::State& state) {
  drawFrames(state, kLoop, false);
}
BENCHMARK(BM_FramesCycling);
BENCHMARK(BM_NothingChanged);

}  // namespace

BENCHMARK_MAIN();
