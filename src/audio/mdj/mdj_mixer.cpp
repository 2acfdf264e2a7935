#include "audio/mdj/mdj_mixer.h"

namespace vostan {

MDJMixer::MDJMixer() : first(std::make_unique<MDJTrack>()), second(std::make_unique<MDJTrack>()) {}

void MDJMixer::setCrossfade(float value) {
  if (value < -1.0f) value = -1.0f;
  if (value > 1.0f) value = 1.0f;
  crossfade = value;
  gainOfTrack[0] = value > 0.5f ? 2.0f - 2.0f * value : 1.0f;
  gainOfTrack[1] = value < -0.5f ? 2.0f * value + 2.0f : 1.0f;
}

void MDJMixer::makeMain(MDJTrack* track) {
  if (track != first.get()) first.swap(second);
}

}  // namespace vostan
