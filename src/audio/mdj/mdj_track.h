#pragma once
// A voice of the music mixer: a song and a window of frames decoded ahead of
// what is heard, with the beat arithmetic that places the listener in the
// song's tempo map.
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

class MDJTrack {
 public:
  static constexpr int32_t kWindowFrames = 32768;
  // Frames kept in front of window[c][0] for the resampling filter, which
  // reaches back nine frames; prefill clears them.
  static constexpr int32_t kHistoryFrames = 16;

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
  float ratio = 1.0f;  // source frames per output frame

 private:
  std::unique_ptr<float[]> storage[2];
};

}  // namespace vostan
