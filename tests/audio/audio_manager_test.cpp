#include "audio/audio_manager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

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

// The library's own audio threads hook into shutdown; each must find the
// device still playing when it is asked to stop, and none is asked twice.
TEST_F(AudioManagerTest, ShutdownStopsTheDeviceUsersWhileTheyAreHeardThenClosesTheDevice) {
  snd::BufferDesc desc;
  desc.flags = snd::kCtrlVolume | snd::kCtrlPan;
  desc.bytes = 4410 * 2;
  desc.format = {1, 44100, 16};
  std::unique_ptr<snd::Buffer> voice;
  ASSERT_EQ(audio->directSound->createBuffer(desc, &voice), snd::err::kOk);
  const std::vector<uint8_t> tone = vostan::test::sine16(440, 44100, 4410);
  void *p1, *p2;
  uint32_t n1, n2;
  voice->lock(0, desc.bytes, &p1, &n1, &p2, &n2);
  std::copy(tone.begin(), tone.end(), static_cast<uint8_t*>(p1));
  voice->unlock(p1, n1, p2, n2);
  ASSERT_EQ(voice->play(true), snd::err::kOk);

  std::vector<std::string> order;
  auto hear = [&] { return vostan::test::rms(vostan::test::render(*device, 4096).left); };
  audio->addDeviceUser([&] { order.push_back(hear() > 0.05 ? "first, heard" : "first, silent"); });
  audio->addDeviceUser(
      [&] { order.push_back(hear() > 0.05 ? "second, heard" : "second, silent"); });
  audio->shutdown();
  EXPECT_EQ(order, (std::vector<std::string>{"first, heard", "second, heard"}));
  EXPECT_TRUE(audio->isClosed());
  EXPECT_EQ(vostan::test::rms(vostan::test::render(*device, 4096).left, 0), 0.0);
  audio->shutdown();
  EXPECT_EQ(order.size(), 2u);
  // The manager stays usable by what was made on it.
  EXPECT_GE(audio->setListener(std::array<float, 9>{0, 0, 0, 0, 0, 1, 0, 1, 0}.data()), 0);
  voice.reset();
}

// Process exit closes every manager still open, before the sound library's
// own teardown; a manager already shut down is left alone.
TEST(AudioManagerExit, ShutsDownEveryOpenManagerOnce) {
  vostan::test::nextDevice() = snd::openLoopbackDevice();
  auto first = AudioManager::create(vostan::test::openNextDevice);
  vostan::test::nextDevice() = snd::openLoopbackDevice();
  auto second = AudioManager::create(vostan::test::openNextDevice);
  ASSERT_TRUE(first && second);
  int stops = 0;
  first->addDeviceUser([&] { ++stops; });
  second->addDeviceUser([&] { stops += 10; });
  second->shutdown();
  vostan::shutdownAllAudio();
  EXPECT_EQ(stops, 11);
  EXPECT_TRUE(first->isClosed());
}

}  // namespace
