#include "audio/clip_sound.h"

#include <gtest/gtest.h>

#include "audio_fixture.h"
#include "signal.h"

namespace snd = vostan::platform::sound;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;
using vostan::ClipSound;
using vostan::ClipSoundContext;
using vostan::test::frequency;
using vostan::test::peak;
using vostan::test::render;
using vostan::test::rms;
using vostan::test::sine16;

namespace {

class ClipSoundTest : public vostan::test::AudioFixture {
 protected:
  // One second of a 441 Hz sine, amplitude 0.25, in a pool of `count` voices.
  std::unique_ptr<ClipSoundContext> context(int mode, int count, int channels = 1,
                                            uint32_t rate = 44100) {
    data = sine16(441, rate, rate, channels, 0.25);
    auto c = std::make_unique<ClipSoundContext>(*audio);
    EXPECT_TRUE(
        c->createBuffers(float(rate), 16, channels, data.data(), int(data.size()), mode, count));
    return c;
  }
  int32_t volumeOf(ClipSoundContext& c, int index) {
    int32_t v = 1;
    c.soundBuffers[index]->getVolume(&v);
    return v;
  }
  vostan::test::Stereo settled(uint32_t frames = 8192) {
    render(*device, 1024);
    return render(*device, frames);
  }

  std::vector<uint8_t> data;
};

TEST_F(ClipSoundTest, SettingsWaitForPlayAndFollowWhileBound) {
  auto c = context(0, 2, 2);  // 16-bit stereo
  ClipSound s(*c, 0.5f, 0.25f, 3.0f, 1, 100);
  EXPECT_EQ(s.pitch, 2.0f);  // pitch is kept within 0.5 to 2
  s.setPitch(0.1f);
  EXPECT_EQ(s.pitch, 0.5f);
  s.setPitch(1.5f);
  s.setCursor(100);
  EXPECT_EQ(s.cursorBytes, 400);
  EXPECT_EQ(volumeOf(*c, 0), 0);  // nothing reached the voice yet

  ASSERT_TRUE(s.play(0, true, true));
  EXPECT_EQ(volumeOf(*c, 0), -602);
  int32_t pan = 0;
  uint32_t hz = 0, pos = 0;
  c->soundBuffers[0]->getPan(&pan);
  c->soundBuffers[0]->getFrequency(&hz);
  c->soundBuffers[0]->getCurrentPosition(&pos, nullptr);
  EXPECT_EQ(pan, -602);
  EXPECT_EQ(hz, 66150u);
  EXPECT_EQ(pos, 400u);
  // A bound voice is handed the frame count as bytes: a quarter of the way.
  s.setCursor(1000);
  c->soundBuffers[0]->getCurrentPosition(&pos, nullptr);
  EXPECT_EQ(pos, 1000u);
  EXPECT_EQ(s.cursorBytes, 4000);

  // Silence is the floor; the master volume counts from the next setting.
  s.setVolume(0.0f);
  EXPECT_EQ(volumeOf(*c, 0), -10000);
  audio->masterVolume = 0.5f;
  EXPECT_EQ(volumeOf(*c, 0), -10000);
  s.setVolume(1.0f);
  EXPECT_EQ(volumeOf(*c, 0), -602);
  EXPECT_EQ(s.volumeToDirectSound(2.0f), 602);  // above full is not clamped
  // The pan jumps at 0.75, where the second branch takes over.
  for (auto [p, want] : {std::pair{0.0f, -10000}, {0.7f, 292}, {0.75f, 602}, {1.0f, 10000}}) {
    s.pan = p;
    EXPECT_EQ(s.stereoPan(), want) << p;
  }
}

TEST_F(ClipSoundTest, PlaysAtItsPitchVolumeAndPan) {
  auto c = context(0, 1, 1, 22050);
  ClipSound s(*c, 0.5f, 0.5f, 2.0f, 1, 100);
  ASSERT_TRUE(s.play(0, true, true));
  auto out = render(*device, 8192);
  EXPECT_NEAR(frequency(out.left), 882, 5);
  // Amplitude 0.25 at -6 dB.
  EXPECT_NEAR(peak(out.left), 0.25 * 0.5012, 0.005);
  EXPECT_NEAR(peak(out.right), 0.25 * 0.5012, 0.005);
  s.setPan(1.0f);
  out = settled();
  EXPECT_LT(peak(out.left), 1e-6);
  EXPECT_NEAR(peak(out.right), 0.25 * 0.5012, 0.005);
}

TEST_F(ClipSoundTest, PoolPlaysVoicesTogetherAndStealsTheOldest) {
  auto c = context(0, 3);
  ClipSound a(*c, 1, 0.5f, 1, 1, 100), b(*c, 1, 0.5f, 1, 1, 100), d(*c, 1, 0.5f, 1, 1, 100);
  // Started together, three voices add up in phase.
  ASSERT_TRUE(d.play(c->getFreeBufferIndex(1), false, true));
  ASSERT_TRUE(a.play(c->getFreeBufferIndex(1), true, true));
  ASSERT_TRUE(b.play(c->getFreeBufferIndex(1), false, true));
  EXPECT_EQ(b.bufferIndex, 2);
  EXPECT_NEAR(peak(render(*device, 4096).left), 3 * 0.25, 0.03);

  a.startTime = 100;
  b.startTime = 200;
  d.startTime = 300;
  EXPECT_EQ(c->getFreeBufferIndex(0), -1);  // only a free voice will do
  // a is oldest but loops, so b goes.
  EXPECT_EQ(c->getFreeBufferIndex(1), 2);
  ClipSound e(*c, 1, 0.5f, 1, 1, 100);
  ASSERT_TRUE(e.play(2, false, true));
  EXPECT_EQ(b.isBound(), -1);
  EXPECT_EQ(e.isBound(), 2);

  // With every voice looping, voice 0 is given up, however new.
  auto loops = context(0, 3);
  ClipSound l0(*loops, 1, 0.5f, 1, 1, 100), l1(*loops, 1, 0.5f, 1, 1, 100),
      l2(*loops, 1, 0.5f, 1, 1, 100);
  for (ClipSound* l : {&l0, &l1, &l2})
    ASSERT_TRUE(l->play(loops->getFreeBufferIndex(1), true, true));
  l0.startTime = 900;
  EXPECT_EQ(loops->getFreeBufferIndex(1), 0);
}

TEST_F(ClipSoundTest, FinishedSoundGivesItsVoiceBackAndStopKeepsTheCursor) {
  auto c = context(0, 2);
  ClipSound s(*c, 1, 0.5f, 1, 1, 100), t(*c, 1, 0.5f, 1, 1, 100);
  // Behind another window or without a voice nothing plays.
  EXPECT_FALSE(s.play(0, false, false));
  EXPECT_FALSE(s.play(-1, false, true));
  EXPECT_EQ(s.startTime, 0u);
  EXPECT_LT(peak(render(*device, 2048).left, 0), 1e-6);

  ASSERT_TRUE(s.play(0, false, true));
  ASSERT_TRUE(t.play(1, true, true));
  EXPECT_EQ(c->getFreeBufferIndex(0), -1);
  render(*device, 44100 + 1024);
  EXPECT_EQ(c->getFreeBufferIndex(0), 0);
  EXPECT_EQ(c->bufferOwners[0], nullptr);
  EXPECT_EQ(s.bufferIndex, -1);
  EXPECT_EQ(t.isBound(), 1);
  t.setCursor(10);
  EXPECT_EQ(t.stop(), -1);
  EXPECT_EQ(t.cursorBytes, 20);
}

TEST_F(ClipSoundTest, LostVoiceIsRefilledAndDeviceFailuresAreReported) {
  auto c = context(0, 2);
  ClipSound s(*c, 1, 0.5f, 1, 1, 100);
  device->loseBuffers();
  ASSERT_TRUE(s.play(1, true, true));
  EXPECT_NEAR(rms(render(*device, 8192).left), 0.25 / std::sqrt(2.0), 0.01);
  s.stop();
  device->loseBuffers();
  device->faults().restoreFails = true;
  EXPECT_FALSE(s.play(0, true, true));
  EXPECT_EQ(c->bufferOwners[0], nullptr);

  device->faults().restoreFails = false;
  device->faults().play = snd::err::kGeneric;
  CaptureStdout();
  EXPECT_FALSE(s.play(1, false, true));
  EXPECT_EQ(GetCapturedStdout(), "Playing Sound failed:DSERR_GENERIC\n");
  EXPECT_EQ(c->bufferOwners[1], nullptr);

  ClipSoundContext refused(*audio), badBits(*audio), empty(*audio);
  device->faults().duplicateBuffer = snd::err::kOutOfMemory;
  EXPECT_FALSE(refused.createBuffers(44100, 16, 1, data.data(), 200, 0, 2));
  device->faults().duplicateBuffer = snd::err::kOk;
  EXPECT_FALSE(badBits.createBuffers(44100, 12, 1, data.data(), 200, 0, 2));
  // A pool of none still plays on voice 0.
  ASSERT_TRUE(empty.createBuffers(44100, 16, 1, data.data(), 200, 0, 0));
  EXPECT_EQ(empty.getFreeBufferIndex(0), 0);
}

TEST_F(ClipSoundTest, ThreeDVoicesMoveWithTheirPositionOnCommit) {
  for (int mode : {1, 2, 3, 7}) {
    auto c = context(mode, 2);
    EXPECT_EQ(c->buffers3D.size(), 2u) << mode;
  }
  auto c = context(1, 2);
  ClipSound s(*c, 1, 0.5f, 1, 1, 50);
  s.setPosition(0, 0, 1);  // before play: stored, no velocity yet
  ASSERT_TRUE(s.play(0, true, true));
  auto out = render(*device, 8192);
  const double front = rms(out.left) + rms(out.right);
  EXPECT_NEAR(rms(out.left), rms(out.right), 0.02 * front);

  // Moving right is heard only after the commit.
  s.setPosition(3, 0, 0);
  out = settled();
  EXPECT_NEAR(rms(out.left), rms(out.right), 0.02 * front);
  EXPECT_EQ(audio->commit(), 0);
  out = settled();
  EXPECT_GT(rms(out.right), 2 * rms(out.left));
  EXPECT_NEAR(rms(out.left) + rms(out.right), front / 3, 0.1 * front);

  // The listener walks past it: now it is on the left, after the commit.
  const float beyond[9] = {6, 0, 0, 0, 0, 1, 0, 1, 0};
  audio->setListener(beyond);
  out = settled();
  EXPECT_GT(rms(out.right), rms(out.left));
  audio->commit();
  out = settled();
  EXPECT_GT(rms(out.left), 2 * rms(out.right));

  // Past its maximum distance the voice is muted.
  s.setMaxDistance(2);
  audio->commit();
  EXPECT_LT(peak(settled(4096).left), 1e-6);
}

TEST_F(ClipSoundTest, VelocityIsThePositionChangeOverElapsedTime) {
  auto c = context(1, 1);
  ClipSound s(*c, 1, 0.5f, 1, 1000, 10000);  // loud at every distance used here
  s.setPosition(0, 0, 1);
  ASSERT_TRUE(s.play(0, true, true));
  render(*device, 22050);
  // 200 units in 500 ms: a velocity of 100 away from the listener, heard as
  // a Doppler drop once committed.
  s.setPosition(0, 0, 201);
  audio->commit();
  EXPECT_NEAR(frequency(settled(16384).left), 441 * 343.3 / 443.3, 4);
}

}  // namespace
