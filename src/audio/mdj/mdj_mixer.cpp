#include "audio/mdj/mdj_mixer.h"

#include <algorithm>

namespace vostan {

MDJMixer::MDJMixer() : first(std::make_unique<MDJTrack>()), second(std::make_unique<MDJTrack>()) {
  for (auto& s : scratch) s = std::make_unique<float[]>(kScratchFrames);
}

int32_t MDJMixer::render(float* const* out, int32_t frames) {
  if (!first->isPlaying() && !second->isPlaying()) {
    for (int c = 0; c < 2; ++c) std::fill_n(out[c], frames, 0.0f);
    return frames;
  }
  const float v = getVolume();
  const float firstGain = first->getGain() * (v * gainOfTrack[0]);
  if (!second->isPlaying()) {
    first->render(firstGain, out, frames);
    return frames;
  }
  const float secondGain = second->getGain() * (v * gainOfTrack[1]);
  for (int32_t done = 0; done < frames;) {
    const int32_t n = std::min(frames - done, kScratchFrames);
    float* at[2] = {out[0] + done, out[1] + done};
    float* aside[2] = {scratch[0].get(), scratch[1].get()};
    first->render(firstGain, at, n);
    second->render(secondGain, aside, n);
    for (int c = 0; c < 2; ++c) {
      for (int32_t i = 0; i < n; ++i) at[c][i] += aside[c][i];
    }
    done += n;
  }
  return frames;
}

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
