#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "audio/vorbis/memory_source.h"
#include "ogg_maker.h"

using vostan::audio::applyGain;
using vostan::audio::MemorySource;
using vostan::test::makeToneOgg;
using vostan::test::OggSpec;
using vostan::test::toneSample;

namespace {

std::vector<int16_t> decode(MemorySource& src, int first, int end, float gain, int16_t fill = 0) {
  std::vector<int16_t> pcm(static_cast<size_t>(end - first) * src.channels(), fill);
  src.decode(first, end, gain, pcm.data());
  return pcm;
}

// Signal to error ratio in dB of one channel of a decoded range against the tone.
double snr(const std::vector<int16_t>& pcm, int channels, int channel, int first,
           const OggSpec& spec) {
  double signal = 0, error = 0;
  const size_t frames = pcm.size() / channels;
  for (size_t i = 0; i < frames; ++i) {
    const double want =
        toneSample(channel, first + static_cast<int64_t>(i), spec.rate, spec.amplitude) * 32768.0;
    const double got = pcm[i * channels + channel];
    signal += want * want;
    error += (got - want) * (got - want);
  }
  return 10.0 * std::log10(signal / std::max(error, 1e-9));
}

struct Stream {
  OggSpec spec;
  std::vector<unsigned char> bytes;
};

const Stream& stereo() {
  static const Stream s{OggSpec{}, makeToneOgg(OggSpec{})};
  return s;
}

const Stream& mono() {
  static const OggSpec spec{1, 22050, 20000, 0.5f, 0.4f};
  static const Stream s{spec, makeToneOgg(spec)};
  return s;
}

class Formats : public ::testing::TestWithParam<const Stream* (*)()> {};

}  // namespace

TEST_P(Formats, OpensWithTheStreamsShapeAndDecodesTheSignal) {
  const Stream& s = *GetParam()();
  MemorySource src(s.bytes.data(), static_cast<uint32_t>(s.bytes.size()));
  ASSERT_TRUE(src.open());
  EXPECT_EQ(src.channels(), s.spec.channels);
  EXPECT_EQ(src.rate(), s.spec.rate);
  EXPECT_EQ(src.totalFrames(), s.spec.frames);
  EXPECT_EQ(src.pcmStride(), 2 * s.spec.channels);

  const auto pcm = decode(src, 0, static_cast<int>(s.spec.frames), 1.0f);
  for (int c = 0; c < s.spec.channels; ++c) {
    // A lossy codec at this quality keeps a pure tone far above 30 dB; a
    // swapped channel, a wrong scale or an offset of a few frames falls well below.
    EXPECT_GT(snr(pcm, s.spec.channels, c, 0, s.spec), 30.0) << "channel " << c;
  }
}

INSTANTIATE_TEST_SUITE_P(Vorbis, Formats,
                         ::testing::Values(
                             +[] { return &stereo(); }, +[] { return &mono(); }),
                         [](const auto& info) {
                           return std::string(info.index == 0 ? "Stereo44100" : "Mono22050");
                         });

TEST(VorbisSong, RangesMatchTheSameSpanOfAWholeDecode) {
  const Stream& s = stereo();
  MemorySource src(s.bytes.data(), static_cast<uint32_t>(s.bytes.size()));
  ASSERT_TRUE(src.open());
  const int frames = static_cast<int>(s.spec.frames);
  const auto whole = decode(src, 0, frames, 1.0f);
  // Forwards, backwards, one behind the other, across block boundaries, up to the last frame.
  const int ranges[][2] = {{30000, 30001}, {10007, 14103},         {14103, 14200}, {14200, 18000},
                           {0, 4096},      {frames - 333, frames}, {4095, 4097},   {20000, 29000}};
  for (const auto& r : ranges) {
    const auto part = decode(src, r[0], r[1], 1.0f);
    const std::vector<int16_t> want(whole.begin() + 2 * r[0], whole.begin() + 2 * r[1]);
    EXPECT_EQ(part, want) << "range " << r[0] << " to " << r[1];
  }
}

