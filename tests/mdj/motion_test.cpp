#include <gtest/gtest.h>

#include "audio/mdj/mdj_mixer.h"
#include "audio/mdj/mdj_motion.h"

namespace vostan {
namespace {

TEST(MDJMotion, CrossfadeMotionValuesAtChosenBeats) {
  MDJMotion* motion = getMotion(0);
  ASSERT_NE(motion, nullptr);
  EXPECT_EQ(getMotion(0), motion);  // built once
  EXPECT_EQ(getMotion(1), nullptr);
  EXPECT_EQ(motion->getLength(), 16.0f);
  ASSERT_EQ(motion->getTrackCount(), 1);
  const MDJMotionTrack& track = *motion->getTrack(0);
  EXPECT_EQ(track.getTarget(), MDJMotionTrack::kTargetCrossfade);
  // Before the first key, between keys, at a key's own time exactly, and
  // beyond the last.
  EXPECT_EQ(track.evaluate(-2.0f), -0.9f);
  EXPECT_NEAR(track.evaluate(3.5f), -0.75f, 1e-6f);
  EXPECT_EQ(track.evaluate(7.0f), -0.6f);
  EXPECT_NEAR(track.evaluate(7.5f), -0.3f, 1e-6f);
  EXPECT_EQ(track.evaluate(15.0f), 1.0f);
  EXPECT_EQ(track.evaluate(40.0f), 1.0f);
}

TEST(MDJMotion, ApplyDrivesTheMixerBalance) {
  MDJMixer mixer;
  const MDJMotion& motion = *getMotion(0);
  struct {
    float beat, first, second;
    bool running;
  } steps[] = {
      {0.0f, 1.0f, 0.2f, true},   {7.0f, 1.0f, 0.8f, true},   {7.25f, 1.0f, 1.0f, true},
      {11.5f, 1.0f, 1.0f, true},  {13.25f, 0.5f, 1.0f, true}, {15.0f, 0.0f, 1.0f, true},
      {15.99f, 0.0f, 1.0f, true}, {16.0f, 0.0f, 1.0f, false}, {30.0f, 0.0f, 1.0f, false},
  };
  for (auto s : steps) {
    EXPECT_EQ(motion.apply(mixer, s.beat), s.running) << s.beat;
    EXPECT_NEAR(mixer.getGainOfTrack(0), s.first, 1e-5f) << s.beat;
    EXPECT_NEAR(mixer.getGainOfTrack(1), s.second, 1e-5f) << s.beat;
  }
  EXPECT_EQ(mixer.getCrossfade(), 1.0f);
}

TEST(MDJMotion, StepKeysAndTheMovingSentinel) {
  auto track = std::make_unique<MDJMotionTrack>(3, 5);
  EXPECT_EQ(track->evaluate(1.0f), 0.0f);  // no keys yet
  track->addKey(1.0f, 10.0f, false);
  EXPECT_EQ(track->evaluate(50.0f), 10.0f);
  track->addKey(2.0f, 20.0f, true);
  EXPECT_EQ(track->evaluate(1.5f), 10.0f);  // a step holds until the next key
  // The last key interpolates into its sentinel, which has the same value.
  EXPECT_EQ(track->evaluate(2.0f), 20.0f);
  EXPECT_EQ(track->evaluate(90.0f), 20.0f);
  // Each key overwrites the sentinel, and more keys than the capacity fit.
  track->addKey(4.0f, 40.0f, true).addKey(5.0f, 0.0f, true);
  EXPECT_EQ(track->getKeyCount(), 4);
  EXPECT_EQ(track->evaluate(3.0f), 30.0f);
  EXPECT_EQ(track->evaluate(4.5f), 20.0f);

  // A motion track of another target is evaluated but leaves the mixer be.
  MDJMotion motion(4.0f);
  motion.addTrack(std::move(track));
  MDJMixer mixer;
  mixer.setCrossfade(-0.75f);
  EXPECT_TRUE(motion.apply(mixer, 3.0f));
  EXPECT_EQ(mixer.getCrossfade(), -0.75f);
}

// The motion test covers the law inside the range; here its edges.
TEST(MDJMixer, CrossfadeClampsAndMainTrackSwaps) {
  MDJMixer mixer;
  struct {
    float value, crossfade, first, second;
  } cases[] = {{-3.0f, -1.0f, 1.0f, 0.0f}, {-0.5f, -0.5f, 1.0f, 1.0f}, {7.0f, 1.0f, 0.0f, 1.0f}};
  for (auto c : cases) {
    mixer.setCrossfade(c.value);
    EXPECT_EQ(mixer.getCrossfade(), c.crossfade) << c.value;
    EXPECT_EQ(mixer.getGainOfTrack(0), c.first) << c.value;
    EXPECT_EQ(mixer.getGainOfTrack(1), c.second) << c.value;
  }
  MDJTrack* first = mixer.getTrack(0);
  MDJTrack* second = mixer.getTrack(7);
  ASSERT_NE(first, second);
  mixer.makeMain(first);
  EXPECT_EQ(mixer.getTrack(0), first);
  mixer.makeMain(second);
  EXPECT_EQ(mixer.getTrack(0), second);
  EXPECT_EQ(mixer.getTrack(1), first);
}

}  // namespace
}  // namespace vostan
