// The OpenAL device, heard through the loopback device.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

#include "platform/sound/loopback_device.h"
#include "signal.h"

namespace snd = vostan::platform::sound;
using vostan::test::frequency;
using vostan::test::peak;
using vostan::test::render;
using vostan::test::rms;
using vostan::test::sine16;

namespace {

class SoundDeviceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    device = snd::openLoopbackDevice();
    ASSERT_TRUE(device);
  }

  // A buffer holding `data`, loaded through lock and unlock as callers do.
  std::unique_ptr<snd::Buffer> buffer(const std::vector<uint8_t>& data, uint32_t flags,
                                      int channels = 1, uint32_t rate = 44100) {
    snd::BufferDesc desc;
    desc.flags = flags;
    desc.bytes = uint32_t(data.size());
    desc.format = {uint16_t(channels), rate, 16};
    std::unique_ptr<snd::Buffer> b;
    EXPECT_EQ(device->createBuffer(desc, &b), snd::err::kOk);
    void *p1, *p2;
    uint32_t n1, n2;
    EXPECT_EQ(b->lock(0, desc.bytes, &p1, &n1, &p2, &n2), snd::err::kOk);
    std::memcpy(p1, data.data(), n1);
    b->unlock(p1, n1, p2, n2);
    return b;
  }

  std::unique_ptr<snd::LoopbackDevice> device;
};

constexpr uint32_t kPanned = snd::kCtrlVolume | snd::kCtrlPan | snd::kCtrlFrequency;
constexpr uint32_t k3D = snd::kCtrlVolume | snd::kCtrlFrequency | snd::kCtrl3D | snd::kStatic;

TEST_F(SoundDeviceTest, FrequencySetsThePitch) {
  auto b = buffer(sine16(441, 22050, 22050), kPanned, 1, 22050);
  ASSERT_EQ(b->play(true), snd::err::kOk);
  EXPECT_NEAR(frequency(render(*device, 8192).left), 441, 3);

  ASSERT_EQ(b->setFrequency(44100), snd::err::kOk);
  render(*device, 512);
  EXPECT_NEAR(frequency(render(*device, 8192).left), 882, 5);

  ASSERT_EQ(b->setFrequency(11025), snd::err::kOk);
  render(*device, 512);
  EXPECT_NEAR(frequency(render(*device, 8192).right), 220.5, 2);

  uint32_t hz = 0;
  b->setFrequency(snd::kFrequencyOriginal);
  b->getFrequency(&hz);
  EXPECT_EQ(hz, 22050u);
  EXPECT_EQ(b->setFrequency(50), snd::err::kInvalidParam);
}

TEST_F(SoundDeviceTest, VolumeIsInHundredthsOfADecibel) {
  auto b = buffer(sine16(441, 44100, 44100), kPanned);
  b->play(true);
  const double full = rms(render(*device, 8192).left);
  ASSERT_GT(full, 0.3);  // a sine of amplitude 0.5

  const struct {
    int32_t volume;
    double ratio;
  } cases[] = {{-600, 0.5012}, {-2000, 0.1}, {-4000, 0.01}};
  for (const auto& c : cases) {
    ASSERT_EQ(b->setVolume(c.volume), snd::err::kOk);
    render(*device, 1024);
    EXPECT_NEAR(rms(render(*device, 8192).left) / full, c.ratio, c.ratio * 0.02) << c.volume;
  }
  b->setVolume(snd::kVolumeMin);
  render(*device, 1024);
  EXPECT_LT(peak(render(*device, 4096).left), 1e-6);
  // Above 0 dB is refused and the volume stays.
  EXPECT_EQ(b->setVolume(100), snd::err::kInvalidParam);
  int32_t v = 0;
  b->getVolume(&v);
  EXPECT_EQ(v, snd::kVolumeMin);
}

