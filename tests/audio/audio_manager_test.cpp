#include "audio/audio_manager.h"

#include <gtest/gtest.h>

#include "audio_fixture.h"
#include "signal.h"

namespace snd = vostan::platform::sound;
using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;
using vostan::AudioManager;
using vostan::test::nextDevice;
using vostan::test::openNextDevice;
using vostan::test::render;

namespace {

snd::Result noDevice(std::unique_ptr<snd::Device>*) {
  return snd::err::kNoDriver;
}

TEST(AudioManagerStart, ReportsEachFailedStep) {
  CaptureStdout();
  CaptureStderr();
  EXPECT_FALSE(AudioManager::create(noDevice));
  EXPECT_EQ(GetCapturedStderr(), "m_pDS->DirectSoundCreate8 failed : ");
  EXPECT_EQ(GetCapturedStdout(), "DSERR_NODRIVER\n");

  nextDevice() = snd::openLoopbackDevice();
  nextDevice()->faults().createBuffer = snd::err::kOutOfMemory;
  CaptureStdout();
  EXPECT_FALSE(AudioManager::create(openNextDevice));
  EXPECT_EQ(GetCapturedStdout(), "CreateSoundBuffer(pDSBPrimary) failed....\nDSERR_OUTOFMEMORY\n");
}

TEST(AudioManagerStart, DescribesResults) {
  CaptureStdout();
  vostan::describeResult(0);
  vostan::describeResult(int32_t(0x88780032));
  vostan::describeResult(int32_t(0x0878000A));
  vostan::describeResult(12345);
  vostan::describeResult(-1);
  EXPECT_EQ(GetCapturedStdout(),
            "SUCCEEDED\nDSERR_INVALIDCALL \nDS_NO_VIRTUALIZATION\nunknown 12345\nunknown -1\n");
}

class AudioManagerTest : public vostan::test::AudioFixture {};

TEST_F(AudioManagerTest, WindowSetsThePrimaryFormatAndNoWindowKeepsTheDevice) {
  EXPECT_EQ(audio->windowHandle, 1u);
  const snd::WaveFormat f = device->primaryFormat();
  EXPECT_EQ(f.channels, 2);
  EXPECT_EQ(f.rate, 44100u);
  EXPECT_EQ(f.bits, 16);
  EXPECT_EQ(device->window(), 1u);

  audio->setWindow(0);
  EXPECT_EQ(audio->windowHandle, 0u);
  EXPECT_TRUE(audio->directSound);
  audio->setWindow(9);
  EXPECT_EQ(device->window(), 9u);
}

TEST_F(AudioManagerTest, ListenerVelocityGrowsWithTheTimeBetweenCalls) {
  const float at0[9] = {0, 0, 0, 0, 0, 1, 0, 1, 0};
  const float at1[9] = {1, 0, -2, 1, 0, 0, 0, 1, 0};
  // The first call leaves the velocity as the device gave it.
  audio->setListener(at0);
  EXPECT_EQ(audio->listenerParameters.velocity.x, 0.0f);
  render(*device, 4410);  // 100 ms
  audio->setListener(at1);
  EXPECT_NEAR(audio->listenerParameters.velocity.x, 0.1f, 1e-6);
  EXPECT_NEAR(audio->listenerParameters.velocity.z, -0.2f, 1e-6);
  // Two calls in the same millisecond: no time, no velocity.
  audio->setListener(at0);
  EXPECT_EQ(audio->listenerParameters.velocity.x, 0.0f);

  float back[9];
  audio->getListener(back);
  for (int i = 0; i < 9; ++i) EXPECT_EQ(back[i], at0[i]) << i;
}

}  // namespace
