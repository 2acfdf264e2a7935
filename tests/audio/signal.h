#pragma once
// Measurements of rendered stereo: loudness per channel and pitch.
#include <cmath>
#include <cstdint>
#include <vector>

#include "platform/sound/loopback_device.h"

namespace vostan::test {

struct Stereo {
  std::vector<float> left, right;
};

inline Stereo render(platform::sound::LoopbackDevice& device, uint32_t frames) {
  std::vector<float> buf(2 * size_t(frames));
  device.render(buf.data(), frames);
  Stereo s;
  s.left.resize(frames);
  s.right.resize(frames);
  for (uint32_t i = 0; i < frames; ++i) {
    s.left[i] = buf[2 * i];
    s.right[i] = buf[2 * i + 1];
  }
  return s;
}

// Root mean square from `skip` on, past the ramp at the start of a voice.
inline double rms(const std::vector<float>& v, size_t skip = 1024) {
  double sum = 0;
  size_t n = 0;
  for (size_t i = skip; i < v.size(); ++i, ++n) sum += double(v[i]) * v[i];
  return n ? std::sqrt(sum / n) : 0.0;
}

inline double peak(const std::vector<float>& v, size_t skip = 1024) {
  double p = 0;
  for (size_t i = skip; i < v.size(); ++i) p = std::max(p, std::fabs(double(v[i])));
  return p;
}

// Frequency from the rising zero crossings, at the output rate.
inline double frequency(const std::vector<float>& v, size_t skip = 1024) {
  long first = -1, last = -1, count = 0;
  for (size_t i = skip + 1; i < v.size(); ++i) {
    if (v[i - 1] < 0 && v[i] >= 0) {
      if (first < 0) first = long(i);
      last = long(i);
      ++count;
    }
  }
  if (count < 2) return 0;
  return double(count - 1) * platform::sound::LoopbackDevice::kRate / double(last - first);
}

// 16-bit PCM sine, `channels` interleaved copies, little-endian.
inline std::vector<uint8_t> sine16(double hz, uint32_t rate, uint32_t frames, int channels = 1,
                                   double amplitude = 0.5) {
  std::vector<uint8_t> out(size_t(frames) * 2 * channels);
  for (uint32_t i = 0; i < frames; ++i) {
    const auto s = int16_t(std::lround(std::sin(2 * M_PI * hz * i / rate) * amplitude * 32767.0));
    for (int c = 0; c < channels; ++c) {
      const size_t at = (size_t(i) * channels + c) * 2;
      out[at] = uint8_t(s & 0xFF);
      out[at + 1] = uint8_t((s >> 8) & 0xFF);
    }
  }
  return out;
}

}  // namespace vostan::test
