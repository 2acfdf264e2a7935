// The whole reader on arbitrary bytes: open, then show every frame of every
// clip. A fatal report is an allowed outcome for a damaged file; it is thrown
// out of the parse here and the movie's memory is released in one sweep.
#include <cstddef>
#include <cstdint>

#include "movie/dd.h"
#include "movie/render/dd_render.h"
#include "movie_walk.h"

namespace {

struct Fatal {};

void quiet(const char*) {}

[[noreturn]] void throwFatal(const char*) {
  throw Fatal{};
}

bool setUp() {
  ddSetWarnSink(quiet);
  ddSetFatalSink(throwFatal);
  // Well above what the seeds need, well below the fuzzer's memory limit.
  ddMemory_setLimit(size_t(256) << 20);
  ddMemory_setTracking(true);
  // Shapes, morphs and glyphs are drawn, not only boxed.
  ddRender_install();
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static bool ready = setUp();
  (void)ready;
  if (size > (size_t(1) << 24)) return 0;
  MovieWalkLimits limits;
  limits.maxClips = 256;
  limits.maxMoves = 4096;
  try {
    walkMovie(data, int32_t(size), 64, 48, limits);
  } catch (const Fatal&) {
    ddMemory_releaseTracked();
  }
  return 0;
}
