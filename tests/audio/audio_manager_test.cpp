#include "audio/audio_manager.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "audio_fixture.h"
#include "signal.h"

namespace snd = vostan::platform::sound;
using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;
using vostan::AudioManager;

namespace {

TEST(AudioManagerStart, ReportsEachFailedStepAndDescribesResults) {
  CaptureStdout();
  CaptureStderr();
  EXPECT_FALSE(
      AudioManager::create([](std::unique_ptr<snd::Device>*) { return snd::err::kNoDriver; }));
  EXPECT_EQ(GetCapturedStderr(), "m_pDS->DirectSoundCreate8 failed : ");
  EXPECT_EQ(GetCapturedStdout(), "DSERR_NODRIVER\n");

  vostan::test::nextDevice() = snd::openLoopbackDevice();
  vostan::test::nextDevice()->faults().createBuffer = snd::err::kOutOfMemory;
  CaptureStdout();
  EXPECT_FALSE(AudioManager::create(vostan::test::openNextDevice));
  vostan::describeResult(int32_t(0x0878000A));
  vostan::describeResult(-1);
  EXPECT_EQ(GetCapturedStdout(),
            "CreateSoundBuffer(pDSBPrimary) failed....\nDSERR_OUTOFMEMORY\n"
            "DS_NO_VIRTUALIZATION\nunknown -1\n");
}

class AudioManagerTest : public vostan::test::AudioFixture {};

TEST_F(AudioManagerTest, WindowSetsThePrimaryFormatAndNoWindowKeepsTheDevice) {
  const snd::WaveFormat f = device->primaryFormat();
  EXPECT_EQ(f.channels, 2);
  EXPECT_EQ(f.rate, 44100u);
  EXPECT_EQ(device->window(), 1u);
  audio->setWindow(0);
  EXPECT_TRUE(audio->directSound);
  audio->setWindow(9);
  EXPECT_EQ(device->window(), 9u);
}

TEST_F(AudioManagerTest, ListenerVelocityIsTheMoveOverTheTimeBetweenCalls) {
  const float at0[9] = {0, 0, 0, 0, 0, 1, 0, 1, 0};
  const float at1[9] = {1, 0, -2, 1, 0, 0, 0, 1, 0};
  audio->setListener(at0);
  vostan::test::render(*device, 4410);  // 100 ms
  audio->setListener(at1);
  EXPECT_NEAR(audio->listenerParameters.velocity.x, 0.1f, 1e-6);
  EXPECT_NEAR(audio->listenerParameters.velocity.z, -0.2f, 1e-6);
  // Two calls in the same millisecond: no time, no velocity.
  audio->setListener(at0);
  EXPECT_EQ(audio->listenerParameters.velocity.x, 0.0f);
  float back[9];
  audio->getListener(back);
  EXPECT_TRUE(std::equal(back, back + 9, at0));
}

}  // namespace
