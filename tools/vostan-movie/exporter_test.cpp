// The exporter as a user runs it: pictures of frames equal what the movie
// object draws, the description of a movie, and clear failures.
#include <sys/wait.h>

#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "corpus_render.h"
#include "movie/natives/movie_host.h"
#include "movie_test_support.h"
#include "sample_movie.h"

namespace fs = std::filesystem;

namespace {

struct Outcome {
  int status;
  std::string out, err;
};

std::string slurp(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

class ExporterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() /
           ("vostan-movie-test-" + std::to_string(::getpid()) + "-" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }

  fs::path write(const std::string& name, const swf::Bytes& bytes) {
    fs::path p = dir_ / name;
    std::ofstream(p, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    return p;
  }

  Outcome run(const std::string& args) {
    fs::path out = dir_ / "stdout", err = dir_ / "stderr";
    std::string command =
        std::string(VOSTAN_MOVIE_EXE) + " " + args + " >" + out.string() + " 2>" + err.string();
    int raw = std::system(command.c_str());
    return Outcome{WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, slurp(out), slurp(err)};
  }

  corpus::Picture picture(const std::string& name) {
    corpus::Picture p;
    EXPECT_TRUE(corpus::readPng((dir_ / name).string(), p)) << name;
    return p;
  }

  fs::path dir_;
};

// The frame as the movie object draws it, by the natives' own path.
std::vector<uint8_t> drawnFrame(const swf::Bytes& file, int frame, int width, int height) {
  ddMovie* m = ddMovie_openBytes(file.data(), int32_t(file.size()), width, height);
  EXPECT_NE(m, nullptr);
  if (!m) return {};
  ddClip_moveFrame(m, m->rootClip, frame);
  ddMovie_draw(m, nullptr, nullptr);
  const auto* p = reinterpret_cast<const uint8_t*>(m->surface->pixels);
  std::vector<uint8_t> bytes(p, p + size_t(width) * height * 4);
  ddMovie_dispose(m);
  return bytes;
}

TEST_F(ExporterTest, PicturesHoldTheFramesTheMovieDraws) {
  const swf::Bytes file = sample::movie(true);
  fs::path swfPath = write("sample.swf", file);
  for (int frame : {0, 2}) {
    Outcome r = run("render " + swfPath.string() + " --frame " + std::to_string(frame) +
                    " --premultiplied --out " + (dir_ / "f.png").string());
    ASSERT_EQ(r.status, 0) << r.err;
    corpus::Picture p = picture("f.png");
    EXPECT_EQ(p.width * 1000 + p.height, 550400);
    EXPECT_TRUE(p.rgba == drawnFrame(file, frame, 550, 400)) << "frame " << frame;
  }

  // Straight alpha by default: the sprite's green square (alpha 200) at half size.
  // Over the background the corpus case below compares it with the movie object.
  fs::path png = dir_ / "half.png";
  ASSERT_EQ(
      run("render " + swfPath.string() + " --frame 0 --size 275x200 --out " + png.string()).status,
      0);
  corpus::Picture p = picture("half.png");
  ASSERT_EQ(p.width * p.height, 275 * 200);
  const uint8_t* green = &p.rgba[(65 * 275 + 115) * 4];
  EXPECT_EQ(green[3], 200);
  EXPECT_NEAR(green[1], 200, 2);
  EXPECT_EQ(p.rgba.back(), 0);  // nothing drawn in the corner
}

TEST_F(ExporterTest, InfoDescribesHeaderCharactersAndSkippedBlocks) {
  swf::Bytes jpeg = swf::block(21, swf::Bytes{1, 0, 0, 0, 0, 0});
  swf::Bytes unknown = swf::block(99, swf::Bytes{1, 2, 3});
  swf::Bytes file = sample::movie(false);
  // Before the End block of the root timeline.
  file.insert(file.end() - 2, jpeg.begin(), jpeg.end());
  file.insert(file.end() - 2, unknown.begin(), unknown.end());
  uint32_t size = uint32_t(file.size());
  for (int i = 0; i < 4; i++) file[4 + i] = uint8_t(size >> (8 * i));
  const fs::path path = write("info.swf", file);
  Outcome r = run("info " + path.string());
  ASSERT_EQ(r.status, 0) << r.err;
  for (const char* line : {"header: FWS version 8, plain", "frames: 3 stated, 3 read",
                           "background: #336699", "  3 bitmap 8 x 8", "  10 sprite, 2 frames",
                           "  21 DefineBitsJPEG2 x 1", "  99 unknown x 1"})
    EXPECT_NE(r.out.find(line), std::string::npos) << line << "\n" << r.out;

  // The same for programs; a movie without skipped blocks has an empty list.
  r = run("info --json " + path.string());
  ASSERT_EQ(r.status, 0) << r.err;
  for (const char* entry : {"\"framesStated\": 3", "\"background\": \"#336699\"",
                            "{\"id\": 3, \"kind\": \"bitmap\", \"width\": 8, \"height\": 8}",
                            "{\"type\": 21, \"name\": \"DefineBitsJPEG2\", \"count\": 1}",
                            "{\"type\": 99, \"name\": null, \"count\": 1}"})
    EXPECT_NE(r.out.find(entry), std::string::npos) << entry << "\n" << r.out;
  EXPECT_EQ(r.out.front(), '{');
  EXPECT_EQ(r.out.substr(r.out.size() - 4), "]\n}\n") << r.out;
  r = run("info --json " + write("plain.swf", sample::movie()).string());
  EXPECT_NE(r.out.find("\"blocksSkipped\": []"), std::string::npos) << r.out;
}

// Frames past those the movie holds show as the player shows them; a range
// of frames goes into a folder; the background is the movie's, a given
// colour, or none.
TEST_F(ExporterTest, FrameRangesBackgroundsAndFramesPastTheEnd) {
  const swf::Bytes file = sample::movie(true);
  const std::string swfPath = write("sample.swf", file).string();
  Outcome r =
      run("render " + swfPath + " --frame 5 --premultiplied --out " + (dir_ / "past.png").string());
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.err.find("frame 5 is past the 3"), std::string::npos) << r.err;
  EXPECT_TRUE(picture("past.png").rgba == drawnFrame(file, 5, 550, 400));

  r = run("render " + swfPath + " --frames 1-3 --premultiplied --out " + (dir_ / "seq").string());
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(picture("seq/frame_0001.png").rgba == drawnFrame(file, 1, 550, 400));
  EXPECT_TRUE(picture("seq/frame_0002.png").rgba == drawnFrame(file, 2, 550, 400));
  EXPECT_TRUE(fs::exists(dir_ / "seq/frame_0003.png"));
  EXPECT_FALSE(fs::exists(dir_ / "seq/frame_0000.png"));

  // The corner holds nothing of the movie, so it shows the background alone.
  auto corner = [&](const std::string& options) {
    const std::string out = (dir_ / "bg.png").string();
    Outcome o = run("render " + swfPath + " --frame 0 " + options + " --out " + out);
    EXPECT_EQ(o.status, 0) << options << "\n" << o.err;
    const corpus::Picture p = picture("bg.png");
    const uint8_t* px = &p.rgba[p.rgba.size() - 4];
    return std::vector<int>{px[0], px[1], px[2], px[3]};
  };
  EXPECT_EQ(corner("--background"), (std::vector<int>{0x33, 0x66, 0x99, 255}));
  EXPECT_EQ(corner("--background '#ff8000'"), (std::vector<int>{255, 128, 0, 255}));
  EXPECT_EQ(corner("--background transparent"), (std::vector<int>{0, 0, 0, 0}));

  r = run("--version");
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out.rfind("vostan-movie ", 0), 0u) << r.out;
  EXPECT_TRUE(r.out.size() > 14 && std::isdigit(static_cast<unsigned char>(r.out[13]))) << r.out;
}

