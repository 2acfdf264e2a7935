// Ogg files of any bytes: the header check must stay inside them, and a file
// it lets through must open and decode without taking the process down.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "audio/vorbis/header_check.h"
#include "audio/vorbis/memory_source.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 20)) return 0;
  // MemorySource::open runs the check first, and refuses what it refuses.
  vostan::audio::MemorySource source(data, static_cast<uint32_t>(size));
  if (!source.open()) return 0;
  const int32_t frames = 4096;
  std::vector<unsigned char> pcm(static_cast<size_t>(frames) * source.pcmStride());
  source.decode(0, frames, 1.0f, pcm.data());
  source.decode(frames / 2, frames, 0.5f, pcm.data());
  return 0;
}
