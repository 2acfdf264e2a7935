// Every movie of the shared corpus, made by tools outside this project: it
// must open and show all frames of all clips without touching memory it does
// not own, and its frame count and size must be those its header states.
#include <zlib.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "movie_test_support.h"
#include "movie_walk.h"

namespace {

namespace fs = std::filesystem;

struct Header {
  bool ok = false;
  double widthPx = 0, heightPx = 0;
  int frames = 0;
};

// Reads the header without the library: inflates a compressed body with zlib
// and takes the rectangle's fields bit by bit.
Header readHeader(const swf::Bytes& file) {
  Header h;
  if (file.size() < 8) return h;
  swf::Bytes body;
  if (file[0] == 'C') {
    uLongf length = file[4] | file[5] << 8 | file[6] << 16 | uLongf(file[7]) << 24;
    body.resize(length);
    if (uncompress(body.data(), &length, file.data() + 8, uLong(file.size() - 8)) != Z_OK) return h;
    body.resize(length);
  } else {
    body.assign(file.begin() + 8, file.end());
  }
  size_t bit = 0;
  auto take = [&](int n) {
    int64_t v = 0;
    for (int i = 0; i < n; i++, bit++) v = v << 1 | ((body[bit / 8] >> (7 - bit % 8)) & 1);
    return v;
  };
  int w = int(take(5));
  auto signedField = [&]() {
    int64_t v = take(w);
    return w && (v >> (w - 1)) ? v - (int64_t(1) << w) : v;
  };
  int64_t xMin = signedField(), xMax = signedField(), yMin = signedField(), yMax = signedField();
  size_t at = (bit + 7) / 8 + 2;
  if (at + 2 > body.size()) return h;
  h.widthPx = (xMax - xMin) / 20.0;
  h.heightPx = (yMax - yMin) / 20.0;
  h.frames = body[at] | body[at + 1] << 8;
  h.ok = true;
  return h;
}

class MovieCorpusTest : public MovieTest {};

TEST_F(MovieCorpusTest, EveryMovieOpensAndShowsAllItsFrames) {
  fs::path root = VOSTAN_SWF_CORPUS;
  if (!fs::is_directory(root)) GTEST_SKIP() << "no corpus at " << root;
  std::vector<fs::path> movies;
  for (const auto& entry : fs::directory_iterator(root))
    if (fs::exists(entry.path() / "test.swf")) movies.push_back(entry.path());
  std::sort(movies.begin(), movies.end());
  ASSERT_FALSE(movies.empty());

  for (const fs::path& dir : movies) {
    std::string name = dir.filename().string();
    SCOPED_TRACE(name);
    std::ifstream in(dir / "test.swf", std::ios::binary);
    swf::Bytes file((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    Header header = readHeader(file);
    ASSERT_TRUE(header.ok);

    ddMovie* movie = nullptr;
    MovieWalkResult walk;
    try {
      walk = walkMovie(file.data(), int32_t(file.size()), 320, 240, {}, &movie);
    } catch (const FatalError& e) {
      std::cout << name << ": fatal \"" << e.what() << "\"\n";  // reported, not a failure
      ddMemory_releaseTracked();
      continue;
    }
    ASSERT_EQ(walk.parse, 0);
    ddTimeline* t = movie->rootTimeline;
    EXPECT_EQ(t->nFrames, header.frames);
    // Frames past the stated count are closed but not stored.
    EXPECT_LE(t->frames->count, std::max(header.frames, 1));
    EXPECT_NEAR(t->frameWidth / 1024.0, header.widthPx, 1.0 / 1024);
    EXPECT_NEAR(t->frameHeight / 1024.0, header.heightPx, 1.0 / 1024);
    ddMovie_dispose(movie);
  }
}

}  // namespace
