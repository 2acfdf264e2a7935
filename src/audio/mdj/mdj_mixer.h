#pragma once
// The two tracks of the music system and the balance between them: turns
// both into one stereo stream of floats at 44100 Hz.
#include <atomic>
#include <cstdint>
#include <memory>

#include "audio/mdj/mdj_track.h"

namespace vostan {

class MDJMixer {
 public:
  static constexpr int32_t kOutputRate = 44100;
  // The second track is rendered aside in slices of this many frames.
  static constexpr int32_t kScratchFrames = 16384;

  MDJMixer();
  virtual ~MDJMixer() = default;

  // 0 is the main track, any other index the one that brings a song in.
  MDJTrack* getTrack(int32_t index) { return index == 0 ? first.get() : second.get(); }
  // Balance from -1 (first track only) to 1 (second only). Both tracks stay
  // at full gain across the middle half of the range.
  void setCrossfade(float value);
  float getCrossfade() const { return crossfade; }
  float getGainOfTrack(int32_t index) const { return gainOfTrack[index == 0 ? 0 : 1]; }
  // Makes `track` the first one, swapping the two if needed.
  void makeMain(MDJTrack* track);
  // Written by the Java thread while the mixer thread reads it: a lone
  // word that needs no order.
  void setVolume(float value) { volume.store(value, std::memory_order_relaxed); }
  float getVolume() const { return volume.load(std::memory_order_relaxed); }

  // Fills `frames` frames of out[0] (left) and out[1] (right); returns frames.
  int32_t render(float* const* out, int32_t frames);

 private:
  std::unique_ptr<MDJTrack> first;
  std::unique_ptr<MDJTrack> second;
  float crossfade = 0.0f;
  float gainOfTrack[2] = {1.0f, 1.0f};
  std::atomic<float> volume{0.6f};
  std::unique_ptr<float[]> scratch[2];
};

}  // namespace vostan
