#include "audio/mdj/mdj_track.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

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
  int32_t fill = 0;
  while (fill < kWindowFrames) {
    float* at[2] = {window[0] + fill, window[1] + fill};
    int32_t got = song->readFrames(at, kWindowFrames - fill);
    if (got < 1) {
      endMark = fill;
      for (int c = 0; c < 2; ++c) std::fill(window[c] + fill, window[c] + kWindowFrames, 0.0f);
      break;
    }
    fill += got;
  }
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
  for (int32_t i = 0; i < frames; ++i) {
    const float* l = left + p - kCentreTap;
    const float* r = right + p - kCentreTap;
    float sumLeft = 0.0f, sumRight = 0.0f;
    for (int32_t k = 0; k < kTaps; ++k) {
      const float w = f * tapSlopes[k] + taps[k];
      sumLeft = static_cast<float>(static_cast<double>(sumLeft) + double(l[k]) * double(w));
      sumRight = static_cast<float>(static_cast<double>(sumRight) + double(r[k]) * double(w));
    }
    out[0][i] = sumLeft * gain;
    out[1][i] = sumRight * gain;
    a += ratio;
    const float m = std::floor(a);
    f = a - m;
    p = readIndex + static_cast<int32_t>(m);
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
  int32_t fill = rest;
  while (fill < kWindowFrames) {
    float* at[2] = {window[0] + fill, window[1] + fill};
    int32_t got = song->readFrames(at, kWindowFrames - fill);
    if (got < 1) {
      endMark = fill;
      for (int c = 0; c < 2; ++c) std::fill(window[c] + fill, window[c] + kWindowFrames, 0.0f);
      return;
    }
    fill += got;
  }
}

}  // namespace vostan