TEST_F(SoundDeviceTest, PanAttenuatesTheFarSide) {
  auto b = buffer(sine16(441, 44100, 44100), kPanned);
  b->play(true);
  b->setPan(-602);  // right side 6 dB down
  render(*device, 1024);
  auto s = render(*device, 8192);
  EXPECT_NEAR(rms(s.right) / rms(s.left), 0.5, 0.01);

  b->setPan(snd::kPanRight);
  render(*device, 1024);
  s = render(*device, 8192);
  EXPECT_GT(rms(s.right), 0.3);
  EXPECT_LT(rms(s.left), 1e-6);

  // A 3D voice has no pan, and a panned voice has no 3D.
  auto v = buffer(sine16(441, 44100, 4410), k3D);
  EXPECT_EQ(v->setPan(0), snd::err::kControlUnavail);
  EXPECT_EQ(b->setPosition({1, 0, 0}, snd::Apply::Immediate), snd::err::kControlUnavail);
}

TEST_F(SoundDeviceTest, StereoDataKeepsItsChannels) {
  // Left at 441 Hz, right silent.
  auto mono = sine16(441, 44100, 44100);
  std::vector<uint8_t> stereo(mono.size() * 2, 0);
  for (size_t i = 0; i < mono.size() / 2; ++i) std::memcpy(&stereo[i * 4], &mono[i * 2], 2);
  auto b = buffer(stereo, kPanned, 2);
  b->play(true);
  auto s = render(*device, 8192);
  EXPECT_GT(rms(s.left), 0.3);
  EXPECT_LT(rms(s.right), 1e-6);
}

TEST_F(SoundDeviceTest, DuplicatesShareDataAndPlayOnTheirOwn) {
  auto original = buffer(sine16(441, 44100, 44100), kPanned);
  original->setVolume(-600);
  std::unique_ptr<snd::Buffer> dup;
  ASSERT_EQ(device->duplicateBuffer(*original, &dup), snd::err::kOk);
  int32_t v = 0;
  dup->getVolume(&v);
  EXPECT_EQ(v, -600);

  dup->setVolume(0);
  dup->play(false);
  const double one = rms(render(*device, 8192).left);
  EXPECT_GT(one, 0.3);
  uint32_t status = 0;
  original->getStatus(&status);
  EXPECT_EQ(status, 0u);

  // New data in the original is heard on the duplicate too.
  void *p1, *p2;
  uint32_t n1, n2;
  original->lock(0, 88200, &p1, &n1, &p2, &n2);
  std::memset(p1, 0, n1);
  original->unlock(p1, n1, p2, n2);
  dup->setCurrentPosition(0);
  dup->play(false);
  EXPECT_LT(peak(render(*device, 4096).left, 0), 1e-6);
}

TEST_F(SoundDeviceTest, StopKeepsThePlaceAndAFinishedVoiceStops) {
  auto b = buffer(sine16(441, 44100, 4410), kPanned);  // 100 ms
  b->play(false);
  render(*device, 1000);
  b->stop();
  uint32_t pos = 0, status = 1;
  b->getCurrentPosition(&pos, nullptr);
  EXPECT_NEAR(double(pos) / 2, 1000, 300);
  b->getStatus(&status);
  EXPECT_EQ(status, 0u);
  b->play(false);
  render(*device, 4410);
  b->getStatus(&status);
  EXPECT_EQ(status, 0u);

  b->play(true);
  b->getStatus(&status);
  EXPECT_EQ(status, snd::kStatusPlaying | snd::kStatusLooping);
  render(*device, 10000);
  b->getStatus(&status);
  EXPECT_EQ(status, snd::kStatusPlaying | snd::kStatusLooping);
}

TEST_F(SoundDeviceTest, LostBufferNeedsRestoreAndNewData) {
  auto data = sine16(441, 44100, 44100);
  auto b = buffer(data, kPanned);
  b->play(true);
  device->loseBuffers();
  uint32_t status = 0;
  b->getStatus(&status);
  EXPECT_EQ(status, snd::kStatusBufferLost);
  EXPECT_EQ(b->play(true), snd::err::kBufferLost);

  device->faults().restoreFails = true;
  EXPECT_EQ(b->restore(), snd::err::kBufferLost);
  device->faults().restoreFails = false;
  EXPECT_EQ(b->restore(), snd::err::kOk);
  b->play(true);
  EXPECT_LT(peak(render(*device, 4096).left, 0), 1e-6);  // the data is gone
}

