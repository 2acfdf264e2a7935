// Beats from the tempo map, and the crossfade motion driving the mixer.
#include <gtest/gtest.h>

#include "audio/mdj/mdj_mixer.h"
#include "audio/mdj/mdj_motion.h"
#include "audio/mdj/mdj_track.h"
#include "songs.h"

namespace vostan {
namespace {

constexpr int32_t kOneBeat = 1 << 16;

// sections.ogg: 90 beats a minute from frame 66150 (29400 frames a beat), 120
// before it (22050 a beat); it doesn't turn back within these windows.
TEST(MDJTrack, BeatPositionsAndTempoAroundSectionBoundaries) {
  test::SongRef song("sections.ogg");
  MDJTrack track;
  track.setSong(song.song);
  song->seekFrame(66150);
  ASSERT_TRUE(track.prefill());
  EXPECT_EQ(track.sectionAt(0)->syncBeats, 8);
  EXPECT_EQ(track.beatPosition(29400), kOneBeat);
  EXPECT_EQ(track.beatPosition(29399), kOneBeat - 3);  // truncated, not rounded
  // One frame back is the end of the earlier section's third beat.
  EXPECT_EQ(track.sectionAt(-1)->syncBeats, 4);
  EXPECT_EQ(track.beatPosition(-1), int32_t(66149.0 / 22050.0 * 65536.0));
  EXPECT_EQ(wholeBeat(track.beatPosition(-1)), 2);
  // Before every section: the last record, counted backwards; beat -0.5 is
  // whole beat -1.
  song->seekFrame(0);
  track.prefill();
  EXPECT_EQ(track.beatPosition(-11025), -kOneBeat / 2);
  EXPECT_EQ(wholeBeat(track.beatPosition(-11025)), -1);

  // The tempo is the decoder's: what is heard is still at 120, decoding at 90.
  song->seekFrame(66150 - MDJTrack::kWindowFrames);
  track.prefill();
  EXPECT_EQ(track.sectionAt(0)->tempo, 120.0f);
  EXPECT_EQ(track.currentTempo(), 90.0f);

  // Without sections there are no beats; a tempo of 0 in a damaged tag neither.
  test::SongRef plain("degenerate.ogg");
  track.setSong(plain.song);
  ASSERT_TRUE(track.prefill());
  EXPECT_EQ(track.currentTempo(), 0.0f);
  EXPECT_EQ(track.beatPosition(1000), 0);
  EXPECT_EQ(beatsBetween(1000, 0, 0.0f, kBeatRate), 0);
}

TEST(MDJMotion, CrossfadeValuesAtChosenBeatsDriveTheMixer) {
  const MDJMotion& motion = *getMotion(0);
  ASSERT_EQ(motion.getTrackCount(), 1);
  const MDJMotionTrack& track = *motion.getTrack(0);
  // Before the first key, between keys, at a key exactly, beyond the last.
  EXPECT_EQ(track.evaluate(-2.0f), -0.9f);
  EXPECT_NEAR(track.evaluate(3.5f), -0.75f, 1e-6f);
  EXPECT_EQ(track.evaluate(7.0f), -0.6f);
  EXPECT_EQ(track.evaluate(40.0f), 1.0f);
  MDJMixer mixer;
  struct {
    float beat, first, second;
    bool running;
  } steps[] = {
      {0.0f, 1.0f, 0.2f, true},   {7.25f, 1.0f, 1.0f, true},  {13.25f, 0.5f, 1.0f, true},
      {15.99f, 0.0f, 1.0f, true}, {16.0f, 0.0f, 1.0f, false}, {30.0f, 0.0f, 1.0f, false},
  };
  for (auto s : steps) {
    EXPECT_EQ(motion.apply(mixer, s.beat), s.running) << s.beat;
    EXPECT_NEAR(mixer.getGainOfTrack(0), s.first, 1e-5f) << s.beat;
    EXPECT_NEAR(mixer.getGainOfTrack(1), s.second, 1e-5f) << s.beat;
  }

  // A step key holds until the next, which takes over at its own time; the
  // last key holds for ever.
  MDJMotionTrack keyed(1, 5);
  keyed.addKey(1.0f, 10.0f, false).addKey(2.0f, 20.0f, true).addKey(4.0f, 40.0f, true);
  EXPECT_EQ(keyed.evaluate(1.5f), 10.0f);
  EXPECT_EQ(keyed.evaluate(2.0f), 20.0f);
  EXPECT_EQ(keyed.evaluate(3.0f), 30.0f);
  EXPECT_EQ(keyed.evaluate(90.0f), 40.0f);
}

}  // namespace
}  // namespace vostan
