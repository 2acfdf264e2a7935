#pragma once
// The two tracks of the music system and the balance between them. The
// sample path (render, resampling) comes with the mixer thread.
#include <cstdint>
#include <memory>

#include "audio/mdj/mdj_track.h"

namespace vostan {

class MDJMixer {
 public:
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
  void setVolume(float value) { volume = value; }
  float getVolume() const { return volume; }

 private:
  std::unique_ptr<MDJTrack> first;
  std::unique_ptr<MDJTrack> second;
  float crossfade = 0.0f;
  float gainOfTrack[2] = {1.0f, 1.0f};
  float volume = 0.6f;
};

}  // namespace vostan