TEST(VorbisSong, GainIsAppliedInStepsOf1Over256AndClamps) {
  OggSpec spec;
  spec.amplitude = 0.9f;  // loud enough that twice the gain clips
  spec.frames = 8000;
  const auto bytes = makeToneOgg(spec);
  MemorySource src(bytes.data(), static_cast<uint32_t>(bytes.size()));
  ASSERT_TRUE(src.open());
  const auto ref = decode(src, 0, 8000, 1.0f);
  int clipped = 0;
  // 0.999 and 1/256 + a bit are cut to whole steps; negative gains invert.
  for (float gain : {2.0f, 0.5f, 0.999f, 0.0059f, -1.0f, 0.0f}) {
    const int g = static_cast<int>(gain * 256.0);
    const auto got = decode(src, 0, 8000, gain);
    ASSERT_EQ(got.size(), ref.size());
    for (size_t i = 0; i < ref.size(); ++i) {
      const int want = std::clamp(ref[i] * g / 256, -32768, 32767);
      ASSERT_EQ(got[i], want) << "gain " << gain << " sample " << i << " of " << ref[i];
      clipped += gain == 2.0f && (want == 32767 || want == -32768);
    }
  }
  EXPECT_GT(clipped, 100);

  // Gains beyond any sample's reach saturate; NaN silences.
  std::vector<int16_t> samples{1, -1, 0, 30000};
  applyGain(reinterpret_cast<unsigned char*>(samples.data()), 4, 1e30f);
  EXPECT_EQ(samples, (std::vector<int16_t>{32767, -32768, 0, 32767}));
  applyGain(reinterpret_cast<unsigned char*>(samples.data()), 4, std::nanf(""));
  EXPECT_EQ(samples, (std::vector<int16_t>{0, 0, 0, 0}));
}

TEST(VorbisSong, EmptyAndShortRangesTouchOnlyTheirOwnBytes) {
  const Stream& s = stereo();
  MemorySource src(s.bytes.data(), static_cast<uint32_t>(s.bytes.size()));
  ASSERT_TRUE(src.open());
  const int frames = static_cast<int>(s.spec.frames);
  const auto whole = decode(src, 0, frames, 1.0f);

  // An empty or reversed range decodes and scales nothing.
  std::vector<int16_t> guard(64, 1234);
  src.decode(500, 500, 2.0f, guard.data());
  src.decode(600, 500, 2.0f, guard.data());
  EXPECT_EQ(guard, std::vector<int16_t>(64, 1234));

  // Past the end: the stream's last frames, then what the buffer held, scaled
  // all the same. The buffer is exactly as long as the range, so the sanitizer
  // sees any write beyond it.
  const int first = frames - 100, end = frames + 100;
  const auto pcm = decode(src, first, end, 2.0f, 1000);
  for (int i = 0; i < 200; ++i) {
    const int want = std::clamp(whole[2 * first + i] * 2, -32768, 32767);
    ASSERT_EQ(pcm[i], want) << i;
  }
  for (size_t i = 200; i < pcm.size(); ++i) ASSERT_EQ(pcm[i], 2000) << i;
}

