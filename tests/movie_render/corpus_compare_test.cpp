// Corpus movies drawn through the movie object and compared with the pictures
// other players drew of them. The numbers of each picture are kept in
// corpus_baseline.txt; a movie whose blocks are all read must not get worse.
// VOSTAN_CORPUS_OUT names a folder for the rendered and difference pictures;
// VOSTAN_CORPUS_REBASE=1 rewrites the baseline with the numbers of this run.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <map>
#include <sstream>

#include "corpus_render.h"

namespace {

constexpr int kTolerance = 8;
// Slack for a supported movie before it counts as worse.
constexpr double kShareSlack = 0.002, kMeanSlack = 0.1;

TEST(CorpusCompare, PicturesStayAsCloseAsTheBaselineRecords) {
  const std::vector<corpus::Case> cases = corpus::listCases(VOSTAN_SWF_CORPUS);
  if (cases.empty()) GTEST_SKIP() << "no corpus at " << VOSTAN_SWF_CORPUS;
  const auto baseline = corpus::readBaseline(VOSTAN_CORPUS_BASELINE);
  const char* out = std::getenv("VOSTAN_CORPUS_OUT");
  const bool rebase = std::getenv("VOSTAN_CORPUS_REBASE") &&
                      std::string(std::getenv("VOSTAN_CORPUS_REBASE")) == "1";
  if (out) std::filesystem::create_directories(out);
  std::ostringstream rebased;
  rebased << "# picture  share-within-" << kTolerance << "  mean-abs-error  (all blocks read)\n";
  for (const corpus::Case& c : cases) {
    const std::string key = c.movie + "/" + c.name;
    SCOPED_TRACE(key);
    corpus::Picture expected, diff;
    ASSERT_TRUE(corpus::readPng(c.pngPath, expected));
    corpus::Rendered r =
        corpus::renderMovieFile(c.swfPath, c.framesAdvanced, expected.width, expected.height);
    if (!r.fatal.empty()) {
      std::printf("%-62s fatal: %s\n", key.c_str(), r.fatal.c_str());
      rebased << key << " 0.0000 255.000 0\n";
      continue;
    }
    ASSERT_TRUE(r.opened);
    const corpus::Comparison cmp = corpus::compare(r.picture, expected, kTolerance, &diff);
    if (out) {
      corpus::writePng(std::string(out) + "/" + c.movie + "." + c.name + ".png", r.picture);
      corpus::writePng(std::string(out) + "/" + c.movie + "." + c.name + ".diff.png", diff);
    }
    std::printf("%-62s %2d/%-2d %6.3f %7.2f %s%s\n", key.c_str(), r.shownFrame + 1, r.rootFrames,
                cmp.withinShare, cmp.meanAbsError, c.antialiased ? "aa " : "aliased ",
                r.skippedBlocks.c_str());
    rebased << key << ' ' << std::fixed << std::setprecision(4) << cmp.withinShare << ' '
            << std::setprecision(3) << cmp.meanAbsError << ' ' << (r.allBlocksRead ? 1 : 0) << '\n';
    if (!r.allBlocksRead || rebase) continue;
    auto it = baseline.find(key);
    ASSERT_NE(it, baseline.end()) << "no baseline";
    EXPECT_GE(cmp.withinShare, it->second.first - kShareSlack) << "fewer pixels within tolerance";
    EXPECT_LE(cmp.meanAbsError, it->second.second + kMeanSlack) << "larger mean error";
  }
  if (rebase) std::ofstream(VOSTAN_CORPUS_BASELINE) << rebased.str();
}

}  // namespace
