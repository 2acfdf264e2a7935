// The music mixer's thread on the OpenAL loopback device: the song is heard
// as the mixer wrote it, and the thread ends before the device closes.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>

#include "audio/mdj/mdj_context.h"
#include "audio_fixture.h"
#include "signal.h"

namespace vostan {
namespace {

using namespace std::chrono_literals;

class MusicOnDevice : public test::AudioFixture {};

TEST_F(MusicOnDevice, SongIsHeardAsMixedAndTheThreadEndsBeforeTheDeviceCloses) {
  std::unique_ptr<MDJSoundContext> music = MDJSoundContext::start(*audio->directSound);
  ASSERT_TRUE(music);
  bool stopped = false;
  audio->addDeviceUser([&] {
    music->shutdown();
    stopped = true;
  });
  std::vector<int16_t> mixed;
  music->setTap(
      [&](const int16_t* s, int32_t frames) { mixed.insert(mixed.end(), s, s + 2 * frames); });
  music->postSong(MUSIC_TEST_SONG);
  music->postTrick(kTrickPlay);

  // Rendering moves the stream; each wake-up is mixed before the next step.
  // The commands wait for the thread's first wake-up, which comes once the
  // device has fed a quarter, within the first eight steps.
  test::Stereo heard;
  for (int step = 0; step < 80; ++step) {
    test::Stereo s = test::render(*device, 1024);
    heard.left.insert(heard.left.end(), s.left.begin(), s.left.end());
    heard.right.insert(heard.right.end(), s.right.begin(), s.right.end());
    const bool idle = music->waitIdle(step < 8 ? 200ms : 10s);
    ASSERT_TRUE(idle || step < 8) << step;
  }
  // The song's first frame, as mixed and as heard.
  size_t m = 0, h = 0;
  while (m < mixed.size() / 2 && mixed[2 * m + 1] == 0) ++m;
  while (h < heard.right.size() && std::fabs(heard.right[h]) < 1e-6f) ++h;
  ASSERT_LT(m, mixed.size() / 2);
  ASSERT_LT(h + 20000, heard.right.size()) << "the song is heard within a second";
  int off = 0;
  for (size_t i = 0; i < 20000; ++i) {
    off += std::fabs(heard.left[h + i] - mixed[2 * (m + i)] / 32768.0f) > 2.0f / 32768 ||
           std::fabs(heard.right[h + i] - mixed[2 * (m + i) + 1] / 32768.0f) > 2.0f / 32768;
  }
  EXPECT_EQ(off, 0) << "the device plays the mixer's samples unchanged";

  audio.reset();
  EXPECT_TRUE(stopped);
  EXPECT_FALSE(music->running());
}

}  // namespace
}  // namespace vostan
