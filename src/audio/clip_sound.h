#pragma once
// Clip sounds: one piece of sample data in a pool of voices that share it, and
// the logical sounds that Java plays on those voices. A sound holds its own
// settings and is bound to a voice only while it plays; when the pool is full
// the oldest voice is taken.
#include <cstdint>
#include <memory>
#include <vector>

#include "audio/audio_manager.h"
#include "platform/sound/sound_device.h"

namespace vostan {

class ClipSound;

class ClipSoundContext {
 public:
  explicit ClipSoundContext(AudioManager& audio) : audio(audio) {}
  virtual ~ClipSoundContext() = default;

  // Loads the data into voice 0 and makes the others its duplicates.
  // `data` must stay valid for the context's life: a lost voice is refilled
  // from it.
  bool createBuffers(float frequency, int bits, int channels, const void* data, int size, int mode,
                     int count);
  // A voice that is free or has finished, else -1; with mode 1 the oldest
  // voice that doesn't loop is taken instead.
  int getFreeBufferIndex(int mode);
  int bytesPerFrame() const { return sampleBits / 8 * channels; }

  AudioManager& audio;
  int32_t mode3D = 0;
  int32_t bufferCount = 0;
  std::vector<std::unique_ptr<platform::sound::Buffer>> soundBuffers;
  std::vector<platform::sound::Buffer*> buffers3D;  // empty for panned voices
  std::vector<ClipSound*> bufferOwners;             // not owned; null is free
  float waveFrequency = 0;
  int32_t sampleBits = 0;
  int32_t channels = 0;
  const uint8_t* waveData = nullptr;
  int32_t waveSize = 0;
};

class ClipSound {
 public:
  ClipSound(ClipSoundContext& context, float volume, float pan, float pitch, float minDistance,
            float maxDistance);
  virtual ~ClipSound() = default;

  // The voice this sound plays on, or -1; a finished sound gives its voice back here.
  int isBound();
  bool play(int index, bool looping, bool foreground);
  int stop();

  void setVolume(float value);
  void setPan(float value);
  void setPitch(float value);
  void setCursor(int frames);
  void setPosition(float x, float y, float z);
  void setMinDistance(float value);
  void setMaxDistance(float value);

  // Volume in hundredths of a decibel with the master volume applied.
  int32_t volumeToDirectSound(float master) const;
  int32_t stereoPan() const;

  ClipSoundContext& context;
  int32_t bufferIndex = -1;
  uint32_t startTime = 0;
  int32_t cursorBytes = 0;
  float volume;
  float pan;
  float pitch;
  float minDistance;
  float maxDistance;
  float x = 0, y = 0, z = 0;
  bool looping = false;
  uint32_t lastPositionTime = 0;

 private:
  platform::sound::Buffer* bound3D() const;
  bool refillBuffer(platform::sound::Buffer& buffer);
};

// Pitch is kept within an octave either way.
float clampPitch(float pitch);

}  // namespace vostan
