// Corpus movies drawn through the movie object and compared with the pictures
// other players drew of them. The numbers of each picture are kept in
// corpus_baseline.txt; a movie whose blocks are all read must not get worse.
// VOSTAN_CORPUS_OUT names a folder for the rendered and difference pictures;
// VOSTAN_CORPUS_REBASE=1 rewrites the baseline with the numbers of this run.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "corpus_render.h"
#include "swf_writer.h"

namespace {

namespace fs = std::filesystem;

constexpr int kTolerance = 8;
// Slack for a supported movie before it counts as worse.
constexpr double kShareSlack = 0.002;
constexpr double kMeanSlack = 0.1;

struct Baseline {
  double share, mean;
};

std::map<std::string, Baseline> readBaseline(const std::string& path) {
  std::map<std::string, Baseline> out;
  std::ifstream in(path);
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    std::string key;
    Baseline b{};
    if (fields >> key >> b.share >> b.mean) out[key] = b;
  }
  return out;
}

TEST(CorpusCompare, PicturesStayAsCloseAsTheBaselineRecords) {
  std::vector<corpus::Case> cases = corpus::listCases(VOSTAN_SWF_CORPUS);
  if (cases.empty()) GTEST_SKIP() << "no corpus at " << VOSTAN_SWF_CORPUS;
  const std::map<std::string, Baseline> baseline = readBaseline(VOSTAN_CORPUS_BASELINE);
  const char* outEnv = std::getenv("VOSTAN_CORPUS_OUT");
  const char* rebaseEnv = std::getenv("VOSTAN_CORPUS_REBASE");
  const bool rebase = rebaseEnv && std::string(rebaseEnv) == "1";
  if (outEnv) fs::create_directories(outEnv);

  std::ostringstream table, rebased;
  rebased << "# picture  share-within-" << kTolerance << "  mean-abs-error  (all blocks read)\n";
  char line[256];
  std::snprintf(line, sizeof line, "%-62s %5s %6s %7s %s\n", "picture", "frame", "within",
                "meanAbs", "notes");
  table << line;
  int supported = 0;
  for (const corpus::Case& c : cases) {
    const std::string key = c.movie + "/" + c.name;
    SCOPED_TRACE(key);
    corpus::Picture expected;
    ASSERT_TRUE(corpus::readPng(c.pngPath, expected));
    corpus::Rendered r =
        corpus::renderMovieFile(c.swfPath, c.framesAdvanced, expected.width, expected.height);
    ASSERT_TRUE(r.opened);
    corpus::Picture diff;
    corpus::Comparison cmp = corpus::compare(r.picture, expected, kTolerance, &diff);
    if (outEnv) {
      std::string base = std::string(outEnv) + "/" + c.movie + "." + c.name;
      corpus::writePng(base + ".png", r.picture);
      corpus::writePng(base + ".diff.png", diff);
    }
    std::string notes = c.antialiased ? "aa " : "aliased ";
    if (!r.allBlocksRead) notes += "passes over " + r.skippedBlocks;
    std::snprintf(line, sizeof line, "%-62s %2d/%-2d %6.3f %7.2f %s\n", key.c_str(),
                  r.shownFrame + 1, r.rootFrames, cmp.withinShare, cmp.meanAbsError, notes.c_str());
    table << line;
    std::snprintf(line, sizeof line, "%s %.4f %.3f %d\n", key.c_str(), cmp.withinShare,
                  cmp.meanAbsError, r.allBlocksRead ? 1 : 0);
    rebased << line;
    if (!r.allBlocksRead) continue;
    supported++;
    auto it = baseline.find(key);
    if (it == baseline.end()) {
      if (!rebase) ADD_FAILURE() << "no baseline for " << key;
      continue;
    }
    EXPECT_GE(cmp.withinShare, it->second.share - kShareSlack) << "fewer pixels within tolerance";
    EXPECT_LE(cmp.meanAbsError, it->second.mean + kMeanSlack) << "larger mean error";
  }
  std::printf("%s%d of %zu pictures from movies whose blocks are all read\n", table.str().c_str(),
              supported, cases.size());
  if (outEnv) std::printf("pictures in %s\n", outEnv);
  if (rebase) {
    std::ofstream(VOSTAN_CORPUS_BASELINE) << rebased.str();
    std::printf("baseline rewritten: %s\n", VOSTAN_CORPUS_BASELINE);
  }
}

// The comparison itself: a channel off by more than the tolerance leaves the
// share, and the mean counts every channel.
TEST(CorpusCompare, CountsPixelsOutsideTheTolerance) {
  corpus::Picture a{2, 1, {10, 20, 30, 255, 100, 100, 100, 255}};
  corpus::Picture b = a;
  b.rgba[1] += 8;  // within
  b.rgba[6] += 9;  // outside
  corpus::Picture diff;
  corpus::Comparison c = corpus::compare(a, b, 8, &diff);
  EXPECT_DOUBLE_EQ(c.withinShare, 0.5);
  EXPECT_DOUBLE_EQ(c.meanAbsError, 17.0 / 6.0);
  EXPECT_EQ(diff.rgba[4], 255);
  EXPECT_LT(diff.rgba[5], 255);
  EXPECT_EQ(corpus::compare(a, a, 0).withinShare, 1.0);
}

// A movie of a red square on a blue background, 100 by 100 pixels, drawn at
// half size: frame 1 shows the square, frame 2 only the background, and a
// looping player is back on frame 1 after three frames.
TEST(CorpusCompare, RendersTheAdvancedFrameOverTheBackground) {
  swf::MovieOptions options;
  options.xMax = options.yMax = 2000;
  options.frames = 2;
  swf::Writer body;
  body.rect(0, 400, 0, 400);
  body.raw(swf::shapeStyles(2, {{255, 0, 0}}, {}));
  body.rectangleRecords(400, 400);
  swf::Bytes file = swf::movie(
      swf::concat({swf::setBackground(0, 0, 255), swf::defineShape(2, 1, body), swf::placeNew(1, 1),
                   swf::showFrame(), swf::removeObject2(1), swf::showFrame(), swf::end()}),
      options);
  auto pixel = [](const corpus::Picture& p, int x, int y) {
    const uint8_t* q = &p.rgba[size_t(y * p.width + x) * 4];
    return std::vector<int>{q[0], q[1], q[2], q[3]};
  };
  const std::vector<int> red{255, 0, 0, 255}, blue{0, 0, 255, 255};
  for (int advanced : {1, 3}) {
    corpus::Rendered r = corpus::renderMovie(file, advanced, 50, 50);
    ASSERT_TRUE(r.opened);
    EXPECT_TRUE(r.allBlocksRead);
    EXPECT_EQ(r.shownFrame, 0);
    EXPECT_EQ(pixel(r.picture, 5, 5), red);
    EXPECT_EQ(pixel(r.picture, 9, 9), red);
    EXPECT_EQ(pixel(r.picture, 10, 10), blue);
    EXPECT_EQ(pixel(r.picture, 40, 5), blue);
  }
  corpus::Rendered second = corpus::renderMovie(file, 2, 50, 50);
  EXPECT_EQ(second.shownFrame, 1);
  EXPECT_EQ(pixel(second.picture, 5, 5), blue);
}

}  // namespace