TEST_F(SoundDeviceTest, ThreeDVoiceFollowsDistanceAndSide) {
  snd::Listener* listener = nullptr;
  snd::BufferDesc pd;
  pd.flags = snd::kPrimaryBuffer | snd::kCtrl3D;
  std::unique_ptr<snd::Buffer> primary;
  ASSERT_EQ(device->createBuffer(pd, &primary), snd::err::kOk);
  ASSERT_EQ(device->queryListener(*primary, &listener), snd::err::kOk);

  // Stereo data plays as mono on a 3D voice.
  auto b = buffer(sine16(441, 44100, 44100, 2), k3D, 2);
  b->setMinDistance(1, snd::Apply::Immediate);
  b->setMaxDistance(100, snd::Apply::Immediate);
  b->setPosition({0, 0, 1}, snd::Apply::Immediate);  // in front, at the minimum distance
  b->play(true);
  auto s = render(*device, 8192);
  const double near = rms(s.left) + rms(s.right);
  EXPECT_NEAR(rms(s.left), rms(s.right), 0.01 * near);

  // Twice the minimum distance halves the amplitude; deferred until commit.
  b->setPosition({0, 0, 2}, snd::Apply::Deferred);
  render(*device, 1024);
  s = render(*device, 8192);
  EXPECT_NEAR(rms(s.left) + rms(s.right), near, 0.02 * near);
  listener->commitDeferredSettings();
  render(*device, 1024);
  s = render(*device, 8192);
  EXPECT_NEAR((rms(s.left) + rms(s.right)) / near, 0.5, 0.03);

  // To the right: the right channel carries most of it.
  b->setPosition({1, 0, 0}, snd::Apply::Immediate);
  render(*device, 1024);
  s = render(*device, 8192);
  EXPECT_GT(rms(s.right), 2 * rms(s.left));

  // Turning the listener round puts it on the left.
  snd::ListenerParams p;
  listener->getAllParameters(&p);
  p.front = {0, 0, -1};
  listener->setAllParameters(p, snd::Apply::Immediate);
  render(*device, 1024);
  s = render(*device, 8192);
  EXPECT_GT(rms(s.left), 2 * rms(s.right));
}

TEST_F(SoundDeviceTest, MutedBeyondMaxDistance) {
  auto quiet = buffer(sine16(441, 44100, 44100), k3D | snd::kMute3DAtMaxDistance);
  auto held = buffer(sine16(441, 44100, 44100), k3D);
  for (auto* b : {quiet.get(), held.get()}) {
    b->setMaxDistance(10, snd::Apply::Immediate);
    b->setPosition({0, 0, 20}, snd::Apply::Immediate);
  }
  quiet->play(true);
  EXPECT_LT(peak(render(*device, 4096).left), 1e-6);
  quiet->stop();
  held->play(true);
  EXPECT_GT(rms(render(*device, 8192).left), 0.01);
}

TEST_F(SoundDeviceTest, StreamCallsBackAtEachQuarterAndPlaysWhatWasWritten) {
  snd::BufferDesc desc;
  desc.flags = snd::kCtrlPositionNotify | snd::kCtrlVolume | snd::kCtrlPan | snd::kCtrlFrequency |
               snd::kGetCurrentPosition2 | snd::kGlobalFocus;
  desc.bytes = 65536;
  std::unique_ptr<snd::Buffer> ring;
  ASSERT_EQ(device->createBuffer(desc, &ring), snd::err::kOk);
  std::vector<int> fired;
  const uint32_t offsets[4] = {0, 16384, 32768, 49152};
  ASSERT_EQ(ring->setNotificationPositions(offsets, 4, [&](int i) { fired.push_back(i); }),
            snd::err::kOk);
  // Each quarter filled as the cursor leaves it, with a tone of its own.
  const double tones[4] = {441, 882, 1323, 1764};
  auto fill = [&](int quarter) {
    auto data = sine16(tones[quarter], 44100, 4096, 2);
    void *p1, *p2;
    uint32_t n1, n2;
    ring->lock(uint32_t(quarter) * 16384, 16384, &p1, &n1, &p2, &n2);
    std::memcpy(p1, data.data(), n1);
    ring->unlock(p1, n1, p2, n2);
  };
  for (int q = 0; q < 4; ++q) fill(q);
  ASSERT_EQ(ring->play(true), snd::err::kOk);
  EXPECT_EQ(ring->setNotificationPositions(offsets, 4, nullptr), snd::err::kInvalidCall);

  auto s = render(*device, 16384 * 2);
  ASSERT_GE(fired.size(), 7u);
  ASSERT_LE(fired.size(), 8u);
  for (size_t i = 0; i < fired.size(); ++i) EXPECT_EQ(fired[i], int(i + 1) % 4) << i;
  uint32_t play = 0;
  ring->getCurrentPosition(&play, nullptr);
  EXPECT_LT(play, 65536u);

  // The quarters come out in order, each with its tone.
  for (int q = 0; q < 4; ++q) {
    std::vector<float> part(s.left.begin() + q * 4096 + 256, s.left.begin() + (q + 1) * 4096 - 256);
    EXPECT_NEAR(frequency(part, 0), tones[q], tones[q] * 0.02) << q;
  }
  ring->stop();
  uint32_t status = 1;
  ring->getStatus(&status);
  EXPECT_EQ(status, 0u);
}

