#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "audio/vorbis/memory_source.h"
#include "ogg_maker.h"

using vostan::audio::applyGain;
using vostan::audio::MemorySource;
using vostan::test::makeToneOgg;
using vostan::test::ToneOgg;

namespace {

std::vector<int16_t> decode(MemorySource& src, int first, int end, float gain, int16_t fill = 0) {
  std::vector<int16_t> pcm(static_cast<size_t>(end - first) * src.channels(), fill);
  src.decode(first, end, gain, pcm.data());
  return pcm;
}

// Signal to error ratio in dB of one channel against the tone it was made from.
double snr(const std::vector<int16_t>& pcm, int channel, const ToneOgg& tone) {
  double signal = 0, error = 0;
  for (size_t i = 0; i < pcm.size() / tone.channels; ++i) {
    const double want =
        vostan::test::toneSample(channel, static_cast<int64_t>(i), tone.rate, tone.amplitude) *
        32768.0;
    const double got = pcm[i * tone.channels + channel];
    signal += want * want;
    error += (got - want) * (got - want);
  }
  return 10.0 * std::log10(signal / std::max(error, 1e-9));
}

}  // namespace

TEST(Vorbis, DecodesTheSignalAndAnyRangeEqualsTheSameSpanOfAWholeDecode) {
  for (const ToneOgg& tone : {ToneOgg{}, ToneOgg{1, 22050, 20000, 0.5f, 0.4f}}) {
    const auto bytes = makeToneOgg(tone);
    MemorySource src(bytes.data(), static_cast<uint32_t>(bytes.size()));
    ASSERT_TRUE(src.open());
    const int ch = tone.channels, frames = static_cast<int>(tone.frames);
    ASSERT_EQ(src.channels(), ch);
    EXPECT_EQ(src.rate(), tone.rate);
    EXPECT_EQ(src.totalFrames(), tone.frames);
    const auto whole = decode(src, 0, frames, 1.0f);
    // A swapped channel, a wrong scale or a shift of a few frames falls far below 30 dB.
    for (int c = 0; c < ch; ++c) EXPECT_GT(snr(whole, c, tone), 30.0) << ch << " channel " << c;

    // Forwards, backwards, back to back, across block boundaries, up to the last frame.
    const int ranges[][2] = {{15000, 15001}, {10007, 14103}, {14103, 14200},
                             {0, 4096},      {4095, 4097},   {frames - 333, frames}};
    for (const auto& r : ranges)
      EXPECT_EQ(decode(src, r[0], r[1], 1.0f),
                std::vector<int16_t>(whole.begin() + ch * r[0], whole.begin() + ch * r[1]))
          << ch << " channels, " << r[0] << " to " << r[1];

    // Empty and reversed ranges write nothing; past the end, the buffer keeps
    // what it held, scaled like the rest. The buffer is exactly as long as the
    // range, so the sanitizer sees any write beyond it.
    std::vector<int16_t> guard(64, 1234);
    src.decode(500, 500, 2.0f, guard.data());
    src.decode(600, 500, 2.0f, guard.data());
    EXPECT_EQ(guard, std::vector<int16_t>(64, 1234));
    const auto tail = decode(src, frames - 100, frames + 100, 2.0f, 1000);
    for (int i = 0; i < 200 * ch; ++i)
      ASSERT_EQ(tail[i],
                i < 100 * ch ? std::clamp(whole[ch * (frames - 100) + i] * 2, -32768, 32767) : 2000)
          << i;
  }
}

TEST(Vorbis, GainStepsBy1Over256AndClamps) {
  ToneOgg tone;
  tone.amplitude = 0.9f;  // twice the gain clips
  tone.frames = 8000;
  const auto bytes = makeToneOgg(tone);
  MemorySource src(bytes.data(), static_cast<uint32_t>(bytes.size()));
  ASSERT_TRUE(src.open());
  const auto ref = decode(src, 0, 8000, 1.0f);
  int clipped = 0;
  // 0.999 and 0.0059 are cut to whole steps; negative gains invert.
  for (float gain : {2.0f, 0.999f, 0.0059f, -1.0f}) {
    const int g = static_cast<int>(gain * 256.0);
    const auto got = decode(src, 0, 8000, gain);
    for (size_t i = 0; i < ref.size(); ++i) {
      const int want = std::clamp(ref[i] * g / 256, -32768, 32767);
      ASSERT_EQ(got[i], want) << "gain " << gain << " sample " << i;
      clipped += want == 32767 || want == -32768;
    }
  }
  EXPECT_GT(clipped, 100);
  // Gains beyond any sample's reach saturate; NaN silences.
  std::vector<int16_t> s{1, -1, 0, 30000};
  applyGain(reinterpret_cast<unsigned char*>(s.data()), 4, 1e30f);
  EXPECT_EQ(s, (std::vector<int16_t>{32767, -32768, 0, 32767}));
  applyGain(reinterpret_cast<unsigned char*>(s.data()), 4, std::nanf(""));
  EXPECT_EQ(s, (std::vector<int16_t>{0, 0, 0, 0}));
}

