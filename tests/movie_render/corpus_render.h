// Renders movies of the shared corpus to straight RGBA pictures and compares
// them with the pictures other players drew. Shared by the corpus test, the
// rasteriser benchmark and the command-line exporter.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace corpus {

// Straight (not premultiplied) RGBA bytes, row 0 on top.
struct Picture {
  int width = 0, height = 0;
  std::vector<uint8_t> rgba;
};

bool readPng(const std::string& path, Picture& out);
bool writePng(const std::string& path, const Picture& picture);

// One expected picture of a corpus movie.
struct Case {
  std::string movie;    // folder name
  std::string name;     // picture name, "output" or "frame5"
  std::string swfPath;  // test.swf
  std::string pngPath;  // <name>.expected.png
  int framesAdvanced;   // frames the reference player advanced: its trigger or num_frames
  bool antialiased;     // quality "high"
};

// Every case of the movie folders under `root`, sorted by movie and name.
std::vector<Case> listCases(const std::string& root);

struct Rendered {
  bool opened = false;
  bool allBlocksRead = true;  // no block of the file was skipped or unknown
  std::string skippedBlocks;  // "type:count ..." of blocks passed over
  int rootFrames = 0;         // frames of the root timeline
  int shownFrame = 0;         // root frame drawn
  std::string fatal;          // the reader's message when it gave the movie up
  Picture picture;
};

// Opens the movie at width by height, moves the root clip to the frame that
// `framesAdvanced` steps of a looping player show, draws it and lays it over
// the movie's background colour.
Rendered renderMovie(const std::vector<uint8_t>& swf, int framesAdvanced, int width, int height);
Rendered renderMovieFile(const std::string& swfPath, int framesAdvanced, int width, int height);

struct Comparison {
  double withinShare = 0;   // pixels whose every channel is within the tolerance
  double meanAbsError = 0;  // over all channels of all pixels, 0 to 255
};

// Compares two pictures of equal size. `difference`, when given, gets a
// picture of the largest channel difference per pixel, red where it exceeds
// the tolerance.
Comparison compare(const Picture& got, const Picture& expected, int tolerance,
                   Picture* difference = nullptr);

// The kept baseline: "movie/picture" to (share within the tolerance, mean
// absolute error); lines starting with '#' are comments. Empty when absent.
std::map<std::string, std::pair<double, double>> readBaseline(const std::string& path);

}  // namespace corpus