TEST_F(SoundDeviceTest, PrimaryFormatNeedsPriority) {
  snd::BufferDesc pd;
  pd.flags = snd::kPrimaryBuffer | snd::kCtrlVolume;
  std::unique_ptr<snd::Buffer> primary;
  ASSERT_EQ(device->createBuffer(pd, &primary), snd::err::kOk);
  snd::Listener* listener = nullptr;
  EXPECT_EQ(device->queryListener(*primary, &listener), snd::err::kNoInterface);
  const snd::WaveFormat format{2, 44100, 16};
  EXPECT_EQ(primary->setFormat(format), snd::err::kPrioLevelNeeded);
  EXPECT_EQ(device->setCooperativeLevel(0, snd::kPriorityLevel), snd::err::kInvalidParam);
  ASSERT_EQ(device->setCooperativeLevel(7, snd::kPriorityLevel), snd::err::kOk);
  EXPECT_EQ(primary->setFormat(format), snd::err::kOk);
  EXPECT_EQ(device->primaryFormat().bits, 16);
  EXPECT_EQ(device->window(), 7u);
}

}  // namespace

namespace {

// The default device runs in real time, with a sound card or without one.
TEST(DefaultSoundDevice, PlaysAndNotifiesInRealTime) {
  std::atomic<int> fired{0};  // outlives the device's thread
  std::unique_ptr<snd::Device> device;
  ASSERT_EQ(snd::openDefaultDevice(&device), snd::err::kOk);
  snd::BufferDesc clip;
  clip.flags = kPanned;
  clip.bytes = 4410 * 2;  // 100 ms of silence
  clip.format = {1, 44100, 16};
  std::unique_ptr<snd::Buffer> b;
  ASSERT_EQ(device->createBuffer(clip, &b), snd::err::kOk);

  snd::BufferDesc ring;
  ring.flags = snd::kCtrlPositionNotify | snd::kCtrlVolume;
  ring.bytes = 65536;
  std::unique_ptr<snd::Buffer> stream;
  ASSERT_EQ(device->createBuffer(ring, &stream), snd::err::kOk);
  const uint32_t offsets[4] = {0, 16384, 32768, 49152};
  stream->setNotificationPositions(offsets, 4, [&](int) { ++fired; });

  const uint32_t t0 = device->timeMillis();
  ASSERT_EQ(b->play(false), snd::err::kOk);
  ASSERT_EQ(stream->play(true), snd::err::kOk);
  uint32_t status = 0;
  b->getStatus(&status);
  EXPECT_EQ(status, snd::kStatusPlaying);
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  b->getStatus(&status);
  EXPECT_EQ(status, 0u);
  EXPECT_GE(device->timeMillis() - t0, 500u);
  // A quarter is 93 ms: about five in half a second.
  EXPECT_GE(fired.load(), 3);
  EXPECT_LE(fired.load(), 7);
  stream->stop();
}

}  // namespace
