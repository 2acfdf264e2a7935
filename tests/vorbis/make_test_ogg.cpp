// Writes the tone file of the JVM test: stereo, 44100 Hz, 22050 frames,
// amplitude 0.5 (see toneSample).
#include <cstdio>

#include "ogg_maker.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s OUT.ogg\n", argv[0]);
    return 2;
  }
  vostan::test::ToneOgg tone;
  tone.frames = 22050;
  const auto bytes = vostan::test::makeToneOgg(tone);
  std::FILE* f = std::fopen(argv[1], "wb");
  if (!f || std::fwrite(bytes.data(), 1, bytes.size(), f) != bytes.size() || std::fclose(f) != 0) {
    std::perror(argv[1]);
    return 1;
  }
  return 0;
}