TEST(Vorbis, DamagedFilesFailOrStopCleanly) {
  ToneOgg tone;
  tone.frames = 3 * 44100;  // several audio pages behind the headers
  const auto good = makeToneOgg(tone);
  MemorySource whole(good.data(), static_cast<uint32_t>(good.size()));
  ASSERT_TRUE(whole.open());
  const auto ref = decode(whole, 0, static_cast<int>(tone.frames), 1.0f);

  std::mt19937 rng(7);
  std::vector<unsigned char> noise(5000), wrongCodec(good);
  for (auto& b : noise) b = static_cast<unsigned char>(rng());
  std::memcpy(wrongCodec.data() + 29, "vorbiZ", 6);  // the id header's magic
  for (const auto& bytes : {std::vector<unsigned char>{}, noise, wrongCodec,
                            std::vector<unsigned char>(good.begin(), good.begin() + 58)}) {
    MemorySource src(bytes.data(), static_cast<uint32_t>(bytes.size()));
    EXPECT_FALSE(src.open()) << bytes.size() << " bytes";
  }

  // A file cut short claims only its whole pages, and those decode as before;
  // asking for the original length runs out early and stays in the buffer.
  int cutsWithAudio = 0;
  for (size_t cut : {good.size() / 3, good.size() * 2 / 3, good.size() - 1}) {
    MemorySource src(good.data(), static_cast<uint32_t>(cut));
    if (!src.open()) continue;
    const auto frames = static_cast<int>(src.totalFrames());
    ASSERT_LT(frames, tone.frames);
    if (frames <= 0) continue;
    ++cutsWithAudio;
    const auto pcm = decode(src, 0, frames, 1.0f);
    EXPECT_TRUE(std::equal(pcm.begin(), pcm.end(), ref.begin())) << "cut at " << cut;
    decode(src, frames / 2, static_cast<int>(tone.frames), 1.5f);
  }
  EXPECT_GE(cutsWithAudio, 2);

  // Bits flipped in the audio pages: whatever comes out stays in the buffer.
  for (int k = 0; k < 8; ++k) {
    std::vector<unsigned char> bytes(good);
    for (int j = 0; j < 40; ++j)
      bytes[bytes.size() / 2 + rng() % (bytes.size() / 2)] ^= 1u << (rng() % 8);
    MemorySource src(bytes.data(), static_cast<uint32_t>(bytes.size()));
    if (!src.open()) continue;
    const int frames = static_cast<int>(std::clamp<int64_t>(src.totalFrames(), 0, tone.frames));
    decode(src, frames / 3, frames, 0.5f);
  }
}

TEST(Vorbis, CallbacksNeverReadOutsideTheCopy) {
  const unsigned char bytes[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
  MemorySource src(bytes, 10);
  unsigned char buf[16] = {};
  // Only whole elements count; the position still moves by the bytes read.
  MemorySource::seek(&src, 3, SEEK_SET);
  EXPECT_EQ(MemorySource::read(buf, 4, 4, &src), 1u);
  EXPECT_EQ(buf[0], 3);
  EXPECT_EQ(MemorySource::tell(&src), 10);
  MemorySource::seek(&src, -6, SEEK_END);
  MemorySource::seek(&src, -2, SEEK_CUR);
  EXPECT_EQ(MemorySource::read(buf, 1, 3, &src), 3u);
  EXPECT_EQ(buf[0], 2);
  // Only the low 32 bits of an offset count.
  MemorySource::seek(&src, (int64_t{1} << 32) + 2, SEEK_SET);
  EXPECT_EQ(MemorySource::tell(&src), 2);
  // Beyond either end, nothing is left to read.
  for (int64_t at : {int64_t{100}, int64_t{-20}}) {
    MemorySource::seek(&src, at, at < 0 ? SEEK_SET : SEEK_END);
    EXPECT_EQ(MemorySource::read(buf, 1, 16, &src), 0u) << at;
  }
}
