// Song files of any bytes, opened the way Java's song names are: posted to a
// music context, played by trick 0 and mixed for a few quarters on the mixer
// thread. A file must be refused or played, never read out of bounds.
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

#include "audio/mdj/mdj_context.h"
#include "platform/sound/scripted_stream.h"

namespace {

namespace snd = vostan::platform::sound;
using namespace std::chrono_literals;

struct Harness {
  snd::ScriptedStreamDevice device;
  std::unique_ptr<vostan::MDJSoundContext> context;
  snd::ScriptedStream* stream = nullptr;
  std::string path;

  Harness() {
    context = vostan::MDJSoundContext::start(device);
    if (!context) abort();
    stream = device.lastStream;
    stream->advance(vostan::MDJSoundContext::kQuarterBytes);  // swallowed
    idle();
    path = "/tmp/mdj_song_fuzz_" + std::to_string(getpid()) + ".ogg";
  }
  void idle() {
    if (!context->waitIdle(60s)) abort();  // a hang is a finding too
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Harness h;
  FILE* f = fopen(h.path.c_str(), "wb");
  if (!f) abort();
  if (size) fwrite(data, 1, size, f);
  fclose(f);
  h.context->postSong(h.path.c_str());
  h.context->postTrick(vostan::kTrickPlay);
  h.idle();
  for (int q = 0; q < 3; ++q) {
    h.stream->advance(vostan::MDJSoundContext::kQuarterBytes);
    h.idle();
  }
  h.context->postTrick(vostan::kTrickStop);
  h.idle();
  return 0;
}
