#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>

#include "songs.h"

namespace vostan {
namespace {

using test::decodeStraight;
using test::songPath;
using test::SongRef;

TEST(MDJSong, TaglessSongPlaysWholeWithoutTempoMap) {
  SongRef song("plain.ogg");
  ASSERT_EQ(song->failure(), MDJSong::Failure::none);
  EXPECT_EQ(song->getInfo(), nullptr);
  EXPECT_EQ(song->getSampleRate(), 44100.0f);
  EXPECT_EQ(song->getLoopStart(), 0);
  EXPECT_EQ(song->getEndFrame(), 132300);
}

TEST(MDJSong, TagIsFoundWhateverTheCaseOfItsName) {
  SongRef song("capitals.ogg");
  ASSERT_NE(song->getInfo(), nullptr);
  EXPECT_EQ(song->getInfo()->reservedField, 7);
  EXPECT_EQ(song->getLoopStart(), 1000);
  EXPECT_EQ(song->getEndFrame(), 2000);
}

TEST(MDJSong, DegenerateTagOpensWithoutSections) {
  SongRef song("degenerate.ogg");
  ASSERT_NE(song->getInfo(), nullptr);
  EXPECT_EQ(song->getInfo()->sectionCount, 0);
  EXPECT_EQ(song->getInfo()->findSection(0), nullptr);
  EXPECT_EQ(song->getEndFrame(), 44100);  // loop end 0: the whole stream
}

TEST(MDJSong, UnusableFilesAreRefusedWithTheirReason) {
  std::string garbage = testing::TempDir() + "mdj_garbage.ogg";
  std::string empty = testing::TempDir() + "mdj_empty.ogg";
  {
    std::ofstream(garbage) << "OggS but nothing else of a Vorbis stream";
    std::ofstream{empty};
  }
  struct Case {
    std::string path;
    MDJSong::Failure failure;
  } cases[] = {
      {songPath("missing.ogg"), MDJSong::Failure::cannotOpen},
      {garbage, MDJSong::Failure::notVorbis},
      {empty, MDJSong::Failure::notVorbis},
      {songPath("mono.ogg"), MDJSong::Failure::notStereo},
      {songPath("short_tag.ogg"), MDJSong::Failure::badTag},
      {songPath("bad_loop.ogg"), MDJSong::Failure::badLoop},
  };
  for (const Case& c : cases) {
    MDJSong* song = new MDJSong;
    EXPECT_FALSE(song->openFile(c.path.c_str())) << c.path;
    EXPECT_EQ(song->failure(), c.failure) << c.path << ": " << describeFailure(song->failure());
    float left[16], right[16];
    float* out[2] = {left, right};
    EXPECT_EQ(song->readFrames(out, 16), 0);
    song->release();
  }
  std::remove(garbage.c_str());
  std::remove(empty.c_str());
}

// Cut and damaged copies of a song (run under AddressSanitizer in the
// sanitizer tree). A cut copy is refused or is a shorter song that loops in
// full; damaged pages are holes to the decoder, and there what matters is
// that reading ends and stays in bounds.
TEST(MDJSong, CutAndDamagedFilesFailCleanly) {
  std::ifstream in(songPath("inner_loop.ogg"), std::ios::binary);
  std::vector<char> bytes((std::istreambuf_iterator<char>(in)), {});
  std::string path = testing::TempDir() + "mdj_broken.ogg";
  std::vector<float> left(70000), right(70000);
  float* out[2] = {left.data(), right.data()};
  int opened = 0;
  for (size_t at = 0; at < bytes.size(); at += 1000) {
    for (bool damage : {false, true}) {
      std::vector<char> broken = bytes;
      if (damage) {
        for (size_t i = at; i < std::min(at + 200, broken.size()); ++i)
          broken[i] = char(i * 7919 >> 3);
      } else {
        broken.resize(at);
      }
      std::ofstream(path, std::ios::binary).write(broken.data(), std::streamsize(broken.size()));
      MDJSong* song = new MDJSong;
      if (song->openFile(path.c_str())) {
        opened++;
        for (int n = 0; n < 3; ++n) {
          int32_t got = song->readFrames(out, 70000);
          if (damage) {
            EXPECT_TRUE(got >= 0 && got <= 70000) << at;
          } else {
            EXPECT_EQ(got, 70000) << at;
          }
        }
      } else {
        EXPECT_NE(song->failure(), MDJSong::Failure::none);
      }
      song->release();
    }
  }
  EXPECT_GT(opened, 4);
  std::remove(path.c_str());
}

// Reads `total` frames in chunks of varied sizes.
void readInChunks(MDJSong* song, std::vector<float>& left, std::vector<float>& right,
                  size_t total) {
  left.assign(total, 0.0f);
  right.assign(total, 0.0f);
  static const int32_t chunks[] = {4093, 16384, 1, 777, 30000, 2};
  size_t done = 0;
  for (int n = 0; done < total; ++n) {
    int32_t want = std::min<int32_t>(chunks[n % 6], int32_t(total - done));
    float* out[2] = {left.data() + done, right.data() + done};
    ASSERT_EQ(song->readFrames(out, want), want);
    done += want;
  }
}

// Loops sample-exactly: what readFrames delivers is the straight decode up to
// the loop end, then the stretch from the loop start again and again.
void expectLoopsLike(const char* name, int32_t loopStart, int32_t endFrame) {
  SongRef song(name);
  ASSERT_EQ(song->failure(), MDJSong::Failure::none) << name;
  ASSERT_EQ(song->getLoopStart(), loopStart);
  ASSERT_EQ(song->getEndFrame(), endFrame);
  test::Decoded ref = decodeStraight(songPath(name));
  ASSERT_GE(ref.left.size(), size_t(endFrame));

  size_t total = size_t(endFrame) + 3 * size_t(endFrame - loopStart) + 100;
  std::vector<float> left, right;
  readInChunks(song.song, left, right, total);
  size_t mismatches = 0, first = total;
  for (size_t i = 0; i < total; ++i) {
    size_t f = i < size_t(endFrame) ? i : loopStart + (i - endFrame) % (endFrame - loopStart);
    if (left[i] != ref.left[f] || right[i] != ref.right[f]) {
      if (!mismatches++) first = i;
    }
  }
  EXPECT_EQ(mismatches, 0u) << name << ": first difference at output frame " << first;
  EXPECT_EQ(song->getLoopCount(), 4);
  EXPECT_EQ(song->getPosition(), loopStart + 100);
}

TEST(MDJSong, LoopsFromStreamEndToLoopStart) {
  expectLoopsLike("tail_loop.ogg", 44100, 132300);
}
TEST(MDJSong, LoopsBetweenInnerLoopPoints) {
  expectLoopsLike("inner_loop.ogg", 30000, 90000);
}
TEST(MDJSong, LoopsWholeSongFromItsStart) {
  expectLoopsLike("whole_loop.ogg", 0, 100000);
}

TEST(MDJSong, SeekPastLoopEndTurnsBackAtOnce) {
  SongRef song("inner_loop.ogg");
  test::Decoded ref = decodeStraight(songPath("inner_loop.ogg"));
  song->seekFrame(100000);
  EXPECT_EQ(song->getPosition(), 100000);
  std::vector<float> left(10), right(10);
  float* out[2] = {left.data(), right.data()};
  ASSERT_EQ(song->readFrames(out, 10), 10);
  EXPECT_EQ(song->getLoopCount(), 1);
  EXPECT_EQ(song->getPosition(), 30010);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(left[i], ref.left[30000 + i]);

  // A seek inside the loop reads on from there.
  song->seekFrame(50000);
  ASSERT_EQ(song->readFrames(out, 10), 10);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(right[i], ref.right[50000 + i]);
}

}  // namespace
}  // namespace vostan
