#include <gtest/gtest.h>

#include "audio/mdj/mdj_track.h"
#include "songs.h"

namespace vostan {
namespace {

using test::SongRef;

constexpr int32_t kOneBeat = 1 << 16;

TEST(MDJTrack, WithoutSongOrSectionsThereAreNoBeats) {
  MDJTrack track;
  EXPECT_FALSE(track.prefill());
  EXPECT_FALSE(track.isPlaying());
  EXPECT_EQ(track.getInfo(), nullptr);
  EXPECT_EQ(track.currentTempo(), 0.0f);
  EXPECT_EQ(track.beatPosition(1000), 0);
  EXPECT_EQ(track.sectionAt(0), nullptr);

  for (const char* name : {"plain.ogg", "degenerate.ogg"}) {
    SongRef song(name);
    track.setSong(song.song);
    ASSERT_TRUE(track.prefill());
    EXPECT_EQ(track.currentTempo(), 0.0f) << name;
    EXPECT_EQ(track.beatPosition(1000), 0) << name;
    EXPECT_EQ(track.sectionAt(0), nullptr) << name;
  }
}

TEST(MDJTrack, SetSongMovesTheReference) {
  SongRef a("plain.ogg"), b("tail_loop.ogg");
  {
    MDJTrack track;
    track.setSong(a.song);
    EXPECT_EQ(a->getRefCount(), 2);
    track.setSong(a.song);
    EXPECT_EQ(a->getRefCount(), 2);
    track.setSong(b.song);
    EXPECT_EQ(a->getRefCount(), 1);
    EXPECT_EQ(b->getRefCount(), 2);
    EXPECT_EQ(track.getSong(), b.song);
  }
  EXPECT_EQ(b->getRefCount(), 1);
}

TEST(MDJTrack, PrefillDecodesAWindowFromTheSongPosition) {
  SongRef song("tail_loop.ogg");
  test::Decoded ref = test::decodeStraight(test::songPath("tail_loop.ogg"));
  MDJTrack track;
  track.setSong(song.song);
  track.readIndex = 500;
  track.fraction = 0.25f;
  song->seekFrame(12345);
  ASSERT_TRUE(track.prefill());
  EXPECT_TRUE(track.isPlaying());
  EXPECT_EQ(track.readIndex, 0);
  EXPECT_EQ(track.fraction, 0.0f);
  EXPECT_EQ(track.endMark, -1);
  EXPECT_EQ(song->getPosition(), 12345 + MDJTrack::kWindowFrames);
  EXPECT_EQ(track.streamFrame(0), 12345);
  for (int32_t i = 0; i < MDJTrack::kWindowFrames; i += 97) {
    ASSERT_EQ(track.window[0][i], ref.left[12345 + i]) << i;
    ASSERT_EQ(track.window[1][i], ref.right[12345 + i]) << i;
  }
  for (int32_t i = 1; i <= MDJTrack::kHistoryFrames; ++i) EXPECT_EQ(track.window[0][-i], 0.0f);
  track.stop();
  EXPECT_FALSE(track.isPlaying());
  EXPECT_EQ(track.getSong(), song.song);
}

// sections.ogg: 90 beats per minute from frame 66150 (29400 frames a beat),
// 120 before it (22050 a beat); it doesn't turn back within these windows.
TEST(MDJTrack, BeatPositionsAroundSectionBoundaries) {
  SongRef song("sections.ogg");
  MDJTrack track;
  track.setSong(song.song);
  song->seekFrame(66150);
  track.prefill();

  EXPECT_EQ(track.beatPosition(0), 0);
  EXPECT_EQ(track.sectionAt(0)->syncBeats, 8);
  EXPECT_EQ(track.beatPosition(14700), kOneBeat / 2);
  EXPECT_EQ(track.beatPosition(29400), kOneBeat);
  EXPECT_EQ(track.beatPosition(29399), kOneBeat - 3);  // truncated, not rounded
  // One frame back is the end of the earlier section's third beat.
  EXPECT_EQ(track.sectionAt(-1)->syncBeats, 4);
  EXPECT_EQ(track.beatPosition(-1), int32_t(66149.0 / 22050.0 * 65536.0));
  EXPECT_EQ(wholeBeat(track.beatPosition(-1)), 2);
  EXPECT_EQ(track.beatPosition(-66150 + 22050), kOneBeat);

  // Before every section: the last record, counted backwards, and the whole
  // beat of -0.5 is -1.
  song->seekFrame(0);
  track.prefill();
  EXPECT_EQ(track.beatPosition(-11025), -kOneBeat / 2);
  EXPECT_EQ(wholeBeat(track.beatPosition(-11025)), -1);
  EXPECT_EQ(track.sectionAt(-11025)->syncBeats, 4);
}

TEST(MDJTrack, TempoIsTakenAtTheDecoderPosition) {
  SongRef song("sections.ogg");
  MDJTrack track;
  track.setSong(song.song);
  // What is heard is still in the 120 section; the decoder has reached 90.
  song->seekFrame(66150 - MDJTrack::kWindowFrames);
  track.prefill();
  EXPECT_EQ(track.sectionAt(0)->tempo, 120.0f);
  EXPECT_EQ(track.currentTempo(), 90.0f);
  track.pitch = 1.1f;
  EXPECT_EQ(track.currentTempo(), static_cast<float>(90.0 * 1.1f));
}

TEST(MDJTrack, BeatsBetweenWrapsAndSaturatesLikeTheProcessor) {
  EXPECT_EQ(beatsBetween(22050, 0, 120.0f, kBeatRate), kOneBeat);
  EXPECT_EQ(beatsBetween(0, 22050, 120.0f, kBeatRate), -kOneBeat);
  // The frame difference is taken in 32 bits.
  EXPECT_EQ(beatsBetween(INT32_MIN, 1, 1.0f, kBeatRate),
            beatsBetween(INT32_MAX, 0, 1.0f, kBeatRate));
  // Beyond 32 bits of result, and a tempo of 0 in a damaged tag.
  EXPECT_EQ(beatsBetween(INT32_MAX, 0, 40000.0f, kBeatRate), INT32_MIN);
  EXPECT_EQ(beatsBetween(1000, 0, 0.0f, kBeatRate), 0);
}

}  // namespace
}  // namespace vostan
