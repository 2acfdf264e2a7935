#include "audio/mdj/mdj_track.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vostan {

int32_t beatsBetween(int32_t frame, int32_t startFrame, float tempo, double rate) {
  auto diff =
      static_cast<int32_t>(static_cast<uint32_t>(frame) - static_cast<uint32_t>(startFrame));
  double beats = static_cast<double>(diff) / (60.0 / tempo * rate) * 65536.0;
  if (!(beats > -2147483649.0 && beats < 2147483648.0)) return INT32_MIN;
  return static_cast<int32_t>(beats);
}

MDJTrack::MDJTrack() {
  for (int c = 0; c < 2; ++c) {
    storage[c] = std::make_unique<float[]>(kHistoryFrames + kWindowFrames + kTailFrames);
    window[c] = storage[c].get() + kHistoryFrames;
    std::fill_n(window[c] + kWindowFrames, kTailFrames, 0.0f);
  }
}

MDJTrack::~MDJTrack() {
  if (song) song->release();
}

void MDJTrack::setSong(MDJSong* next) {
  // The new reference first, so that setting the same song again is safe.
  if (next) next->addRef();
  if (song) song->release();
  song = next;
  playing = false;
}

bool MDJTrack::prefill() {
  if (!song) return false;
  readIndex = 0;
  endMark = -1;
  fraction = 0;
  for (int c = 0; c < 2; ++c) std::fill_n(storage[c].get(), kHistoryFrames, 0.0f);
  fillWindow(0);
  playing = true;
  return true;
}

int32_t MDJTrack::streamFrame(int32_t offset) const {
  uint32_t frame = static_cast<uint32_t>(song->getPosition()) +
                   static_cast<uint32_t>(readIndex - kWindowFrames) + static_cast<uint32_t>(offset);
  return static_cast<int32_t>(frame);
}

float MDJTrack::currentTempo() const {
  const MDJInfo* info = getInfo();
  if (!info) return 0.0f;
  // The decoder's position, a window ahead of what is heard.
  const MDJSection* section = info->findSection(song->getPosition());
  if (!section) return 0.0f;
  return static_cast<float>(static_cast<double>(section->tempo) * pitch);
}

int32_t MDJTrack::beatPosition(int32_t offset) const {
  const MDJInfo* info = getInfo();
  if (!info) return 0;
  int32_t frame = streamFrame(offset);
  const MDJSection* section = info->findSection(frame);
  if (!section) return 0;
  return beatsBetween(frame, section->startFrame, section->tempo, kBeatRate);
}

const MDJSection* MDJTrack::sectionAt(int32_t offset) const {
  const MDJInfo* info = getInfo();
  return info ? info->findSection(streamFrame(offset)) : nullptr;
}

namespace {

// The Kaiser window's shape parameter for a stop band of 40 dB.
constexpr float kStopBandDb = 40.0f;
constexpr float kPi = 3.1415927410125732f;

float kaiserBeta(float attenuation) {
  if (attenuation >= 50.0f) return 0.1102f * (attenuation - 8.7f);
  if (attenuation >= 21.0f) {
    return 0.5842f * std::pow(attenuation - 21.0f, 0.4f) + 0.07886f * (attenuation - 21.0f);
  }
  return 0.0f;
}

float powBySquaring(float x, int k) {
  float result = 1.0f;
  while (k > 0) {
    if (k & 1) result *= x;
    x *= x;
    k >>= 1;
  }
  return result;
}

}  // namespace

float besselI0(float x) {
  float sum = 1.0f;
  float factorial = 1.0f;
  for (int k = 1; k <= 20; ++k) {
    factorial *= static_cast<float>(k);
    float term = powBySquaring(x / 2.0f, k) / factorial;
    sum += term * term;
  }
  return sum;
}

float kaiserWindow(float n, float beta, float halfLength) {
  float r = n / halfLength;
  return besselI0(beta * std::sqrt(1.0f - r * r)) / besselI0(beta);
}

void MDJTrack::setPitch(float value) {
  if (value == pitch || !song) return;
  if (!(value >= kMinPitch && value <= kMaxPitch)) return;  // also NaN
  const float org = song->getSampleRate();
  const auto newRatio = static_cast<float>(static_cast<double>(value) * 44100.0 / org);
  if (!(newRatio >= kMinPitch && newRatio <= kMaxPitch)) return;
  fraction = 0;
  pitch = value;
  ratio = newRatio;
  const float rate = org * value;
  nyquist = rate * 0.5f;
  const float low = rate <= org ? rate : org;
  passBand = low * 0.35f;
  cutoff = low * 0.5f;
  printf("pitch %f, org %f, pass %f, cutoff %f\n", value, org, passBand, cutoff);
  const float wp = passBand / nyquist * kPi;
  const float ws = cutoff / nyquist * kPi;
  const float wc = (wp + ws) / 2.0f;
  const float beta = kaiserBeta(kStopBandDb);
  for (int32_t n = -kCentreTap; n <= kCentreTap; ++n) {
    float h = n == 0 ? wc / kPi : static_cast<float>(std::sin(n * wc) / (n * kPi));
    taps[n + kCentreTap] =
        h * kaiserWindow(static_cast<float>(n), beta, static_cast<float>(kCentreTap));
  }
  taps[kTaps] = 0.0f;
  for (int32_t i = 0; i < kTaps; ++i) tapSlopes[i] = taps[i + 1] - taps[i];
}

