// Decoding throughput of a looping song, as a multiple of real time.
#include <benchmark/benchmark.h>

#include <vector>

#include "audio/mdj/mdj_song.h"

namespace {

void BM_ReadFramesLooping(benchmark::State& state) {
  auto* song = new vostan::MDJSong;
  if (!song->openFile(MDJ_BENCH_SONG)) {
    state.SkipWithError("song can't be opened");
    song->release();
    return;
  }
  const auto chunk = static_cast<int32_t>(state.range(0));
  std::vector<float> left(chunk), right(chunk);
  float* out[2] = {left.data(), right.data()};
  int64_t frames = 0;
  for (auto _ : state) {
    frames += song->readFrames(out, chunk);
    benchmark::DoNotOptimize(left.data());
  }
  state.SetItemsProcessed(frames);
  state.counters["realtime_multiple"] =
      benchmark::Counter(static_cast<double>(frames) / 44100.0, benchmark::Counter::kIsRate);
  state.counters["loops"] = song->getLoopCount();
  song->release();
}
// The mixer refills a window half, 16384 frames, at a time; 512 is its
// control step.
BENCHMARK(BM_ReadFramesLooping)->Arg(16384)->Arg(512)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