TEST(VorbisSong, DamagedFilesFailOrStopCleanly) {
  OggSpec spec;
  spec.frames = 3 * 44100;  // several audio pages behind the headers
  const auto good = makeToneOgg(spec);
  MemorySource whole(good.data(), static_cast<uint32_t>(good.size()));
  ASSERT_TRUE(whole.open());
  const auto ref = decode(whole, 0, static_cast<int>(spec.frames), 1.0f);

  std::mt19937 rng(7);
  std::vector<std::vector<unsigned char>> refused;
  refused.push_back({});
  std::vector<unsigned char> noise(5000);
  for (auto& b : noise) b = static_cast<unsigned char>(rng());
  refused.push_back(noise);
  refused.emplace_back(good.begin(), good.begin() + 58);  // half of the first page
  std::vector<unsigned char> wrongCodec(good);
  std::memcpy(wrongCodec.data() + 29, "vorbiZ", 6);  // the id header's magic
  refused.push_back(wrongCodec);
  for (const auto& bytes : refused) {
    MemorySource src(bytes.data(), static_cast<uint32_t>(bytes.size()));
    EXPECT_FALSE(src.open()) << bytes.size() << " bytes";
  }

  // A file cut short claims only its whole pages, and those decode as before.
  int cutsWithAudio = 0;
  for (size_t cut : {good.size() / 3, good.size() * 2 / 3, good.size() - 1}) {
    MemorySource src(good.data(), static_cast<uint32_t>(cut));
    if (!src.open()) continue;
    const auto frames = static_cast<int>(src.totalFrames());
    ASSERT_LT(frames, spec.frames);
    if (frames <= 0) continue;
    ++cutsWithAudio;
    const auto pcm = decode(src, 0, frames, 1.0f);
    EXPECT_TRUE(std::equal(pcm.begin(), pcm.end(), ref.begin())) << "cut at " << cut;
    // Asking for the whole original length runs out early and stays in the buffer.
    decode(src, frames / 2, static_cast<int>(spec.frames), 1.5f);
  }
  EXPECT_GE(cutsWithAudio, 2);

  // Bits flipped in the audio pages: whatever comes out, it stays in the buffer.
  for (int k = 0; k < 8; ++k) {
    std::vector<unsigned char> bytes(good);
    const size_t from = bytes.size() / 2;
    for (int j = 0; j < 40; ++j) bytes[from + rng() % (bytes.size() - from)] ^= 1u << (rng() % 8);
    MemorySource src(bytes.data(), static_cast<uint32_t>(bytes.size()));
    if (!src.open()) continue;
    const int frames = static_cast<int>(std::clamp<int64_t>(src.totalFrames(), 0, spec.frames));
    decode(src, 0, frames, 1.0f);
    decode(src, frames / 3, frames, 0.5f);
  }
}

TEST(VorbisSong, CallbacksNeverReadOutsideTheCopy) {
  const unsigned char bytes[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
  MemorySource src(bytes, 10);
  unsigned char buf[16] = {};

  EXPECT_EQ(MemorySource::read(buf, 1, 16, &src), 10u);
  EXPECT_EQ(MemorySource::tell(&src), 10);
  EXPECT_EQ(MemorySource::read(buf, 1, 16, &src), 0u);

  // Elements of 4 bytes: only whole ones count, the position still moves by the bytes read.
  MemorySource::seek(&src, 3, SEEK_SET);
  EXPECT_EQ(MemorySource::read(buf, 4, 4, &src), 1u);
  EXPECT_EQ(buf[0], 3);
  EXPECT_EQ(MemorySource::tell(&src), 10);

  MemorySource::seek(&src, -4, SEEK_END);
  EXPECT_EQ(MemorySource::tell(&src), 6);
  MemorySource::seek(&src, -2, SEEK_CUR);
  EXPECT_EQ(MemorySource::read(buf, 1, 3, &src), 3u);
  EXPECT_EQ(buf[0], 4);
  // Only the low 32 bits of an offset count; an unknown origin changes nothing.
  MemorySource::seek(&src, (int64_t{1} << 32) + 2, SEEK_SET);
  EXPECT_EQ(MemorySource::tell(&src), 2);
  MemorySource::seek(&src, 5, 7);
  EXPECT_EQ(MemorySource::tell(&src), 2);

  // Beyond the end, nothing is left to read, however far.
  MemorySource::seek(&src, 100, SEEK_END);
  EXPECT_EQ(MemorySource::read(buf, 1, 16, &src), 0u);
  MemorySource::seek(&src, -20, SEEK_SET);
  EXPECT_EQ(MemorySource::read(buf, 1, 16, &src), 0u);
  EXPECT_EQ(MemorySource::read(buf, 0, 16, &src), 0u);

  EXPECT_EQ(MemorySource::close(&src), 0);
  EXPECT_EQ(MemorySource::tell(&src), 0);
}
