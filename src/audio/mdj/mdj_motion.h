#pragma once
// Motions: scripts over beats that move a mixer parameter while a
// beat-locked change runs. Time is in float beats from the change's start.
#include <cstdint>
#include <memory>
#include <vector>

namespace vostan {

class MDJMixer;

struct MDJMotionKey {
  float time = 0;  // beats
  float value = 0;
  int32_t interpolate = 0;  // straight line to the next key, else a step
};

class MDJMotionTrack {
 public:
  static constexpr int32_t kTargetCrossfade = 0;

  MDJMotionTrack(int32_t capacity, int32_t target);
  virtual ~MDJMotionTrack() = default;

  // Keys go in ascending time. Returns the track so that calls chain.
  MDJMotionTrack& addKey(float time, float value, bool interpolate);
  // Before the first key: the first key's value; after the last: the last's.
  float evaluate(float t) const;
  int32_t getTarget() const { return target; }
  int32_t getKeyCount() const { return keyCount; }

 private:
  int32_t keyCount = 0;
  // keyCount keys and a sentinel 100 beats behind the last, with its value,
  // so that interpolation from the last key needs no special case.
  std::vector<MDJMotionKey> keys;
  int32_t target;
};

class MDJMotion {
 public:
  static constexpr int32_t kMaxTracks = 10;

  explicit MDJMotion(float length) : motionLength(length) {}
  virtual ~MDJMotion() = default;

  // False when the motion already has kMaxTracks tracks.
  bool addTrack(std::unique_ptr<MDJMotionTrack> track);
  // Sets the mixer's parameters for beat t. True while the motion runs; the
  // call at or after its length applies the end values and returns false.
  bool apply(MDJMixer& mixer, float t) const;
  float getLength() const { return motionLength; }
  int32_t getTrackCount() const { return trackCount; }
  const MDJMotionTrack* getTrack(int32_t index) const { return tracks[index].get(); }

 private:
  int32_t trackCount = 0;
  std::unique_ptr<MDJMotionTrack> tracks[kMaxTracks];
  float motionLength;
};

// The built-in motions, made at the first call. Only motion 0 exists: the
// cross-fade over sixteen beats. Null for any other index.
MDJMotion* getMotion(int32_t index);

}  // namespace vostan
