// The tag text, what a song makes of it, refused and damaged files, and
// sample-exact looping.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "songs.h"

namespace vostan {
namespace {

using test::decodeStraight;
using test::songPath;
using test::SongRef;

bool parse(MDJInfo& info, const std::string& text) {
  return info.parse(text.c_str(), text.size());
}

TEST(MDJTag, ParsesFieldsRefusesCountsTheTextCantHoldAndFindsSections) {
  MDJInfo info;
  ASSERT_TRUE(parse(info, "30000,90000,5,2,66150,9000000,8,1,-100,12050000,4,259"));
  EXPECT_EQ(info.loopEnd, 90000);
  ASSERT_EQ(info.sectionCount, 2);
  EXPECT_EQ(info.sections[0].tempo, 90.0f);
  EXPECT_EQ(info.sections[1].tempo, static_cast<float>(12050000 / 100000.0));
  EXPECT_EQ(info.sections[1].sectionFlag, 3);  // low eight bits of 259
  // A blank ends a number as a comma does; the end of the text adds one empty
  // number (0); any other character counts as a digit, with 32-bit wrap.
  ASSERT_TRUE(parse(info, "1 2,0,1,0,6000000,4,"));
  EXPECT_EQ(info.loopEnd, 2);
  EXPECT_EQ(info.sections[0].tempo, 60.0f);
  ASSERT_TRUE(parse(info, "1a,4294967297,-0,0"));
  EXPECT_EQ(info.loopStart, 10 + ('a' - 48));
  EXPECT_EQ(info.loopEnd, 1);

  for (const char* text :
       {"0,0,0,-1", "0,0,0,2,0,12000000,4,0", "0,0,0,2147483647,1,2,3,4", "0,0,0", ""}) {
    info.loopStart = 77;
    EXPECT_FALSE(parse(info, text)) << text;
    EXPECT_EQ(info.loopStart, 77) << "a refused tag leaves the fields alone: " << text;
  }
  // The first record whose start has passed answers; the list is never sorted.
  ASSERT_TRUE(parse(info, "0,0,0,3,200,1,1,0,100,2,2,0,10,3,3,0"));
  EXPECT_EQ(info.findSection(200)->syncBeats, 1);
  EXPECT_EQ(info.findSection(199)->syncBeats, 2);
  EXPECT_EQ(info.findSection(-1000)->syncBeats, 3);  // before all: the last record
  ASSERT_TRUE(parse(info, "0,0,0,2,10,3,3,0,200,1,1,0"));
  EXPECT_EQ(info.findSection(500)->syncBeats, 3);
}

TEST(MDJTag, SongsTakeLoopAndSectionsFromTheirTag) {
  SongRef plain("plain.ogg"), capitals("capitals.ogg"), degenerate("degenerate.ogg");
  EXPECT_EQ(plain->getInfo(), nullptr);  // no tag: the whole stream, no tempo map
  EXPECT_EQ(plain->getSampleRate(), 44100.0f);
  EXPECT_EQ(plain->getEndFrame(), 132300);
  ASSERT_NE(capitals->getInfo(), nullptr);  // the tag's name in capitals
  EXPECT_EQ(capitals->getLoopStart(), 1000);
  EXPECT_EQ(capitals->getEndFrame(), 2000);
  ASSERT_NE(degenerate->getInfo(), nullptr);
  EXPECT_EQ(degenerate->getInfo()->sectionCount, 0);
  EXPECT_EQ(degenerate->getEndFrame(), 44100);  // loop end 0: the whole stream
}

// Refused files say why and read nothing. Cut copies of a song are refused or
// are a shorter song that loops in full; damaged pages are holes to the
// decoder, where reading must end and stay in bounds (the sanitizer tree
// checks the latter).
TEST(MDJSong, UnusableCutAndDamagedFilesFailCleanly) {
  const std::string garbage = testing::TempDir() + "mdj_garbage.ogg";
  const std::string path = testing::TempDir() + "mdj_broken.ogg";
  std::ofstream(garbage) << "OggS but nothing else of a Vorbis stream";
  std::vector<float> left(70000), right(70000);
  float* out[2] = {left.data(), right.data()};
  const std::pair<std::string, MDJSong::Failure> refused[] = {
      {songPath("missing.ogg"), MDJSong::Failure::cannotOpen},
      {garbage, MDJSong::Failure::notVorbis},
      {songPath("mono.ogg"), MDJSong::Failure::notStereo},
      {songPath("short_tag.ogg"), MDJSong::Failure::badTag},
      {songPath("bad_loop.ogg"), MDJSong::Failure::badLoop},
  };
  for (const auto& [file, failure] : refused) {
    MDJSong* song = new MDJSong;
    EXPECT_FALSE(song->openFile(file.c_str())) << file;
    EXPECT_EQ(song->failure(), failure) << file << ": " << describeFailure(song->failure());
    EXPECT_EQ(song->readFrames(out, 16), 0);
    song->release();
  }

  std::ifstream in(songPath("inner_loop.ogg"), std::ios::binary);
  const std::vector<char> bytes((std::istreambuf_iterator<char>(in)), {});
  int opened = 0;
  for (size_t at = 0; at < bytes.size(); at += 1000) {
    for (bool damage : {false, true}) {
      std::vector<char> broken = bytes;
      if (damage) {
        for (size_t i = at; i < std::min(at + 200, broken.size()); ++i)
          broken[i] = char(i * 7919 >> 3);
      } else {
        broken.resize(at);  // at 0: an empty file
      }
      std::ofstream(path, std::ios::binary).write(broken.data(), std::streamsize(broken.size()));
      MDJSong* song = new MDJSong;
      if (song->openFile(path.c_str())) {
        opened++;
        for (int n = 0; n < 3; ++n) {
          const int32_t got = song->readFrames(out, 70000);
          EXPECT_TRUE(damage ? got >= 0 && got <= 70000 : got == 70000) << at << " " << got;
        }
      } else {
        EXPECT_NE(song->failure(), MDJSong::Failure::none);
      }
      song->release();
    }
  }
  EXPECT_GT(opened, 4);
  std::remove(garbage.c_str());
  std::remove(path.c_str());
}

// What readFrames delivers, in chunks of varied sizes, is the straight decode
// up to the loop end, then the stretch from the loop start again and again.
void expectLoopsLike(const char* name, int32_t loopStart, int32_t endFrame) {
  SCOPED_TRACE(name);
  SongRef song(name);
  ASSERT_EQ(song->getLoopStart(), loopStart);
  ASSERT_EQ(song->getEndFrame(), endFrame);
  const test::Decoded ref = decodeStraight(songPath(name));
  ASSERT_GE(ref.left.size(), size_t(endFrame));

  const size_t total = size_t(endFrame) + 3 * size_t(endFrame - loopStart) + 100;
  std::vector<float> left(total), right(total);
  static const int32_t chunks[] = {4093, 16384, 1, 777, 30000, 2};
  for (size_t done = 0, n = 0; done < total; done += chunks[n++ % 6]) {
    float* out[2] = {left.data() + done, right.data() + done};
    const int32_t want = std::min<int32_t>(chunks[n % 6], int32_t(total - done));
    ASSERT_EQ(song->readFrames(out, want), want);
  }
  size_t mismatches = 0, first = total;
  for (size_t i = 0; i < total; ++i) {
    size_t f = i < size_t(endFrame) ? i : loopStart + (i - endFrame) % (endFrame - loopStart);
    if ((left[i] != ref.left[f] || right[i] != ref.right[f]) && !mismatches++) first = i;
  }
  EXPECT_EQ(mismatches, 0u) << "first difference at output frame " << first;
  EXPECT_EQ(song->getLoopCount(), 4);
  EXPECT_EQ(song->getPosition(), loopStart + 100);
}

TEST(MDJSong, LoopsSampleExactlyAndSeeksPastTheLoopEndTurnBack) {
  expectLoopsLike("tail_loop.ogg", 44100, 132300);
  expectLoopsLike("inner_loop.ogg", 30000, 90000);
  expectLoopsLike("whole_loop.ogg", 0, 100000);

  SongRef song("inner_loop.ogg");
  const test::Decoded ref = decodeStraight(songPath("inner_loop.ogg"));
  std::vector<float> left(10), right(10);
  float* out[2] = {left.data(), right.data()};
  song->seekFrame(100000);
  ASSERT_EQ(song->readFrames(out, 10), 10);
  EXPECT_EQ(song->getLoopCount(), 1);
  EXPECT_EQ(song->getPosition(), 30010);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(left[i], ref.left[30000 + i]);
  song->seekFrame(50000);  // inside the loop: reads on from there
  ASSERT_EQ(song->readFrames(out, 10), 10);
  EXPECT_EQ(right[9], ref.right[50009]);
}

}  // namespace
}  // namespace vostan