int32_t MDJTrack::safeFrames() const {
  if (ratio == 1.0f) return kWindowFrames - readIndex;
  // The last frame reads up to two positions past the accumulated ratio and
  // the filter nine beyond that.
  double room = kWindowFrames - kCentreTap - 2 - readIndex - fraction;
  return room <= ratio ? 0 : static_cast<int32_t>(room / ratio);
}

int32_t MDJTrack::render(float gain, float* const* out, int32_t frames) {
  if (!playing || !song) {
    for (int c = 0; c < 2; ++c) std::fill_n(out[c], frames, 0.0f);
    return frames;
  }
  int32_t done = 0;
  while (done < frames) {
    // A call longer than the window holds is cut where the window must be
    // refilled; the mixer's own calls are short enough to need no cut.
    int32_t n = std::min(frames - done, safeFrames());
    if (n <= 0) {
      if (readIndex == 0) break;  // cannot happen within the accepted ratios
      refill();
      continue;
    }
    float* part[2] = {out[0] + done, out[1] + done};
    renderPart(gain, part, n);
    done += n;
    if (readIndex >= kRefillIndex) refill();
  }
  if (done < frames) {
    for (int c = 0; c < 2; ++c) std::fill(out[c] + done, out[c] + frames, 0.0f);
  }
  return frames;
}

int32_t MDJTrack::renderPart(float gain, float* const* out, int32_t frames) {
  const float* left = window[0];
  const float* right = window[1];
  if (ratio == 1.0f) {
    for (int32_t i = 0; i < frames; ++i) {
      out[0][i] = left[readIndex + i] * gain;
      out[1][i] = right[readIndex + i] * gain;
    }
    readIndex += frames;
    return frames;
  }
  int32_t p = readIndex;
  float a = fraction;
  float f = fraction;
  // Frames go in groups whose sums are independent, so that the rounding
  // chain of one frame doesn't wait for the last; each frame's arithmetic
  // and its order are those of a frame on its own.
  constexpr int32_t kGroup = 4;
  for (int32_t i = 0; i < frames; i += kGroup) {
    const int32_t n = std::min(kGroup, frames - i);
    int32_t at[kGroup];
    float weight[kGroup][kTaps];
    for (int32_t j = 0; j < kGroup; ++j) {
      at[j] = p - kCentreTap;
      for (int32_t k = 0; k < kTaps; ++k) weight[j][k] = f * tapSlopes[k] + taps[k];
      if (j < n) {
        a += ratio;
        const float m = std::floor(a);
        f = a - m;
        p = readIndex + static_cast<int32_t>(m);
      }
    }
#ifdef __SSE2__
    // Left and right side by side: one double multiply-add and one rounding
    // to float serve both channels.
    // Four named sums, so that they stay in registers.
    static_assert(kGroup == 4);
    __m128 s0 = _mm_setzero_ps(), s1 = s0, s2 = s0, s3 = s0;
    auto step = [&](__m128 sum, int32_t j, int32_t k) {
      const __m128 x =
          _mm_unpacklo_ps(_mm_load_ss(left + at[j] + k), _mm_load_ss(right + at[j] + k));
      const __m128d product =
          _mm_mul_pd(_mm_cvtps_pd(x), _mm_set1_pd(static_cast<double>(weight[j][k])));
      return _mm_cvtpd_ps(_mm_add_pd(_mm_cvtps_pd(sum), product));
    };
    for (int32_t k = 0; k < kTaps; ++k) {
      s0 = step(s0, 0, k);
      s1 = step(s1, 1, k);
      s2 = step(s2, 2, k);
      s3 = step(s3, 3, k);
    }
    const __m128 sum[kGroup] = {s0, s1, s2, s3};
    for (int32_t j = 0; j < n; ++j) {
      alignas(16) float lr[4];
      _mm_store_ps(lr, sum[j]);
      out[0][i + j] = lr[0] * gain;
      out[1][i + j] = lr[1] * gain;
    }
#else
    float sumLeft[kGroup] = {}, sumRight[kGroup] = {};
    for (int32_t k = 0; k < kTaps; ++k) {
      for (int32_t j = 0; j < kGroup; ++j) {
        const double w = weight[j][k];
        sumLeft[j] = static_cast<float>(double(sumLeft[j]) + double(left[at[j] + k]) * w);
        sumRight[j] = static_cast<float>(double(sumRight[j]) + double(right[at[j] + k]) * w);
      }
    }
    for (int32_t j = 0; j < n; ++j) {
      out[0][i + j] = sumLeft[j] * gain;
      out[1][i + j] = sumRight[j] * gain;
    }
#endif
  }
  readIndex = p;
  fraction = f;
  return frames;
}

void MDJTrack::refill() {
  if (readIndex > kWindowFrames) readIndex = kWindowFrames;
  const int32_t rest = kWindowFrames - readIndex;
  // The frames not yet read move to the front with the history the filter
  // looks back on.
  for (int c = 0; c < 2; ++c) {
    std::memmove(storage[c].get(), window[c] + readIndex - kHistoryFrames,
                 sizeof(float) * (rest + kHistoryFrames));
  }
  readIndex = 0;
  fillWindow(rest);
}

void MDJTrack::fillWindow(int32_t fill) {
  while (fill < kWindowFrames) {
    float* at[2] = {window[0] + fill, window[1] + fill};
    int32_t got = song->readFrames(at, kWindowFrames - fill);
    if (got < 1) {
      // A song that yields nothing more: silence to the window's end.
      endMark = fill;
      for (int c = 0; c < 2; ++c) std::fill(window[c] + fill, window[c] + kWindowFrames, 0.0f);
      return;
    }
    fill += got;
  }
}

}  // namespace vostan