TEST_F(ExporterTest, InfoListsMorphsFontsAndTextAsRead) {
  swf::Writer square;
  square.rectangleRecords(100, 100);
  swf::Writer end;
  end.bits(0, 8);
  end.endShape();
  swf::Writer glyph;
  glyph.rectangleRecords(500, 500);
  swf::TextRecord line;
  line.font = 2;
  line.height = 240;
  line.glyphs = {{0, 200}, {0, 200}};
  swf::Bytes file = swf::movie(
      swf::concat({swf::defineMorphShape(1, {{{255, 0, 0}, {0, 0, 255}}}, {}, square, end),
                   swf::defineFont(2, {glyph}), swf::defineFontInfo(2, "Blocks", {'A'}),
                   swf::defineText(11, 3, {line}),
                   swf::defineEditText(4, 2, 240, {0, 0, 0, 255}, "AA"), swf::end()}));
  Outcome r = run("info " + write("text.swf", file).string());
  ASSERT_EQ(r.status, 0) << r.err;
  for (const char* expected :
       {"  1 morph, 1 fills, 7 records", "  2 font Blocks, 1 glyphs", "  3 text, 2 glyphs",
        "  4 edit text \"AA\"", "blocks skipped: none"})
    EXPECT_NE(r.out.find(expected), std::string::npos) << expected << "\n" << r.out;
}

