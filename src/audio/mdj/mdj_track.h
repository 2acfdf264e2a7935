#pragma once
// A voice of the music mixer: a song and a window of frames decoded ahead of
// what is heard, with the beat arithmetic that places the listener in the
// song's tempo map, and the resampler that plays it at another pitch.
#include <cstdint>
#include <memory>

#include "audio/mdj/mdj_song.h"

namespace vostan {

// Beat positions are signed 16.16 fixed point; the whole beat is the
// arithmetic shift right by 16, so -0.5 beats lies in beat -1.
constexpr int32_t wholeBeat(int32_t beat) {
  return beat >> 16;
}

// Beats from `startFrame` to `frame` at `tempo` beats per minute, counted
// with frames of `rate` per second. A result outside 32 bits gives INT32_MIN,
// as the processor's own truncation does.
int32_t beatsBetween(int32_t frame, int32_t startFrame, float tempo, double rate);

// The rate of all beat arithmetic, whatever the rate of a song's file.
constexpr double kBeatRate = 44100.0;

// The zeroth-order modified Bessel function and the Kaiser window over
// -halfLength..halfLength, as the resampling filter is designed with them.
float besselI0(float x);
float kaiserWindow(float n, float beta, float halfLength);

class MDJTrack {
 public:
  static constexpr int32_t kWindowFrames = 32768;
  // Frames kept in front of window[c][0] for the resampling filter, which
  // reaches back nine frames; prefill clears them.
  static constexpr int32_t kHistoryFrames = 16;
  // Silent frames behind the window, for the filter's reach forward.
  static constexpr int32_t kTailFrames = 16;
  // The window is refilled once reading has passed its first half.
  static constexpr int32_t kRefillIndex = kWindowFrames / 2;
  static constexpr int32_t kTaps = 19;
  static constexpr int32_t kCentreTap = 9;
  // Pitches the resampler accepts; others leave the pitch as it is.
  static constexpr float kMinPitch = 1.0f / 8;
  static constexpr float kMaxPitch = 8.0f;

  MDJTrack();
  MDJTrack(const MDJTrack&) = delete;
  MDJTrack& operator=(const MDJTrack&) = delete;
  virtual ~MDJTrack();

  void stop() {
    playing = false;
    readIndex = 0;
  }
  // Takes a reference to `next` and drops the one to the present song.
  void setSong(MDJSong* next);
  const MDJInfo* getInfo() const { return song ? song->getInfo() : nullptr; }
  // Fills the whole window from the song's present position and starts
  // playing. False without a song.
  bool prefill();

  bool isPlaying() const { return playing; }
  float getGain() const { return gain; }
  void setGain(float value) { gain = value; }
  MDJSong* getSong() const { return song; }

  // Tempo of the section at the decoder's position, times the pitch; 0
  // without a tempo map.
  float currentTempo() const;
  // Beats into the section in force at `offset` frames from the read point.
  int32_t beatPosition(int32_t offset) const;
  const MDJSection* sectionAt(int32_t offset) const;

  // Writes `frames` frames of the song times `gain` over out[0] and out[1],
  // resampled by the pitch; silence when not playing. Returns `frames`.
  int32_t render(float gain, float* const* out, int32_t frames);
  // Plays the song `value` times faster and higher, through a low-pass
  // designed for the new rate. Ignored without a song, and when the pitch or
  // the ratio of rates it makes is not finite or lies outside
  // kMinPitch..kMaxPitch.
  void setPitch(float value);
  float getPitch() const { return pitch; }
  float getRatio() const { return ratio; }
  // The stream frame at `offset` frames from the read point: the decoder
  // stands just behind the window's last frame.
  int32_t streamFrame(int32_t offset) const;

  MDJSong* song = nullptr;
  bool playing = false;
  float gain = 1.0f;
  int32_t readIndex = 0;
  int32_t endMark = 0;  // -1 after prefill, else where a short read of the song ended
  float fraction = 0;   // fractional part of the read position
  float* window[2];     // kWindowFrames each, left and right
  float pitch = 1.0f;
  float ratio = 1.0f;                           // source frames per output frame
  float nyquist = 0, passBand = 0, cutoff = 0;  // filter design, in Hz
  // The low-pass prototype and the differences of neighbouring taps, so that
  // weights at a fractional offset are one multiply-add each. The 20th tap
  // stays 0.
  float taps[kTaps + 1] = {};
  float tapSlopes[kTaps] = {};

 private:
  // Frames that can be rendered before reading could pass the window's end.
  int32_t safeFrames() const;
  int32_t renderPart(float gain, float* const* out, int32_t frames);
  void refill();
  // Decodes from window frame `fill` to the window's end.
  void fillWindow(int32_t fill);

  std::unique_ptr<float[]> storage[2];
};

}  // namespace vostan
