// The OpenAL device, heard through the loopback device.
#define AL_ALEXT_PROTOTYPES
#include <AL/alc.h>
#include <AL/alext.h>
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
    write(*b, 0, data);
    return b;
  }
  static void write(snd::Buffer& b, uint32_t at, const std::vector<uint8_t>& data) {
    void *p1, *p2;
    uint32_t n1, n2;
    b.lock(at, uint32_t(data.size()), &p1, &n1, &p2, &n2);
    std::memcpy(p1, data.data(), n1);
    b.unlock(p1, n1, p2, n2);
  }
  // What comes out once a change has had time to settle.
  vostan::test::Stereo settled(uint32_t frames = 8192) {
    render(*device, 1024);
    return render(*device, frames);
  }

  std::unique_ptr<snd::LoopbackDevice> device;
};

constexpr uint32_t kPanned = snd::kCtrlVolume | snd::kCtrlPan | snd::kCtrlFrequency;
constexpr uint32_t k3D = snd::kCtrlVolume | snd::kCtrlFrequency | snd::kCtrl3D | snd::kStatic;

TEST_F(SoundDeviceTest, FrequencyVolumeAndPanAreHeard) {
  auto b = buffer(sine16(441, 22050, 22050), kPanned, 1, 22050);
  ASSERT_EQ(b->play(true), snd::err::kOk);
  EXPECT_NEAR(frequency(render(*device, 8192).left), 441, 3);
  ASSERT_EQ(b->setFrequency(44100), snd::err::kOk);
  EXPECT_NEAR(frequency(settled().left), 882, 5);
  ASSERT_EQ(b->setFrequency(11025), snd::err::kOk);
  EXPECT_NEAR(frequency(settled().right), 220.5, 2);
  uint32_t hz = 0;
  b->setFrequency(snd::kFrequencyOriginal);
  b->getFrequency(&hz);
  EXPECT_EQ(hz, 22050u);
  EXPECT_EQ(b->setFrequency(50), snd::err::kInvalidParam);

  // Volume in hundredths of a decibel, against the full amplitude.
  const double full = rms(settled().left);
  ASSERT_GT(full, 0.3);  // a sine of amplitude 0.5
  for (auto [volume, ratio] : {std::pair{-600, 0.5012}, {-2000, 0.1}, {-4000, 0.01}}) {
    ASSERT_EQ(b->setVolume(volume), snd::err::kOk);
    EXPECT_NEAR(rms(settled().left) / full, ratio, ratio * 0.02) << volume;
  }
  b->setVolume(snd::kVolumeMin);
  EXPECT_LT(peak(settled(4096).left), 1e-6);
  EXPECT_EQ(b->setVolume(100), snd::err::kInvalidParam);  // above 0 dB; the volume stays
  int32_t v = 0;
  b->getVolume(&v);
  EXPECT_EQ(v, snd::kVolumeMin);

  // Pan takes the far side down.
  b->setVolume(0);
  b->setPan(-602);
  auto s = settled();
  EXPECT_NEAR(rms(s.right) / rms(s.left), 0.5, 0.01);
  b->setPan(snd::kPanRight);
  s = settled();
  EXPECT_GT(rms(s.right), 0.15);
  EXPECT_LT(rms(s.left), 1e-6);
  // A 3D voice has no pan, and a panned voice has no 3D.
  auto three = buffer(sine16(441, 44100, 4410), k3D);
  EXPECT_EQ(three->setPan(0), snd::err::kControlUnavail);
  EXPECT_EQ(b->setPosition({1, 0, 0}, snd::Apply::Immediate), snd::err::kControlUnavail);
}

