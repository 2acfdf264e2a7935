// movie_sample_swf OUT.swf [--compressed]: writes the sample movie.
#include <cstdio>
#include <cstring>

#include "sample_movie.h"

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: movie_sample_swf OUT.swf [--compressed]\n");
    return 2;
  }
  bool compressed = argc > 2 && std::strcmp(argv[2], "--compressed") == 0;
  swf::Bytes bytes = sample::movie(compressed);
  FILE* f = std::fopen(argv[1], "wb");
  if (!f || std::fwrite(bytes.data(), 1, bytes.size(), f) != bytes.size()) {
    std::fprintf(stderr, "movie_sample_swf: cannot write %s\n", argv[1]);
    if (f) std::fclose(f);
    return 1;
  }
  return std::fclose(f) == 0 ? 0 : 1;
}
