// The sample path without the thread: resampling, the mix of two tracks, and
// the controllers run from their queue.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "audio/mdj/mdj_controller.h"
#include "audio/mdj/mdj_mixer.h"
#include "songs.h"

namespace vostan {
namespace {

struct Rendered {
  std::vector<float> left, right;
};

Rendered renderTrack(MDJTrack& track, float gain, int32_t frames, int32_t chunk) {
  Rendered r;
  r.left.resize(frames);
  r.right.resize(frames);
  for (int32_t done = 0; done < frames; done += chunk) {
    float* out[2] = {r.left.data() + done, r.right.data() + done};
    track.render(gain, out, std::min(chunk, frames - done));
  }
  return r;
}

// Frequency from the upward zero crossings between the first and the last;
// with hysteresis, since the resampler's read position wobbles by up to a
// frame around where it should be.
double measureHz(const std::vector<float>& x) {
  long first = -1, last = -1;
  int crossings = 0;
  bool armed = false;
  for (size_t i = 0; i < x.size(); ++i) {
    if (x[i] < -0.05f) armed = true;
    if (armed && x[i] > 0.05f) {
      armed = false;
      if (first < 0) first = static_cast<long>(i);
      last = static_cast<long>(i);
      ++crossings;
    }
  }
  return crossings < 2 ? 0 : (crossings - 1) * 44100.0 / static_cast<double>(last - first);
}

// plain.ogg: 440 Hz on the left, 660 Hz on the right.
TEST(MDJTrack, PitchScalesTheMeasuredFrequencyAndFollowsTheSongAcrossRefills) {
  test::Decoded ref = test::decodeStraight(test::songPath("plain.ogg"));
  for (float pitch : {1.5f, 0.8f}) {
    test::SongRef song("plain.ogg");
    MDJTrack track;
    track.setSong(song.song);
    ASSERT_TRUE(track.prefill());
    track.setPitch(pitch);
    ASSERT_EQ(track.getRatio(), pitch);
    // 40960 frames in control steps: at 1.5 the window is refilled twice.
    const int32_t frames = 40960;
    Rendered r = renderTrack(track, 1.0f, frames, 512);
    EXPECT_NEAR(measureHz(r.left), 440.0 * pitch, 440.0 * pitch * 0.002) << pitch;
    EXPECT_NEAR(measureHz(r.right), 660.0 * pitch, 660.0 * pitch * 0.002) << pitch;
    // Every frame lies within the song's values around its place in the song,
    // give or take the filter's ripple: a lost history at a refill, a skipped
    // or repeated stretch, or a drifting position all leave that range.
    int outside = 0;
    for (int32_t i = 16; i < frames; ++i) {
      const double t = i * static_cast<double>(pitch);
      float lo = 1, hi = -1;
      for (auto k = static_cast<long>(t) - 2; k <= static_cast<long>(t) + 2; ++k) {
        lo = std::min(lo, ref.left[k]);
        hi = std::max(hi, ref.left[k]);
      }
      outside += r.left[i] < lo - 0.01f || r.left[i] > hi + 0.01f;
    }
    EXPECT_EQ(outside, 0) << pitch;
  }

  // Pitches the resampler can't take leave the track as it is.
  test::SongRef song("plain.ogg");
  MDJTrack track;
  track.setSong(song.song);
  track.setPitch(1.25f);
  for (float bad : {NAN, 0.0f, -1.0f, 100.0f, INFINITY}) {
    track.setPitch(bad);
    EXPECT_EQ(track.getPitch(), 1.25f) << bad;
    EXPECT_EQ(track.getRatio(), 1.25f) << bad;
  }
}

TEST(MDJTrack, CopyPathPlaysTheStreamExactlyAcrossRefillsAndLoops) {
  // whole_loop.ogg turns back to its start after 100000 frames.
  test::Decoded ref = test::decodeStraight(test::songPath("whole_loop.ogg"));
  ASSERT_EQ(ref.left.size(), 100000u);
  test::SongRef song("whole_loop.ogg");
  MDJTrack track;
  track.setSong(song.song);
  ASSERT_TRUE(track.prefill());
  Rendered r = renderTrack(track, 0.5f, 120000, 4096);
  int mismatches = 0;
  for (int32_t i = 0; i < 120000; ++i) {
    const size_t at = static_cast<size_t>(i % 100000);
    mismatches += r.left[i] != ref.left[at] * 0.5f || r.right[i] != ref.right[at] * 0.5f;
  }
  EXPECT_LT(mismatches, 64) << "only the frames right after the raw seek back may differ";
  EXPECT_EQ(song->getLoopCount(), 1);
}

TEST(MDJMixer, AddsBothTracksUnderTheirGainsTheBalanceAndTheVolume) {
  test::Decoded a = test::decodeStraight(test::songPath("plain.ogg"));
  test::Decoded b = test::decodeStraight(test::songPath("beat_incoming.ogg"));
  test::SongRef songA("plain.ogg"), songB("beat_incoming.ogg");
  MDJMixer mixer;
  std::vector<float> left(2048, 7.0f), right(2048, 7.0f);
  float* out[2] = {left.data(), right.data()};
  mixer.render(out, 2048);
  EXPECT_EQ(left[100], 0.0f) << "no track plays: silence overwrites";

  mixer.getTrack(0)->setSong(songA.song);
  mixer.getTrack(0)->prefill();
  mixer.getTrack(1)->setSong(songB.song);
  mixer.getTrack(1)->prefill();
  mixer.getTrack(1)->setGain(0.5f);
  mixer.setVolume(0.5f);
  mixer.setCrossfade(0.75f);  // first track at 0.5, second at full
  EXPECT_EQ(mixer.getGainOfTrack(0), 0.5f);
  mixer.render(out, 2048);
  for (int i : {0, 1, 777, 2047}) {
    EXPECT_FLOAT_EQ(left[i], a.left[i] * 0.25f + b.left[i] * 0.25f) << i;
    EXPECT_FLOAT_EQ(right[i], a.right[i] * 0.25f + b.right[i] * 0.25f) << i;
  }

  // The balance law: full gain across the middle half, linear outside.
  struct {
    float balance, first, second;
  } law[] = {{-2.0f, 1.0f, 0.0f}, {-0.75f, 1.0f, 0.5f}, {-0.5f, 1.0f, 1.0f},
             {0.5f, 1.0f, 1.0f},  {0.9f, 0.2f, 1.0f},   {1.0f, 0.0f, 1.0f}};
  for (auto l : law) {
    mixer.setCrossfade(l.balance);
    EXPECT_NEAR(mixer.getGainOfTrack(0), l.first, 1e-6f) << l.balance;
    EXPECT_NEAR(mixer.getGainOfTrack(1), l.second, 1e-6f) << l.balance;
  }
}

// Runs a song in by trick 0 through the queue, as a command does.
void playNow(MDJMixer& mixer, MDJControllerQueue& queue, MDJSong* song) {
  queue.push(createController(mixer, kTrickPlay, song));
  queue.run(mixer, 0);
}

TEST(MDJControllers, FadeIsAStraightLineOverItsDurationAndHandsTheFirstTrackOver) {
  test::SongRef a("plain.ogg"), b("beat_incoming.ogg");
  MDJMixer mixer;
  MDJControllerQueue queue;
  playNow(mixer, queue, a.song);
  MDJTrack* first = mixer.getTrack(0);
  MDJTrack* second = mixer.getTrack(1);
  first->setGain(0.8f);

  ASSERT_TRUE(queue.push(std::make_unique<MDJFadeinController>(b.song, 2048)));
  EXPECT_EQ(queue.run(mixer, 0), 1);
  EXPECT_EQ(second->getSong(), b.song);
  EXPECT_TRUE(second->isPlaying());
  EXPECT_EQ(second->getGain(), 0.0f);
  EXPECT_EQ(first->getGain(), 0.8f);
  const float steps[][2] = {{0.25f, 0.6f}, {0.5f, 0.4f}, {0.75f, 0.2f}};
  for (auto& s : steps) {
    EXPECT_EQ(queue.run(mixer, 512), 1);
    EXPECT_FLOAT_EQ(second->getGain(), s[0]);
    EXPECT_FLOAT_EQ(first->getGain(), s[1]);
  }
  // The last step overshoots: the fade ends exactly at full gain.
  EXPECT_EQ(queue.run(mixer, 1000), 0);
  EXPECT_EQ(mixer.getTrack(0), second);
  EXPECT_EQ(second->getGain(), 1.0f);
  EXPECT_FALSE(first->isPlaying());

  // Nothing playing: the song fades in on the first track, nothing goes out.
  MDJMixer quiet;
  ASSERT_TRUE(queue.push(createController(quiet, kTrickFadeShort, a.song)));
  queue.run(quiet, 0);
  EXPECT_EQ(quiet.getTrack(0)->getSong(), a.song);
  queue.run(quiet, kShortFadeFrames / 2);
  EXPECT_FLOAT_EQ(quiet.getTrack(0)->getGain(), 0.5f);
  EXPECT_FALSE(quiet.getTrack(1)->isPlaying());
}

TEST(MDJControllers, QueueRunsOneAtATimeAndRefusesWhatHasNoController) {
  test::SongRef a("plain.ogg"), b("beat_incoming.ogg");
  MDJMixer mixer;
  // Codes without a controller, and song changes without a song.
  for (int32_t trick : {2, 5, 10, 14, -1, 1000})
    EXPECT_FALSE(createController(mixer, trick, a.song));
  for (int32_t trick : {0, 3, 4, 11, 12, 13}) EXPECT_FALSE(createController(mixer, trick, nullptr));
  EXPECT_TRUE(createController(mixer, kTrickStop, nullptr));

  MDJControllerQueue queue;
  playNow(mixer, queue, a.song);
  // A stop behind a fade waits for the fade to end.
  queue.push(createController(mixer, kTrickFadeShort, b.song));
  queue.push(createController(mixer, kTrickStop, nullptr));
  EXPECT_EQ(queue.run(mixer, 0), 2);
  EXPECT_EQ(queue.run(mixer, kShortFadeFrames - 1), 2);
  EXPECT_TRUE(mixer.getTrack(0)->isPlaying());
  EXPECT_EQ(queue.run(mixer, 1), 0);
  EXPECT_FALSE(mixer.getTrack(0)->isPlaying());
  EXPECT_FALSE(mixer.getTrack(1)->isPlaying());

  for (int i = 0; i < MDJControllerQueue::kCapacity; ++i)
    EXPECT_TRUE(queue.push(createController(mixer, kTrickStop, nullptr)));
  EXPECT_FALSE(queue.push(createController(mixer, kTrickStop, nullptr)));
  queue.clear();

  // A beat-locked change with nothing playing starts the song at once, from
  // its very beginning rather than its first section.
  test::SongRef fresh("beat_incoming.ogg");
  queue.push(createController(mixer, 12, fresh.song));
  EXPECT_EQ(queue.run(mixer, 0), 0);
  EXPECT_EQ(mixer.getTrack(0)->getSong(), fresh.song);
  EXPECT_EQ(mixer.getTrack(0)->streamFrame(0), 0);

  // A song without a tempo map on either side changes by the long fade.
  test::SongRef untagged("plain.ogg");
  queue.push(createController(mixer, 13, untagged.song));
  EXPECT_EQ(queue.run(mixer, 0), 1);
  queue.run(mixer, kLongFadeFrames / 4);
  EXPECT_FLOAT_EQ(mixer.getTrack(1)->getGain(), 0.25f);
  EXPECT_EQ(queue.run(mixer, kLongFadeFrames), 0);
  EXPECT_EQ(mixer.getTrack(0)->getSong(), untagged.song);
}

}  // namespace
}  // namespace vostan