TEST_F(SoundDeviceTest, StereoDataKeepsItsChannelsAndDuplicatesShareData) {
  auto mono = sine16(441, 44100, 44100);
  std::vector<uint8_t> stereo(mono.size() * 2, 0);  // left at 441 Hz, right silent
  for (size_t i = 0; i < mono.size() / 2; ++i) std::memcpy(&stereo[i * 4], &mono[i * 2], 2);
  auto original = buffer(stereo, kPanned, 2);
  original->setVolume(-600);
  std::unique_ptr<snd::Buffer> dup;
  ASSERT_EQ(device->duplicateBuffer(*original, &dup), snd::err::kOk);
  int32_t v = 0;
  dup->getVolume(&v);
  EXPECT_EQ(v, -600);
  dup->setVolume(0);
  dup->play(false);
  auto s = render(*device, 8192);
  EXPECT_GT(rms(s.left), 0.3);
  EXPECT_LT(rms(s.right), 1e-6);
  uint32_t status = 0;
  original->getStatus(&status);
  EXPECT_EQ(status, 0u);  // the duplicate plays on its own

  // New data in the original is heard on the duplicate too.
  write(*original, 0, std::vector<uint8_t>(stereo.size(), 0));
  dup->setCurrentPosition(0);
  dup->play(false);
  EXPECT_LT(peak(render(*device, 4096).left, 0), 1e-6);
}

