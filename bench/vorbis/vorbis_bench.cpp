// Cost of VorbisSong's work: opening a file from memory, decoding it whole or
// in the ranges a streaming caller asks for, and the gain pass alone.
#include <benchmark/benchmark.h>

#include <vector>

#include "audio/vorbis/memory_source.h"
#include "ogg_maker.h"

using vostan::audio::MemorySource;

namespace {

constexpr int kFrames = 10 * 44100;

const std::vector<unsigned char>& song() {
  static const auto bytes = [] {
    vostan::test::ToneOgg tone;
    tone.frames = kFrames;
    tone.quality = 0.5f;
    return vostan::test::makeToneOgg(tone);
  }();
  return bytes;
}

void BM_Open(benchmark::State& state) {
  const auto& bytes = song();
  for (auto _ : state) {
    MemorySource src(bytes.data(), static_cast<uint32_t>(bytes.size()));
    benchmark::DoNotOptimize(src.open());
  }
  state.counters["bytes"] = static_cast<double>(bytes.size());
}
BENCHMARK(BM_Open);

void BM_DecodeWhole(benchmark::State& state) {
  const auto& bytes = song();
  MemorySource src(bytes.data(), static_cast<uint32_t>(bytes.size()));
  src.open();
  const float gain = static_cast<float>(state.range(0)) / 100.0f;
  std::vector<int16_t> pcm(static_cast<size_t>(kFrames) * 2);
  for (auto _ : state) {
    src.decode(0, kFrames, gain, pcm.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kFrames);
}
BENCHMARK(BM_DecodeWhole)->Arg(100)->Arg(80)->Unit(benchmark::kMillisecond);

// 4096 frames a call, each call seeking to where the last one ended.
void BM_DecodeRanges(benchmark::State& state) {
  const auto& bytes = song();
  MemorySource src(bytes.data(), static_cast<uint32_t>(bytes.size()));
  src.open();
  constexpr int kRange = 4096;
  std::vector<int16_t> pcm(kRange * 2);
  for (auto _ : state) {
    for (int first = 0; first + kRange <= kFrames; first += kRange)
      src.decode(first, first + kRange, 0.8f, pcm.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * (kFrames / kRange) * kRange);
}
BENCHMARK(BM_DecodeRanges)->Unit(benchmark::kMillisecond);

void BM_ApplyGain(benchmark::State& state) {
  std::vector<int16_t> pcm(1 << 20);
  for (size_t i = 0; i < pcm.size(); ++i) pcm[i] = static_cast<int16_t>(i * 7919);
  for (auto _ : state) {
    vostan::audio::applyGain(reinterpret_cast<unsigned char*>(pcm.data()),
                             static_cast<int64_t>(pcm.size()), 0.999f);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(pcm.size()));
}
BENCHMARK(BM_ApplyGain);

}  // namespace

BENCHMARK_MAIN();
