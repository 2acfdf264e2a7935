// The pump's per-frame cost: an empty poll, and one mouse event's way from the
// window system's queue to the (recorded) Java object.
#include <benchmark/benchmark.h>

#include "console/java_events.h"
#include "console/win_console.h"
#include "malloc_count.h"
#include "platform/fake/fake_window_system.h"
#include "platform/sdl/sdl_window_system.h"
#include "platform/win32_defs.h"

namespace {

using namespace vostan;

// Java objects stand in as numbers: the benchmark measures the library's side.
class NullEvents : public JavaEvents {
 public:
  jobject keyEvent(int, int, int, uint16_t) override { return token(); }
  jobject mouseEvent(int, int, int, int, int, bool, int) override { return token(); }
  jobject applicationEvent(int) override { return token(); }
  jobject dropTargetEvent(int, int, int, int, jobject) override { return token(); }
  jobject inputMethodEvent(int, const char16_t*, int, const int32_t*, int, int) override {
    return token();
  }
  void throwOutOfMemory() override {}
  void throwInternal() override {}
  jobject newFileArray(const std::vector<std::string>&) override { return token(); }
  jobject newGlobalRef(jobject o) override { return o; }
  void deleteGlobalRef(jobject) override {}

 private:
  jobject token() { return reinterpret_cast<jobject>(uintptr_t(0x1000)); }
};

void reportAllocations(benchmark::State& state, uint64_t before) {
  state.counters["allocs/call"] = benchmark::Counter(
      static_cast<double>(vostan_thread_mallocs() - before), benchmark::Counter::kAvgIterations);
}

WinConsole* openConsole(platform::WindowSystem& ws) {
  platform::setWindowSystem(&ws);
  WinConsole* c = initConsole();
  c->createWindow("bench", 320, 240, 1);
  NullEvents events;
  while (c->peekEvent(events)) {
  }
  return c;
}

void BM_PeekEmptyQueue_Sdl(benchmark::State& state) {
  static platform::SdlWindowSystem sdl;
  WinConsole* c = openConsole(sdl);
  NullEvents events;
  const uint64_t before = vostan_thread_mallocs();
  for (auto _ : state) benchmark::DoNotOptimize(c->peekEvent(events));
  reportAllocations(state, before);
}
BENCHMARK(BM_PeekEmptyQueue_Sdl);

void BM_MouseMoveRoundTrip_Sdl(benchmark::State& state) {
  static platform::SdlWindowSystem sdl;
  WinConsole* c = openConsole(sdl);
  NullEvents events;
  SDL_Event e{};
  e.type = SDL_MOUSEMOTION;
  e.motion.windowID = c->window;
  int x = 0;
  const uint64_t before = vostan_thread_mallocs();
  for (auto _ : state) {
    e.motion.x = (x++ & 255) + 1;
    SDL_PushEvent(&e);
    benchmark::DoNotOptimize(c->peekEvent(events));
  }
  reportAllocations(state, before);
}
BENCHMARK(BM_MouseMoveRoundTrip_Sdl);

void BM_ClickThroughPendingSlot_Fake(benchmark::State& state) {
  static platform::FakeWindowSystem fake;
  WinConsole* c = openConsole(fake);
  NullEvents events;
  const uint64_t before = vostan_thread_mallocs();
  for (auto _ : state) {
    // The fake's queue is a deque: its own allocations are part of the count here.
    fake.push(c->window, win::WM_LBUTTONDOWN, win::MK_LBUTTON, 0);
    fake.push(c->window, win::WM_LBUTTONUP, 0, 0);
    while (c->peekEvent(events)) {
    }
  }
  reportAllocations(state, before);
}
BENCHMARK(BM_ClickThroughPendingSlot_Fake);

}  // namespace

BENCHMARK_MAIN();
