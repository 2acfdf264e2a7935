// The mixer thread over a scripted stream buffer: the test moves the play
// cursor a quarter at a time and reads back what the thread wrote.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <thread>
#include <vector>

#include "audio/mdj/mdj_context.h"
#include "platform/sound/scripted_stream.h"
#include "songs.h"

namespace vostan {
namespace {

namespace snd = platform::sound;
using namespace std::chrono_literals;

constexpr uint32_t kQuarter = MDJSoundContext::kQuarterBytes;

struct Player {
  snd::ScriptedStreamDevice device;
  std::unique_ptr<MDJSoundContext> context;
  snd::ScriptedStream* stream = nullptr;
  std::vector<int16_t> out;  // interleaved, in the order the stream plays it
  uint32_t cursor = 0;

  Player() {
    context = MDJSoundContext::start(device);
    stream = device.lastStream;
    if (!context) return;
    EXPECT_TRUE(stream->isPlaying());
    // The first wake-up finds the buffer's silence; nothing is mixed for it.
    stream->advance(kQuarter);
    cursor = kQuarter;
    idle();
  }
  void idle() { ASSERT_TRUE(context->waitIdle(10s)); }
  // Plays quarters: each wake-up has the thread mix the quarter just left.
  void play(int quarters) {
    for (int q = 0; q < quarters; ++q) {
      stream->advance(kQuarter);
      idle();
      std::vector<uint8_t> bytes = stream->read(cursor, kQuarter);
      const auto* s = reinterpret_cast<const int16_t*>(bytes.data());
      out.insert(out.end(), s, s + kQuarter / 2);
      cursor = (cursor + kQuarter) % MDJSoundContext::kStreamBytes;
    }
  }
  void playUntil(size_t frames) {
    while (out.size() / 2 < frames) play(1);
  }
  size_t frames() const { return out.size() / 2; }
  void post(const char* song) {
    context->postSong(test::songPath(song).c_str());
    idle();
  }
  void trick(int32_t code) {
    context->postTrick(code);
    idle();
  }
};

int16_t expected(float v, float gain) {
  return toStreamSample(v * gain);
}

TEST(MDJContext, ConvertsSamplesTheWayTheStreamIsRequiredToSound) {
  EXPECT_EQ(toStreamSample(1.0f), 30000);
  EXPECT_EQ(toStreamSample(-1.0f), -30000);
  EXPECT_EQ(toStreamSample(1.0001f), 1);  // an overshoot collapses, it doesn't clip
  EXPECT_EQ(toStreamSample(-1.5f), -1);
  EXPECT_EQ(toStreamSample(0.00005f), 1);
  EXPECT_EQ(toStreamSample(-0.00003f), 0);  // truncated toward zero
}

// The change must begin on the first control step at or after the allowed
// beat, to the frame: beat 4 lies on a step's first frame for one song and
// one frame behind it for the other.
TEST(MDJContext, BeatSyncChangeLandsOnTheStepOfTheBeatToTheFrame) {
  test::Decoded incoming = test::decodeStraight(test::songPath("beat_incoming.ogg"));
  struct {
    const char* song;
    size_t change;
  } cases[] = {{"beat_at_step.ogg", 376 + 4 * 22050},
               {"beat_after_step.ogg", 376 + 4 * 22050 + 512}};
  for (auto c : cases) {
    SCOPED_TRACE(c.song);
    test::Decoded playing = test::decodeStraight(test::songPath(c.song));
    Player p;
    ASSERT_TRUE(p.context);
    p.post(c.song);
    p.trick(kTrickPlay);
    const size_t start = p.frames();  // the song starts with the next quarter
    p.play(2);
    p.post("beat_incoming.ogg");
    p.trick(kTrickBeatSync);
    p.playUntil(start + c.change + 4096);

    auto at = [&](size_t frame, int channel) { return p.out[2 * (start + frame) + channel]; };
    size_t firstDifference = 0;
    while (firstDifference < c.change + 4096 &&
           at(firstDifference, 0) == expected(playing.left[firstDifference], 0.6f) &&
           at(firstDifference, 1) == expected(playing.right[firstDifference], 0.6f)) {
      ++firstDifference;
    }
    EXPECT_EQ(firstDifference, c.change);
    // From there both play at full gain for one step; the new song enters at
    // its first section's frame.
    int off = 0;
    for (size_t k = 0; k < 512; ++k) {
      const float l = playing.left[c.change + k] * 0.6f + incoming.left[1000 + k] * 0.6f;
      const float r = playing.right[c.change + k] * 0.6f + incoming.right[1000 + k] * 0.6f;
      off += std::abs(at(c.change + k, 0) - toStreamSample(l)) > 3 ||
             std::abs(at(c.change + k, 1) - toStreamSample(r)) > 3;
    }
    EXPECT_EQ(off, 0);

    // Sixteen beats later the new song is alone on the first track.
    p.playUntil(start + c.change + 16 * 22050 + 8192);
    bool done = false;
    p.context->inspect([&](MDJMixer& m, MDJControllerQueue& q) {
      done = q.empty() && !m.getTrack(1)->isPlaying() && m.getCrossfade() == 0.0f &&
             m.getTrack(0)->getInfo()->sections[0].startFrame == 1000;
    });
    EXPECT_TRUE(done);
    const size_t late = c.change + 16 * 22050 + 4096;
    const size_t inSong = (1000 + 16 * 22050 + 4096) % incoming.left.size();  // it looped
    EXPECT_NEAR(at(late, 0), expected(incoming.left[inSong], 0.6f), 3);
    EXPECT_NEAR(at(late + 1, 1), expected(incoming.right[inSong + 1], 0.6f), 3);
  }
}

TEST(MDJContext, JavaStreamIsMixedInUntilItRunsDryAndAgainWhenRefilled) {
  Player p;
  ASSERT_TRUE(p.context);
  p.play(1);
  EXPECT_EQ(p.out[100], 0) << "no song: silence";

  std::vector<float> block(2 * 3000);
  for (size_t i = 0; i < block.size(); i += 2) {
    block[i] = 0.5f;
    block[i + 1] = -0.25f;
  }
  ASSERT_TRUE(p.context->writeStream(block.data(), 6000));
  EXPECT_EQ(p.context->streamSize(), 6000);
  // Odd counts and more than the ring holds are refused whole.
  EXPECT_FALSE(p.context->writeStream(block.data(), 5999));
  EXPECT_FALSE(p.context->writeStream(block.data(), MDJSoundContext::kRingFloats + 2));
  EXPECT_EQ(p.context->streamSize(), 6000);

  const size_t from = p.frames();
  p.play(2);
  EXPECT_EQ(p.out[2 * from], 15000);
  EXPECT_EQ(p.out[2 * (from + 2999) + 1], -7500);
  EXPECT_EQ(p.out[2 * (from + 3000)], 0) << "ran dry: back to the mix alone";
  EXPECT_EQ(p.context->streamSize(), 0);

  // Refilled: heard again from the next quarter; a write of exactly the free
  // tail of the ring wraps the write index to its start.
  const int32_t tail = MDJSoundContext::kRingFloats - 6000;
  std::vector<float> big(tail, 0.1f);
  ASSERT_TRUE(p.context->writeStream(big.data(), tail));
  EXPECT_EQ(p.context->streamSize(), tail);
  const size_t again = p.frames();
  p.play(1);
  EXPECT_EQ(p.out[2 * again], 3000);
  EXPECT_EQ(p.context->streamSize(), tail - 2 * 4096);
}

TEST(MDJContext, ShutdownWhilePlayingLeavesNoThreadAndNoCallback) {
  Player p;
  ASSERT_TRUE(p.context);
  p.post("beat_at_step.ogg");
  p.trick(kTrickPlay);
  p.post("beat_incoming.ogg");
  p.trick(kTrickBeatSync);  // waits for its beat
  p.play(2);
  EXPECT_NE(p.out[2 * 5000 + 1], 0);

  p.context->shutdown();
  EXPECT_FALSE(p.context->running());
  // The stream buffer is given back stopped and without its callback.
  snd::StreamJournal& journal = *p.device.journal;
  EXPECT_EQ(journal.made, 1);
  EXPECT_EQ(journal.released, 1);
  EXPECT_FALSE(journal.playingAtRelease);
  EXPECT_FALSE(journal.notificationAtRelease);
  // Commands after the end are refused; a second shutdown is a no-op.
  EXPECT_FALSE(p.context->postTrick(kTrickStop));
  p.context->shutdown();
  EXPECT_FALSE(p.context->waitIdle(10ms));
}

// The device's thread, the Java thread and the mixer thread all at once:
// meant for the thread sanitizer.
TEST(MDJContext, CommandsStreamAndWakeUpsFromOtherThreadsAtOnce) {
  Player p;
  ASSERT_TRUE(p.context);
  std::atomic<bool> done{false};
  std::thread device([&] {
    while (!done) {
      p.stream->advance(MDJSoundContext::kQuarterBytes / 2);
      std::this_thread::sleep_for(100us);
    }
  });
  std::atomic<int> tapped{0};
  p.context->setTap([&](const int16_t*, int32_t frames) { tapped += frames; });
  std::vector<float> block(2 * 500, 0.01f);
  const char* songs[] = {"beat_at_step.ogg", "beat_incoming.ogg", "plain.ogg"};
  const int32_t tricks[] = {kTrickPlay, kTrickBeatSync, kTrickFadeShort, 12, kTrickStop};
  for (int i = 0; i < 60; ++i) {
    p.context->postSong(test::songPath(songs[i % 3]).c_str());
    p.context->postTrick(tricks[i % 5]);
    p.context->writeStream(block.data(), static_cast<int32_t>(block.size()));
    const int32_t queued = p.context->streamSize();
    EXPECT_TRUE(queued >= 0 && queued < MDJSoundContext::kRingFloats) << queued;
    p.context->setVolume(0.3f + 0.001f * i);
    std::this_thread::sleep_for(1ms);
  }
  EXPECT_GT(tapped.load(), 0);
  p.context->inspect(
      [](MDJMixer&, MDJControllerQueue& q) { EXPECT_LE(q.size(), MDJControllerQueue::kCapacity); });
  done = true;
  device.join();
  p.context->shutdown();
  EXPECT_FALSE(p.context->running());
}

TEST(MDJContext, StartFailsCleanlyWithoutAStreamOrItsNotifications) {
  snd::ScriptedStreamDevice device;
  device.createFault = snd::err::kOutOfMemory;
  EXPECT_FALSE(MDJSoundContext::start(device));
  device.createFault = snd::err::kOk;
  device.notifyFault = snd::err::kControlUnavail;
  EXPECT_FALSE(MDJSoundContext::start(device));
}

// Damaged files are reported and change nothing: the previous song plays on.
TEST(MDJContext, DamagedAndTruncatedSongsAreReportedAndNeverPlayed) {
  const std::string good = test::songPath("beat_at_step.ogg");
  std::ifstream in(good, std::ios::binary);
  std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  ASSERT_GT(bytes.size(), 8000u);
  const std::string dir = testing::TempDir();
  auto write = [&](const char* name, size_t length, bool scramble) {
    std::string path = dir + "/" + name;
    std::vector<char> b(bytes.begin(), bytes.begin() + std::min(length, bytes.size()));
    if (scramble) {
      for (size_t i = 200; i < b.size(); i += 7) b[i] = static_cast<char>(b[i] * 31 + 17);
    }
    std::ofstream(path, std::ios::binary).write(b.data(), static_cast<std::streamsize>(b.size()));
    return path;
  };
  const std::string refused[] = {dir + "/no_such_song.ogg", write("headers_cut.ogg", 300, false),
                                 write("scrambled.ogg", bytes.size(), true),
                                 test::songPath("mono.ogg"), test::songPath("short_tag.ogg")};
  const std::string cutShort = write("cut_short.ogg", bytes.size() * 2 / 3, false);

  Player p;
  ASSERT_TRUE(p.context);
  auto audible = [&] {
    int n = 0;
    for (size_t i = p.frames() - 4096; i < p.frames(); ++i) n += p.out[2 * i + 1] != 0;
    return n;
  };
  p.post("beat_at_step.ogg");
  p.trick(kTrickPlay);
  for (const std::string& path : refused) {
    p.context->postSong(path.c_str());
    p.trick(kTrickPlay);  // no song pending: nothing to play, nothing stops
    p.play(1);
    EXPECT_GT(audible(), 2000) << path << ": the song before it plays on";
  }
  p.trick(kTrickStop);
  p.play(1);
  EXPECT_EQ(audible(), 0);
  // A file cut short plays what it holds, looping, and never reads past it.
  p.context->postSong(cutShort.c_str());
  p.trick(kTrickPlay);
  p.play(60);
  EXPECT_GT(audible(), 2000);
}

}  // namespace
}  // namespace vostan
