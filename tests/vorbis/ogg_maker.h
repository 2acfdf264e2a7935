#pragma once
// Ogg Vorbis files made at test time from a known signal.
#include <cstdint>
#include <vector>

namespace vostan::test {

// Channel c is a sine of 440 * (c + 2) / 2 Hz (440, 660, 880 ...) at the given
// amplitude, starting at phase 0 on frame 0.
float toneSample(int channel, int64_t frame, long rate, float amplitude);

struct ToneOgg {
  int channels = 2;
  long rate = 44100;
  int64_t frames = 44100;
  float amplitude = 0.5f;
  float quality = 0.4f;  // vorbisenc VBR quality, -0.1 to 1
};

// The whole file, as a muxer would write it.
std::vector<unsigned char> makeToneOgg(const ToneOgg& tone);

}  // namespace vostan::test