TEST_F(ExporterTest, BadInputFailsWithAMessage) {
  fs::path good = write("good.swf", sample::movie());
  swf::Bytes cut = sample::movie(true);
  cut.resize(cut.size() - 20);
  swf::Bytes badBitmap =
      swf::movie(swf::concat({swf::block(36, swf::Bytes{1, 0, 5, 2, 0, 2, 0, 0x78, 0x9c, 0xff}),
                              swf::showFrame(), swf::end()}));
  struct Case {
    std::string args;
    int status;
    std::string message;
  };
  const std::string out = " --out " + (dir_ / "x.png").string();
  const Case cases[] = {
      {"render " + (dir_ / "absent.swf").string() + " --frame 0" + out, 1, "cannot read"},
      {"info " + write("text.swf", swf::Bytes(40, 'x')).string(), 1, "not a SWF movie"},
      {"render " + write("cut.swf", cut).string() + " --frame 0" + out, 1, "does not open"},
      {"info " + write("bitmap.swf", badBitmap).string(), 1,
       "damaged movie: Couldn't uncompress bits!"},
      {"render " + good.string() + " --frames 3-1" + out, 1, "bad frame range"},
      {"render " + good.string() + " --frame 0 --background '#12345'" + out, 1, "bad colour"},
      {"render " + good.string() + " --frame 0 --size 5000x10" + out, 1, "bad size"},
      {"render " + good.string() + " --frame 0 --out " + (dir_ / "no/such/dir.png").string(), 1,
       "cannot write"},
      {"render " + good.string() + out, 2, "usage:"},
      {"play " + good.string(), 1, "unknown command play"},
  };
  for (const Case& c : cases) {
    Outcome r = run(c.args);
    EXPECT_EQ(r.status, c.status) << c.args << "\n" << r.err;
    EXPECT_NE(r.err.find(c.message), std::string::npos) << c.args << "\n" << r.err;
  }
  EXPECT_FALSE(fs::exists(dir_ / "x.png"));
}

// Every corpus picture through the exporter: the same pixels as the movie
// object draws in process, and for movies whose blocks are all read, at least
// as close to the other players' pictures as the kept baseline records.
TEST_F(ExporterTest, CorpusMoviesThroughTheExporter) {
  std::vector<corpus::Case> cases = corpus::listCases(VOSTAN_SWF_CORPUS);
  if (cases.empty()) GTEST_SKIP() << "no corpus at " << VOSTAN_SWF_CORPUS;
  const auto baseline = corpus::readBaseline(VOSTAN_CORPUS_BASELINE);
  int supported = 0;
  for (const corpus::Case& c : cases) {
    const std::string key = c.movie + "/" + c.name;
    SCOPED_TRACE(key);
    corpus::Picture expected;
    ASSERT_TRUE(corpus::readPng(c.pngPath, expected));
    corpus::Rendered r =
        corpus::renderMovieFile(c.swfPath, c.framesAdvanced, expected.width, expected.height);
    if (!r.fatal.empty()) {
      // The reader gave the movie up: the exporter says so and fails.
      Outcome run = this->run("info " + c.swfPath);
      EXPECT_EQ(run.status, 1);
      EXPECT_NE(run.err.find("damaged movie"), std::string::npos) << run.err;
      continue;
    }
    ASSERT_TRUE(r.opened);
    Outcome run =
        this->run("render " + c.swfPath + " --frame " + std::to_string(r.shownFrame) + " --size " +
                  std::to_string(expected.width) + "x" + std::to_string(expected.height) +
                  " --background --out " + (dir_ / "corpus.png").string());
    ASSERT_EQ(run.status, 0) << run.err;
    corpus::Picture got = picture("corpus.png");
    EXPECT_TRUE(got.rgba == r.picture.rgba) << "the exporter drew otherwise than the movie object";
    if (!r.allBlocksRead) continue;
    supported++;
    corpus::Comparison cmp = corpus::compare(got, expected, 8);
    auto it = baseline.find(key);
    ASSERT_NE(it, baseline.end()) << "no baseline";
    EXPECT_GE(cmp.withinShare, it->second.first - 0.002);
    EXPECT_LE(cmp.meanAbsError, it->second.second + 0.1);
  }
  EXPECT_GT(supported, 0);
  std::printf("%d of %zu corpus pictures from movies whose blocks are all read\n", supported,
              cases.size());
}

}  // namespace
