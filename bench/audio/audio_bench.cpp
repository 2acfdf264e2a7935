// Cost of mixing clip voices on the OpenAL device, and of finding a voice in
// a full pool.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "audio/clip_sound.h"
#include "platform/sound/loopback_device.h"

namespace {

namespace snd = vostan::platform::sound;

std::unique_ptr<snd::LoopbackDevice> handed;
snd::Result openHanded(std::unique_ptr<snd::Device>* out) {
  *out = std::move(handed);
  return snd::err::kOk;
}

struct Rig {
  snd::LoopbackDevice* device;
  std::unique_ptr<vostan::AudioManager> audio;
  std::vector<uint8_t> data;
  std::unique_ptr<vostan::ClipSoundContext> context;
  std::vector<std::unique_ptr<vostan::ClipSound>> sounds;

  Rig(int mode, int voices) : data(2 * 44100) {
    handed = snd::openLoopbackDevice();
    device = handed.get();
    audio = vostan::AudioManager::create(openHanded);
    audio->setWindow(1);
    for (size_t i = 0; i < data.size() / 2; ++i) {
      const auto s = int16_t(std::sin(i * 0.0628) * 8000);
      data[2 * i] = uint8_t(s & 0xFF);
      data[2 * i + 1] = uint8_t((s >> 8) & 0xFF);
    }
    context = std::make_unique<vostan::ClipSoundContext>(*audio);
    context->createBuffers(44100, 16, 1, data.data(), int(data.size()), mode, voices);
    for (int i = 0; i < voices; ++i) {
      sounds.push_back(std::make_unique<vostan::ClipSound>(*context, 0.5f, 0.3f + 0.01f * i,
                                                           1.0f + 0.02f * i, 1, 100));
      sounds.back()->setPosition(float(i % 5) - 2, 0, 1);
      sounds.back()->play(i, true, true);
    }
  }
  ~Rig() {
    sounds.clear();
    context.reset();
  }
};

// Frames of output mixed per second with the given number of voices playing.
void BM_MixVoices(benchmark::State& state) {
  Rig rig(int(state.range(1)), int(state.range(0)));
  std::vector<float> out(2 * 4096);
  for (auto _ : state) rig.device->render(out.data(), 4096);
  state.SetItemsProcessed(state.iterations() * 4096);
}
BENCHMARK(BM_MixVoices)->Args({1, 0})->Args({16, 0})->Args({16, 1})->Args({64, 1});

// getFreeBufferIndex when every voice plays and the oldest must be found.
void BM_StealOldest(benchmark::State& state) {
  Rig rig(0, int(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(rig.context->getFreeBufferIndex(1));
}
BENCHMARK(BM_StealOldest)->Arg(8)->Arg(32);

}  // namespace
