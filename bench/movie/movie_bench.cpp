// Parse time of the largest corpus movie, as it is (compressed) and with its
// body inflated beforehand, so that the reader's own share shows. Throughput
// counts inflated bytes; time per MB is its inverse.
#include <benchmark/benchmark.h>
#include <zlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "movie/dd.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

struct Sample {
  std::string name;
  Bytes file;   // as found
  Bytes plain;  // the same movie with an uncompressed body
};

const Sample& largest() {
  static Sample sample = [] {
    Sample s;
    uintmax_t best = 0;
    fs::path root = VOSTAN_SWF_CORPUS;
    if (!fs::is_directory(root)) return s;
    for (const auto& entry : fs::directory_iterator(root)) {
      fs::path p = entry.path() / "test.swf";
      if (fs::exists(p) && fs::file_size(p) > best) {
        best = fs::file_size(p);
        s.name = entry.path().filename().string();
        std::ifstream in(p, std::ios::binary);
        s.file.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
      }
    }
    if (s.file.size() < 8) return s;
    s.plain = s.file;
    if (s.file[0] == 'C') {
      uLongf length = s.file[4] | s.file[5] << 8 | s.file[6] << 16 | uLongf(s.file[7]) << 24;
      s.plain.assign(length, 0);
      uLongf body = length - 8;
      uncompress(s.plain.data() + 8, &body, s.file.data() + 8, uLong(s.file.size() - 8));
      std::copy(s.file.begin(), s.file.begin() + 8, s.plain.begin());
      s.plain[0] = 'F';
    }
    return s;
  }();
  return sample;
}

void quiet(const char*) {}

void parse(benchmark::State& state, const Bytes& file) {
  if (file.empty()) {
    state.SkipWithError("no corpus");
    return;
  }
  ddSetWarnSink(quiet);
  for (auto _ : state) {
    ddStream* s = ddStream_create(file.data(), int32_t(file.size()));
    int r = ddMovie_parse(s);
    benchmark::DoNotOptimize(r);
    ddTimeline_destroy(s->root);
    ddStream_destroy(s);
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(largest().plain.size()));
  state.SetLabel(largest().name);
}

void BM_ParseLargestCompressed(benchmark::State& state) {
  parse(state, largest().file);
}
void BM_ParseLargestPlain(benchmark::State& state) {
  parse(state, largest().plain);
}
// zlib alone inflating the same body: the speed the parser is measured against.
void BM_InflateLargest(benchmark::State& state) {
  const Sample& s = largest();
  if (s.file.size() < 8 || s.file[0] != 'C') {
    state.SkipWithError("no compressed corpus movie");
    return;
  }
  Bytes out(s.plain.size());
  for (auto _ : state) {
    uLongf body = uLongf(out.size() - 8);
    int r = uncompress(out.data() + 8, &body, s.file.data() + 8, uLong(s.file.size() - 8));
    benchmark::DoNotOptimize(r);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(s.plain.size()));
  state.SetLabel(s.name);
}
BENCHMARK(BM_ParseLargestCompressed)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ParseLargestPlain)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InflateLargest)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