TEST_F(SoundDeviceTest, StopKeepsThePlaceAndALostBufferNeedsRestoreAndNewData) {
  auto b = buffer(sine16(441, 44100, 4410), kPanned);  // 100 ms
  b->play(false);
  render(*device, 1000);
  b->stop();
  uint32_t pos = 0, status = 1;
  b->getCurrentPosition(&pos, nullptr);
  EXPECT_NEAR(double(pos) / 2, 1000, 300);
  b->play(false);
  render(*device, 4410);
  b->getStatus(&status);
  EXPECT_EQ(status, 0u);  // finished
  b->play(true);
  render(*device, 10000);
  b->getStatus(&status);
  EXPECT_EQ(status, snd::kStatusPlaying | snd::kStatusLooping);

  device->loseBuffers();
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

TEST_F(SoundDeviceTest, ThreeDVoiceFollowsDistanceSideAndTheListener) {
  snd::BufferDesc pd;
  pd.flags = snd::kPrimaryBuffer | snd::kCtrl3D;
  std::unique_ptr<snd::Buffer> primary;
  snd::Listener* listener = nullptr;
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

  // Twice the minimum distance halves the amplitude, once committed.
  b->setPosition({0, 0, 2}, snd::Apply::Deferred);
  s = settled();
  EXPECT_NEAR(rms(s.left) + rms(s.right), near, 0.02 * near);
  listener->commitDeferredSettings();
  s = settled();
  EXPECT_NEAR((rms(s.left) + rms(s.right)) / near, 0.5, 0.03);

  b->setPosition({1, 0, 0}, snd::Apply::Immediate);
  s = settled();
  EXPECT_GT(rms(s.right), 2 * rms(s.left));
  // Turning the listener round puts it on the left.
  snd::ListenerParams p;
  listener->getAllParameters(&p);
  p.front = {0, 0, -1};
  listener->setAllParameters(p, snd::Apply::Immediate);
  s = settled();
  EXPECT_GT(rms(s.left), 2 * rms(s.right));

  // Beyond the maximum distance only a voice asking for it is muted.
  b->stop();
  auto quiet = buffer(sine16(441, 44100, 44100), k3D | snd::kMute3DAtMaxDistance);
  for (auto* v : {quiet.get(), b.get()}) {
    v->setMaxDistance(10, snd::Apply::Immediate);
    v->setPosition({0, 0, 20}, snd::Apply::Immediate);
  }
  quiet->play(true);
  EXPECT_LT(peak(render(*device, 4096).left), 1e-6);
  quiet->stop();
  b->play(true);
  EXPECT_GT(rms(render(*device, 8192).left), 0.01);
}

TEST_F(SoundDeviceTest, StreamCallsBackAtEachQuarterAndPlaysWhatWasWritten) {
  snd::BufferDesc desc;
  desc.flags = snd::kCtrlPositionNotify | snd::kCtrlVolume | snd::kGetCurrentPosition2;
  desc.bytes = 65536;
  std::unique_ptr<snd::Buffer> ring;
  ASSERT_EQ(device->createBuffer(desc, &ring), snd::err::kOk);
  std::vector<int> fired;
  const uint32_t offsets[4] = {0, 16384, 32768, 49152};
  ASSERT_EQ(ring->setNotificationPositions(offsets, 4, [&](int i) { fired.push_back(i); }),
            snd::err::kOk);
  const double tones[4] = {441, 882, 1323, 1764};  // a tone of its own in each quarter
  for (int q = 0; q < 4; ++q) write(*ring, uint32_t(q) * 16384, sine16(tones[q], 44100, 4096, 2));
  ASSERT_EQ(ring->play(true), snd::err::kOk);
  EXPECT_EQ(ring->setNotificationPositions(offsets, 4, nullptr), snd::err::kInvalidCall);

  auto s = render(*device, 16384 * 2);
  ASSERT_GE(fired.size(), 7u);
  ASSERT_LE(fired.size(), 8u);
  for (size_t i = 0; i < fired.size(); ++i) EXPECT_EQ(fired[i], int(i + 1) % 4) << i;
  for (int q = 0; q < 4; ++q) {
    std::vector<float> part(s.left.begin() + q * 4096 + 256, s.left.begin() + (q + 1) * 4096 - 256);
    EXPECT_NEAR(frequency(part, 0), tones[q], tones[q] * 0.02) << q;
  }
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
}

// The default device runs in real time, with a sound card or without one.
TEST(DefaultSoundDevice, PlaysAndNotifiesInRealTime) {
  std::atomic<int> fired{0};  // outlives the device's thread
  std::unique_ptr<snd::Device> device;
  ASSERT_EQ(snd::openDefaultDevice(&device), snd::err::kOk);
  snd::BufferDesc clip;
  clip.flags = kPanned;
  clip.bytes = 4410 * 2;  // 100 ms of silence
  clip.format = {1, 44100, 16};
  snd::BufferDesc ring;
  ring.flags = snd::kCtrlPositionNotify | snd::kCtrlVolume;
  ring.bytes = 65536;
  std::unique_ptr<snd::Buffer> b, stream;
  ASSERT_EQ(device->createBuffer(clip, &b), snd::err::kOk);
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

// A thread that called the device holds no OpenAL context afterwards: one
// left bound makes OpenAL complain, or worse, when the thread ends.
TEST_F(SoundDeviceTest, CallsLeaveNoContextOnTheCallingThread) {
  auto b = buffer(sine16(440, 44100, 4410), kPanned);
  b->play(true);
  b->setVolume(-600);
  std::unique_ptr<snd::Buffer> dup;
  device->duplicateBuffer(*b, &dup);
  EXPECT_EQ(alcGetThreadContext(), nullptr);
  std::thread other([&] {
    dup->play(false);
    uint32_t status = 0;
    dup->getStatus(&status);
    EXPECT_EQ(alcGetThreadContext(), nullptr);
  });
  other.join();
  render(*device, 256);
  EXPECT_EQ(alcGetThreadContext(), nullptr);
}

TEST_F(SoundDeviceTest, ClosingSilencesEveryVoiceAndLaterCallsChangeNothing) {
  auto looped = buffer(sine16(440, 44100, 4410), kPanned);
  snd::BufferDesc ring;
  ring.flags = snd::kCtrlPositionNotify | snd::kCtrlVolume;
  ring.bytes = 16384;
  std::unique_ptr<snd::Buffer> stream;
  ASSERT_EQ(device->createBuffer(ring, &stream), snd::err::kOk);
  write(*stream, 0, sine16(220, 44100, 4096));
  ASSERT_EQ(looped->play(true), snd::err::kOk);
  ASSERT_EQ(stream->play(true), snd::err::kOk);
  ASSERT_GT(rms(settled().left), 0.05);

  device->close();
  EXPECT_EQ(rms(render(*device, 4096).left, 0), 0.0);
  // Voices that outlive the device answer without sound and without harm.
  EXPECT_TRUE(snd::failed(looped->play(true)));
  EXPECT_EQ(looped->setVolume(-100), snd::err::kOk);
  uint32_t status = 0;
  looped->getStatus(&status);
  EXPECT_EQ(status & snd::kStatusPlaying, 0u);
  std::unique_ptr<snd::Buffer> late;
  snd::BufferDesc desc;
  desc.flags = kPanned;
  desc.bytes = 64;
  EXPECT_EQ(device->createBuffer(desc, &late), snd::err::kNoDriver);
  EXPECT_EQ(device->duplicateBuffer(*looped, &late), snd::err::kNoDriver);
  EXPECT_EQ(alcGetThreadContext(), nullptr);
  device->close();  // twice is harmless
  looped.reset();
  stream.reset();
}

}  // namespace
