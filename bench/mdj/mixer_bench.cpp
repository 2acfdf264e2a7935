// The mixer's cost: a quarter of two resampled songs cross-fading, as a
// multiple of real time on one core; and the share of a core the mixer
// thread takes while the demo's song plays on the default device.
#include <benchmark/benchmark.h>
#include <pthread.h>

#include <chrono>
#include <ctime>
#include <thread>
#include <vector>

#include "audio/mdj/mdj_context.h"
#include "platform/sound/sound_device.h"

namespace {

using vostan::MDJMixer;
using vostan::MDJSong;

MDJSong* openSong(const char* path) {
  auto* song = new MDJSong;
  if (!song->openFile(path)) {
    song->release();
    return nullptr;
  }
  return song;
}

void BM_MixerTwoResampledTracksCrossfading(benchmark::State& state) {
  MDJSong* a = openSong(MDJ_BENCH_SONG);
  MDJSong* b = openSong(MDJ_BENCH_SONG);
  if (!a || !b) {
    state.SkipWithError("song can't be opened");
    return;
  }
  MDJMixer mixer;
  mixer.getTrack(0)->setSong(a);
  mixer.getTrack(1)->setSong(b);
  a->release();
  b->release();
  mixer.getTrack(0)->prefill();
  mixer.getTrack(1)->prefill();
  mixer.getTrack(0)->setPitch(0.9f);
  mixer.getTrack(1)->setPitch(1.2f);
  mixer.setCrossfade(-0.7f);  // both tracks audible, neither at full gain
  std::vector<float> left(4096), right(4096);
  int64_t frames = 0;
  for (auto _ : state) {
    // A quarter in control steps, as while a change runs.
    for (int32_t done = 0; done < 4096; done += 512) {
      float* out[2] = {left.data() + done, right.data() + done};
      mixer.render(out, 512);
    }
    frames += 4096;
    benchmark::DoNotOptimize(left.data());
  }
  state.SetItemsProcessed(frames);
  state.counters["realtime_multiple"] =
      benchmark::Counter(static_cast<double>(frames) / 44100.0, benchmark::Counter::kIsRate);
}
BENCHMARK(BM_MixerTwoResampledTracksCrossfading)->Unit(benchmark::kMicrosecond);

double threadCpuSeconds(pthread_t thread) {
  clockid_t clock;
  timespec ts{};
  if (pthread_getcpuclockid(thread, &clock) != 0 || clock_gettime(clock, &ts) != 0) return 0;
  return static_cast<double>(ts.tv_sec) + ts.tv_nsec * 1e-9;
}

// Arg 0: the demo's song alone. Arg 1: its beat-locked change to the second
// song, which is pitched up and cross-faded for the whole measurement.
void BM_MixerThreadCpuShareWhileTheDemoSongPlays(benchmark::State& state) {
  std::unique_ptr<vostan::platform::sound::Device> device;
  if (vostan::platform::sound::failed(vostan::platform::sound::openDefaultDevice(&device))) {
    state.SkipWithError("no sound device");
    return;
  }
  std::unique_ptr<vostan::MDJSoundContext> music = vostan::MDJSoundContext::start(*device);
  if (!music) {
    state.SkipWithError("no music context");
    return;
  }
  music->postSong(MDJ_DEMO_SONG);
  music->postTrick(vostan::kTrickPlay);
  if (state.range(0) == 1) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    music->postSong(MDJ_DEMO_SONG2);
    music->postTrick(vostan::kTrickBeatSync);
    // The change waits for bar 2 of the song.
    std::this_thread::sleep_for(std::chrono::milliseconds(2200));
  }
  for (auto _ : state) {
    const double cpu0 = threadCpuSeconds(music->threadHandle());
    const auto wall0 = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(std::chrono::seconds(3));
    const double cpu = threadCpuSeconds(music->threadHandle()) - cpu0;
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - wall0;
    state.SetIterationTime(wall.count());
    state.counters["cpu_share_percent"] = 100.0 * cpu / wall.count();
  }
  music->shutdown();
}
BENCHMARK(BM_MixerThreadCpuShareWhileTheDemoSongPlays)
    ->Arg(0)
    ->Arg(1)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
