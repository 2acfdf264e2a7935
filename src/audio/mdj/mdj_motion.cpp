#include "audio/mdj/mdj_motion.h"

#include "audio/mdj/mdj_mixer.h"

namespace vostan {

MDJMotionTrack::MDJMotionTrack(int32_t capacity, int32_t target) : target(target) {
  keys.reserve(capacity > 0 ? capacity : 1);
  keys.resize(1);
}

MDJMotionTrack& MDJMotionTrack::addKey(float time, float value, bool interpolate) {
  int32_t flag = interpolate ? 1 : 0;
  keys[keyCount] = {time, value, flag};
  ++keyCount;
  keys.resize(keyCount + 1);
  keys[keyCount] = {time + 100.0f, value, flag};
  return *this;
}

float MDJMotionTrack::evaluate(float t) const {
  if (keyCount == 0) return 0.0f;
  int32_t segment = 0;
  float fraction = 0.0f;
  if (t >= keys[0].time) {
    segment = keyCount - 1;
    for (int32_t n = 1; n < keyCount; ++n) {
      if (keys[n].time > t) {
        segment = n - 1;
        fraction = (t - keys[segment].time) / (keys[n].time - keys[segment].time);
        break;
      }
    }
  }
  const MDJMotionKey& key = keys[segment];
  if (!key.interpolate) return key.value;
  return key.value + (keys[segment + 1].value - key.value) * fraction;
}

bool MDJMotion::addTrack(std::unique_ptr<MDJMotionTrack> track) {
  if (trackCount >= kMaxTracks) return false;
  tracks[trackCount++] = std::move(track);
  return true;
}

bool MDJMotion::apply(MDJMixer& mixer, float t) const {
  if (motionLength <= t) t = motionLength;
  for (int32_t n = 0; n < trackCount; ++n) {
    float v = tracks[n]->evaluate(t);
    if (tracks[n]->getTarget() == MDJMotionTrack::kTargetCrossfade) mixer.setCrossfade(v);
  }
  return motionLength > t;
}

namespace {

// The new song comes in low and reaches full gain just after beat 7; the old
// one holds full gain until beat 11.5 and is silent from beat 15.
std::unique_ptr<MDJMotion> makeCrossfadeMotion() {
  auto motion = std::make_unique<MDJMotion>(16.0f);
  auto track = std::make_unique<MDJMotionTrack>(8, MDJMotionTrack::kTargetCrossfade);
  track->addKey(0.0f, -0.9f, true)
      .addKey(7.0f, -0.6f, true)
      .addKey(8.0f, 0.0f, true)
      .addKey(15.0f, 1.0f, true);
  motion->addTrack(std::move(track));
  return motion;
}

}  // namespace

MDJMotion* getMotion(int32_t index) {
  static constexpr int32_t kMotionCount = 10;
  // Built on first use, which happens on the mixer thread.
  static std::unique_ptr<MDJMotion> table[kMotionCount] = {makeCrossfadeMotion()};
  if (index < 0 || index >= kMotionCount) return nullptr;
  return table[index].get();
}

}  // namespace vostan
